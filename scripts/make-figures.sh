#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Takes the screenshots of the window in docs/figures: scripts/make-figures.sh
#
# The window is shown at its default size, at twice the pixel density, and wide, while two notes sound,
# on an X server and a JACK server of the script's own. Needs a build in build/release and the packages
# of the sections "window" and "test" in scripts/packages.txt.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/lib.sh"
answer_help "$@"

programs=$root/build/release/bin
figures=$root/docs/figures
work=$(mktemp -d)
export JACK_DEFAULT_SERVER=vexa-figures JACK_NO_START_SERVER=1 XDG_RUNTIME_DIR=$work XDG_CONFIG_HOME=$work XDG_DATA_HOME=$work
chmod 700 "$work"
children=()
trap 'kill "${children[@]}" 2>/dev/null || true; wait; rm -rf "$work"' EXIT

jackd -r -n "$JACK_DEFAULT_SERVER" -d dummy -r 48000 -p 256 >/dev/null 2>&1 &
children+=($!)
mkfifo "$work/display"
Xvfb -displayfd 3 -screen 0 2900x1500x24 -nolisten tcp 3>"$work/display" >/dev/null 2>&1 &
children+=($!)
read -r number <"$work/display"
export DISPLAY=:$number
openbox &
children+=($!)
sleep 1

# shot NAME WIDTH: takes a picture of the running window, after resizing it unless WIDTH is empty.
shot() {
    local window
    window=$(timeout 20 xdotool search --sync --onlyvisible --name '^Vexa$' | head -1)
    xdotool windowactivate --sync "$window"
    [[ -z $2 ]] || xdotool windowsize "$window" "$2" 651
    sleep 1
    xdotool keydown q keydown t
    sleep 0.7
    # A palette of few colours keeps the files small.
    import -window "$window" +dither -colors 255 -strip "png8:$figures/$1.png"
    xdotool keyup q keyup t
}

mkdir -p "$figures"
for row in "window 1 " "window-2x 2 " "window-wide 1 1700"; do
    read -r name scale width <<<"$row"
    QT_SCALE_FACTOR=$scale "$programs/vexa" --user-folder --sound bell --voices 20 2>/dev/null &
    vexa=$!
    shot "$name" "$width"
    kill -TERM "$vexa"
    wait "$vexa"
done
