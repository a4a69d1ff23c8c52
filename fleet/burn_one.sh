#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Burns one clip of many: the process that an engine starts.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source-path=SCRIPTDIR source=lib.sh
. "$here/lib.sh"

if [ "${1:-}" = --help ]; then
    cat <<'HELP'
usage: burn_one.sh CLIP CONFIG OUT [BURN_OPTION...]
       burn_one.sh --line N LIST CONFIG OUT [BURN_OPTION...]

Burns CLIP, or the clip in line N of LIST, into the folder OUT under its own name, with OUT/logs/NAME.log and
OUT/summaries/NAME.json. Does nothing when that has been done already with what CONFIG says, and CLIP is not newer. Leaves no
half output, whatever happens. The exit code is that of the burn, 2 for wrong usage.

  BURN_OPTION     passed on to `stanag-overlay burn`, such as --crf 28; without --threads one thread is used, or as
                  many as SLURM_CPUS_PER_TASK says
  FLEET_ENDING    ending of the outputs, such as mkv (default: that of the clip)
  FLEET_PROGRAM   the program (default: stanag-overlay)
HELP
    exit 0
fi

line=
if [ "${1:-}" = --line ]; then
    line=${2:-}
    [[ $line =~ ^[1-9][0-9]*$ ]] || fail "--line ${line@Q}: give the number of a line"
    shift 2
fi
[ $# -ge 3 ] || fail "give CLIP, CONFIG and OUT; burn_one.sh --help tells more"
clip=$1 config=$2 out=$3
shift 3
if [ -n "$line" ]; then
    need_file "the list" "$clip"
    list=$clip
    clip=$(sed -n "${line}{p;q}" -- "$list")
    [ -n "$clip" ] || fail "$list: has no line $line"
fi
one_line "the clip" "$clip"
need_file "the configuration" "$config"
one_line "the output folder" "$out"
need_program

clip=$(absolute "$clip")
config=$(absolute "$config")
out=$(absolute "$out")
output_name "$clip"
name=$REPLY
mkdir -p "$out/logs" "$out/summaries"
log=$out/logs/$name.log
summary=$out/summaries/$name.json

configuration=$(configuration_sum "$config")
if is_done "$clip" "$configuration" "$out"; then
    echo "$name: is done already"
    exit 0
fi
# Nobody else burns this clip: what a killed attempt has left is of no use to anybody.
tidy_up() {
    rm -f -- "$out/.$name".part-* "$out/summaries/.$name.json".part-*
}
tidy_up
# A summary that is there later is that of this attempt.
rm -f -- "$summary"
echo "$configuration" >"$out/summaries/$name.configuration"

threads=(--threads "${SLURM_CPUS_PER_TASK:-1}")
for option in "$@"; do
    case $option in --threads | --threads=*) threads=() ;; esac
done

# A log of an earlier attempt is kept, for who wants to know why there is another one.
printf '== %s on %s\n' "$(date -u +%Y-%m-%dT%H:%M:%SZ)" "${SLURMD_NODENAME:-$(uname -n)}" >>"$log"
code=0
"$(program)" burn "$clip" -c "$config" -o "$out/$name" --summary "$summary" --no-progress \
    ${threads[@]+"${threads[@]}"} "$@" </dev/null >>"$log" 2>&1 || code=$?
printf '== exit code %d\n' "$code" >>"$log"
tidy_up
# For who looks at the engine's own log.
[ "$code" -eq 0 ] || echo "$name: exit code $code: $(tail -n 2 -- "$log" | head -n 1)"
exit "$code"
