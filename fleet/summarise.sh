#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Says what became of the clips of a list: one table, and what failed and why.
set -euo pipefail
# FLEET_HOME: where this folder is, for an engine that runs a copy of this script.
here=${FLEET_HOME:-$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)}
# shellcheck source-path=SCRIPTDIR source=lib.sh
. "$here/lib.sh"

if [ "${1:-}" = --help ]; then
    cat <<'HELP'
usage: summarise.sh LIST CONFIG OUT

Writes OUT/summary.csv, one row for each clip of LIST, and OUT/summary.txt, the totals and each failure with its reason;
prints the latter. Exit code 0 when every clip is done, 1 when one is not, 2 for wrong usage.
FLEET_ENDING must be what it was when the clips were burnt.
HELP
    exit 0
fi
[ $# -eq 3 ] || fail "give LIST, CONFIG and OUT; summarise.sh --help tells more"
config=$2 out=$3
read_list "$1"
need_file "the configuration" "$config"
[ -d "$out" ] || fail "the output folder ${out@Q} is not there"
configuration=$(configuration_sum "$config")

# count_warnings: sets REPLY to their number in the text in `json`; each has a line, with four blanks before it.
count_warnings() {
    REPLY=0
    local line inside=
    [[ $json == *'"warnings": ['$'\n'* ]] || return 0
    while IFS= read -r line; do
        case $line in
            '  "warnings": [') inside=yes ;;
            '    "'*) [ -z "$inside" ] || REPLY=$((REPLY + 1)) ;;
        esac
    done <<<"$json"
}

table=$(mktemp "$out/.summary.csv.XXXXXX")
text=$(mktemp "$out/.summary.txt.XXXXXX")
failures=$(mktemp "$out/.failures.XXXXXX")
trap 'rm -f -- "$table" "$text" "$failures"' EXIT

finished=0 failed=0
echo "clip,output,result,exit_code,attempts,frames,video_seconds,processor_seconds,wall_seconds,peak_memory_mib,warnings,reason" >"$table"
for clip in "${clips[@]}"; do
    output_name "$clip"
    name=$REPLY reason=
    recall "$name" "$out"
    if is_done "$clip" "$configuration" "$out"; then
        result="done"
        finished=$((finished + 1))
    else
        result=failed
        failed=$((failed + 1))
        explain
        printf '%s: %s\n' "$clip" "$reason" >>"$failures"
    fi
    figures=
    for member in frames videoSeconds processorSeconds wallSeconds peakMemoryMiB; do
        number "$member"
        figures+=$REPLY,
    done
    count_warnings
    output=$out/$name
    printf '"%s","%s",%s,%s,%s,%s%s,"%s"\n' "${clip//\"/\"\"}" "${output//\"/\"\"}" "$result" "$code" "$attempts" \
        "$figures" "$REPLY" "${reason//\"/\"\"}" >>"$table"
done

{
    awk -F, -v done="$finished" -v failed="$failed" '
        # The figures stand behind the paths, which may hold commas, and before the reason.
        NR > 1 && match($0, /",(done|failed),[0-9]*,[0-9]+,[0-9]+,[0-9.e+-]+,[0-9.e+-]+,/) {
            split(substr($0, RSTART + 2, RLENGTH - 2), field, ",")
            frames += field[4]; video += field[5]; processor += field[6]
        }
        END {
            printf "%d clips: %d done, %d failed\n", done + failed, done, failed
            printf "%d pictures, %.2f hours of video, %.2f hours of processor time\n", frames, video / 3600, processor / 3600
        }' "$table"
    if [ "$failed" -gt 0 ]; then
        echo
        cat "$failures"
    fi
} >"$text"
chmod 644 "$table" "$text"
mv -f -- "$table" "$out/summary.csv"
mv -f -- "$text" "$out/summary.txt"
cat -- "$out/summary.txt"
[ "$failed" -eq 0 ]
