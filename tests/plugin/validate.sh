#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# validate.sh BUNDLE: lv2_validate, which is sord_validate with LV2's schemas, has nothing to say against the bundle.
said=$(lv2_validate "$1"/*.ttl 2>&1)
grep -q '^Found 0 errors' <<<"$said" && ! grep -qiE '^(error|warning)' <<<"$said" && exit 0
printf '%s\n' "$said" | tail -n 40
exit 1
