# SPDX-License-Identifier: GPL-3.0-or-later
# Shell functions that ./run, ./test and the scripts share. A script sets `root` to the top folder of
# the tree and then sources this file.
# shellcheck shell=bash disable=SC2154

# fail MESSAGE...: ends the script with exit code 1 and the message on standard error.
fail() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# answer_help ARGUMENT...: if the first argument is --help or -h, prints the comment at the top of the
# script, up to its line "set ...", and ends the script.
answer_help() {
    [[ ${1:-} == --help || ${1:-} == -h ]] || return 0
    sed -n '2,/^set/{/SPDX/d; s/^# \{0,1\}//p}' "$0"
    exit
}

# packages_for PURPOSE...: prints the packages of these sections of scripts/packages.txt, one per line.
packages_for() {
    awk -v purposes="$*" '
        BEGIN { split(purposes, list, " "); for (i in list) wanted["[" list[i] "]"] }
        { sub(/#.*/, "") }
        /^\[/ { inside = ($1 in wanted); next }
        inside && NF { print $1 }' "$root/scripts/packages.txt"
}

# install_packages PURPOSE...: installs the missing packages of these sections. Before it does so, it
# prints their names, their number, the size of the download and the disk space. On a system without
# dpkg it only points to the list.
install_packages() {
    local wanted missing as_root=() apt
    mapfile -t wanted < <(packages_for "$@")
    if ! command -v dpkg-query >/dev/null; then
        printf 'not a Debian system: scripts/packages.txt lists the packages to install\n' >&2
        return
    fi
    # dpkg-query reports packages that it does not know on standard error and in its exit code.
    mapfile -t missing < <(comm -23 <(printf '%s\n' "${wanted[@]}" | sort) \
        <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null |
            sed -n 's/^installed //p' | sort -u))
    [[ ${#missing[@]} -gt 0 ]] || return 0

    if [[ $EUID -ne 0 ]]; then
        command -v sudo >/dev/null ||
            fail "sudo is missing; as root: apt-get install --no-install-recommends ${missing[*]}"
        as_root=(sudo)
    fi
    apt=("${as_root[@]}" env LC_ALL=C DEBIAN_FRONTEND=noninteractive apt-get -q)
    printf 'missing packages: %s\n' "${missing[*]}" >&2
    "${apt[@]}" update >&2 || fail 'apt-get update failed'
    # Prints apt's summary, which includes dependencies. The exit code is ignored: it is 1 because
    # --assume-no declines, and a real failure shows in the installation below.
    { "${apt[@]}" install --assume-no --no-install-recommends "${missing[@]}" 2>/dev/null || true; } |
        sed -n -e 's/^\([0-9]* upgraded, [0-9]* newly installed\),.*/packages: \1/p' \
            -e 's/^Need to get \(.*\) of archives.*/download: \1/p' \
            -e 's/^After this operation, \(.*\) of additional.*/disk: \1/p' >&2
    "${apt[@]}" install -y --no-install-recommends "${missing[@]}" >&2 ||
        fail "could not install ${missing[*]}"
}

# download_packages FOLDER PACKAGE...: downloads packages into the folder. If the system's package
# lists do not suffice, it fetches lists of its own into the folder.
download_packages() (
    cd "$1" || exit
    apt-get download -q "${@:2}" && exit
    mkdir -p lists/partial archives/partial
    own=(-o "Dir::State::lists=$1/lists" -o "Dir::Cache=$1" -o "APT::Sandbox::User=$(id -un)")
    apt-get "${own[@]}" -q update && apt-get "${own[@]}" download -q "${@:2}"
)

# unpack_once FOLDER COMMAND...: does nothing if the folder exists. Otherwise it runs the command with
# an empty working folder as the last argument, and unpacks the Debian packages that the command has
# put there into FOLDER.
unpack_once() (
    [[ ! -d $1 ]] || exit 0
    mkdir -p "$(dirname "$1")" && work=$(mktemp -d "$1.XXXXXX") || exit
    trap 'rm -rf "$work"' EXIT
    "${@:2}" "$work" >&2 || exit
    mkdir "$work/unpacked"
    find "$work" -name '*.deb' -print0 | xargs -0 -n 1 sh -c 'dpkg -x "$1" "$0"' "$work/unpacked" || exit
    # The rename is atomic. It fails if another process has made the folder meanwhile, which is fine.
    mv -T "$work/unpacked" "$1" || [[ -d $1 ]]
)

# configure PRESET: configures the build of a preset unless that is done. Ninja configures it again by
# itself when a CMake file has changed.
configure() {
    local folder=$root/build/$1 part=
    case $1 in
    render) folder=$root/build/release ;;
    programs) folder=$root/build/release part=VEXA_WINDOW ;;
    release) part=VEXA_TESTS ;;
    esac
    if [[ ! -f $folder/build.ninja ]] ||
        { [[ -n $part ]] && ! grep -q "^$part:BOOL=ON" "$folder/CMakeCache.txt"; }; then
        (cd "$root" && cmake --preset "$1") >&2 || fail "could not configure the preset $1"
    fi
}

# build PRESET [TARGET...]: brings the build of a preset up to date, with all output on standard error.
# The presets "render" and "programs" are parts of "release" and share its folder; a folder that is
# already configured for more stays so.
build() {
    local folder=$1
    [[ $1 != render && $1 != programs ]] || folder=release
    configure "$1"
    (cd "$root/build/$folder" && ninja "${@:2}") >&2 || fail "the build of the preset $1 failed"
}
