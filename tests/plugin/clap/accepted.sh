#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# accepted.sh FILE [LIBRARY]: a host's scanner finds the instrument in it, it shows nothing but its entry, and needs no
# window system and no device. Nor has the library of its window anything more to show than its table, or any need of Qt.
scanned=$(echo "CLAP:$1" | "$(dpkg -L qtractor | grep -m 1 /qtractor_plugin_scan$)")
shown=$(nm -D --defined-only "$@" | awk 'NF == 3 {print $3}' | xargs)
needed=$(ldd "$1" | grep -iE 'qt|x11|xcb|jack|rtmidi|rtaudio|asound|pulse')
[[ -z ${2:-} ]] || needed+=$(ldd "$2" | grep -iE "qt|x11[.]|jack|rtmidi|rtaudio|asound|pulse|sndfile")
printf 'scanned: %s\nshown: %s\nneeded in vain: %s\n' "$scanned" "$shown" "$needed"
[[ $scanned == "CLAP|Vexa|0:2|1:0|"*"|${2:+GUI,}EXT,RT|"* && $shown == "clap_entry${2:+ vexa_window_2}" && -z $needed ]]
