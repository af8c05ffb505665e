# Shell functions that ./run and ./test share. To be sourced with `root` set to the tree's folder.
# shellcheck shell=bash disable=SC2154

# Ends the script with a message.
fail() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# install_packages [LIST]: installs the packages of scripts/LIST, or packages.txt, that are missing.
install_packages() {
    local list=${1:-packages.txt} wanted missing as_root=()
    mapfile -t wanted < <(sed -e 's/#.*//' -e '/^[[:space:]]*$/d' -e 's/[[:space:]]//g' \
        "$root/scripts/$list")
    if ! command -v dpkg-query >/dev/null; then
        printf 'not a Debian system: scripts/%s names what has to be there\n' "$list" >&2
        return
    fi
    # dpkg-query reports packages that it does not know on standard error and in its exit code.
    mapfile -t missing < <(comm -23 <(printf '%s\n' "${wanted[@]}" | sort) \
        <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null |
            sed -n 's/^installed //p' | sort -u))
    [[ ${#missing[@]} -gt 0 ]] || return 0

    printf 'installing %s\n' "${missing[*]}" >&2
    if [[ $EUID -ne 0 ]]; then
        command -v sudo >/dev/null || fail "sudo is missing; as root: apt-get install ${missing[*]}"
        as_root=(sudo)
    fi
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q >&2 ||
        fail 'apt-get update failed'
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y --no-install-recommends "${missing[@]}" >&2 ||
        fail "could not install ${missing[*]}"
}

# build PRESET [TARGET]: brings build/PRESET up to date. All that is said goes to standard error;
# nothing is when nothing was to do. Ninja itself configures anew when a CMake file has changed.
build() {
    local folder=$root/build/$1
    if [[ ! -f $folder/build.ninja ]]; then
        (cd "$root" && cmake --preset "$1") >&2 || fail "could not configure the preset $1"
    fi
    (cd "$folder" && ninja "${@:2}") >&2 || fail "the build of the preset $1 failed"
}
