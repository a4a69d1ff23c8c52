#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# The manual page names every command and every option of the program, and no others; scdoc and man take it.
#   manual_test.sh PROGRAM PAGE.scd
set -euo pipefail
program=${1:?usage: manual_test.sh PROGRAM PAGE.scd}
page=${2:?usage: manual_test.sh PROGRAM PAGE.scd}
. "$(dirname "$0")/program_options.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

{
    program_options "$program"
    for command in $(program_commands "$program"); do
        program_options "$program" "$command"
    done
} | LC_ALL=C sort -u >"$work/options"
[ "$(wc -l <"$work/options")" -gt 30 ]
# Each has a paragraph of its own, which begins with it.
sed -nE '/^\*-/ s/[^*]*\*(-[^*]*)\*[^*]*/\1\n/gp' "$page" | sed '/^$/d' | LC_ALL=C sort -u >"$work/page_options"
diff "$work/options" "$work/page_options"

program_commands "$program" | LC_ALL=C sort >"$work/commands"
sed -n '/^# COMMANDS/,/^# OPTIONS/ s/^\*\([a-z]*\)\*$/\1/p' "$page" | LC_ALL=C sort >"$work/page_commands"
diff "$work/commands" "$work/page_commands"
# The synopsis has them too.
sed -n '/^# SYNOPSIS/,/^# DESCRIPTION/ s/^\*stanag-overlay \([a-z]*\)\*.*/\1/p' "$page" | LC_ALL=C sort >"$work/synopsis"
diff "$work/commands" "$work/synopsis"

scdoc <"$page" >"$work/page.1"
[ -z "$(LC_ALL=C.UTF-8 MANROFFSEQ='' groff -man -Tutf8 -ww -z "$work/page.1" 2>&1)" ]
echo "$(wc -l <"$work/options") options, $(wc -l <"$work/commands") commands"
