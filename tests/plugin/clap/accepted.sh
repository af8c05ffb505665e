#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# accepted.sh FILE: a host's scanner finds the instrument in it, it shows nothing but its entry, and needs no window
# system and no device.
scanned=$(echo "CLAP:$1" | "$(dpkg -L qtractor | grep -m 1 /qtractor_plugin_scan$)")
shown=$(nm -D --defined-only "$1" | awk '{print $3}')
needed=$(ldd "$1" | grep -iE 'qt|x11|xcb|jack|rtmidi|rtaudio|asound|pulse')
printf 'scanned: %s\nshown: %s\nneeded in vain: %s\n' "$scanned" "$shown" "$needed"
[[ $scanned == "CLAP|Vexa|0:2|1:0|"* && $shown == clap_entry && -z $needed ]]
