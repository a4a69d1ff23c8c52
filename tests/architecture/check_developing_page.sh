#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# What docs/developing.md says in backquotes exists: a path as a file or folder, any other name as a word of the sources.
# It names every script, and README links to it.
#   check_developing_page.sh SOURCE_DIR
set -euo pipefail
cd "${1:?usage: check_developing_page.sh SOURCE_DIR}"
page=docs/developing.md
sources=(framework host_api stanag_overlay_plugin reference_host tests cmake CMakePresets.json CMakeLists.txt)

missing=0
complain() {
    echo "$page: $*" >&2
    missing=1
}

while read -r name; do
    case "$name" in
        build/dev/bin) ;;  # made by the build
        scripts/*) [ -x "${name%% *}" ] || complain "no such script: $name" ;;
        *": "*) ;;         # a form, not a name
        */*) [ -e "$name" ] || complain "no such path: $name" ;;
        *) [ -e "$name" ] || grep -rqF -- "$name" "${sources[@]}" || complain "nowhere in the sources: $name" ;;
    esac
done < <(grep -oE '`[^`]+`' "$page" | tr -d '`' | sort -u)
for script in scripts/*; do
    [ ! -x "$script" ] || grep -qF "| \`$script\` |" "$page" || complain "does not say what $script does"
done
grep -qF "($page)" README.md || complain "README.md does not link to it"
exit $missing
