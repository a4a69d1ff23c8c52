#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Burns the clips of a list by GNU parallel, on this machine or on some by ssh.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source-path=SCRIPTDIR source=../lib.sh
. "$here/lib.sh"

if [ "${1:-}" = --help ]; then
    cat <<'HELP'
usage: burn_all.sh [--jobs N] [--retries N] [--sshloginfile FILE] LIST CONFIG OUT [BURN_OPTION...]

Burns the clips of LIST, a file with one path a line, one process each, and sums up in OUT/summary.csv and OUT/summary.txt
what failed and why. Each clip becomes OUT/NAME, with OUT/logs/NAME.log and OUT/summaries/NAME.json. The same command
takes up what was left or has failed. Exit code 0 when every clip is done, 1 when one is not, 2 for wrong usage.

  --jobs N             so many at a time on each machine (default: one for each processor)
  --retries N          attempts for each clip (default: 3)
  --sshloginfile FILE  the machines, as GNU parallel wants them: [N/][USER@]HOST, ":" is this one. Paths and the program
                       must mean the same on all of them
  BURN_OPTION          passed on to `stanag-overlay burn`, such as --crf 28
  FLEET_ENDING         ending of the outputs, such as mkv (default: that of the clip)
  FLEET_PROGRAM        the program (default: stanag-overlay)
HELP
    exit 0
fi

machines=() retries=3
while [[ ${1:-} == --* ]]; do
    case $1 in
        --jobs | --retries)
            [[ ${2:-} =~ ^[1-9][0-9]*$ ]] || fail "$1 ${2@Q}: give a number"
            if [ "$1" = --jobs ]; then machines+=(--jobs "$2"); else retries=$2; fi
            ;;
        --sshloginfile)
            need_file "the list of machines" "${2:-}"
            machines+=(--sshloginfile "$(absolute "$2")")
            ;;
        *) fail "there is no option $1; burn_all.sh --help tells more" ;;
    esac
    shift 2
done
[ $# -ge 3 ] || fail "give LIST, CONFIG and OUT; burn_all.sh --help tells more"
list=$1 config=$2 out=$3
shift 3
read_list "$list"
need_file "the configuration" "$config"
one_line "the output folder" "$out"
need_command parallel parallel
need_program

config=$(absolute "$config")
out=$(absolute "$out")
mkdir -p "$out/logs"
fixed=$out/clips.txt
for clip in "${clips[@]}"; do absolute "$clip"; echo; done >"$fixed.new"
mv -f -- "$fixed.new" "$fixed"
# The log knows jobs by their numbers only: another list, configuration or other options have a log of their own.
key=$({ cat -- "$fixed" "$config" && printf '%s\0' "$config" "${FLEET_ENDING:-}" "$@"; } | cksum)
joblog=$out/logs/joblog-${key%% *}.tsv

# print_done: the numbers of the clips that are done, as the log counts them.
print_done() {
    local configuration position
    configuration=$(configuration_sum "$config")
    for position in "${!clips[@]}"; do
        ! is_done "${clips[position]}" "$configuration" "$out" || echo $((position + 1))
    done
}
# What the log calls a success is passed over. Since then an output may have gone, or its clip be a newer one.
if [ -s "$joblog" ]; then
    print_done | awk -F '\t' '
        BEGIN { while ((getline number <"-") > 0) done[number] }
        FNR == 1 || $7 != 0 || $1 in done' "$joblog" >"$joblog.new"
    mv -f -- "$joblog.new" "$joblog"
fi

# The variables reach other machines as part of the command.
command=(env "FLEET_PROGRAM=$(program)" "FLEET_ENDING=${FLEET_ENDING:-}" "$here/burn_one.sh")
# Its exit code is the number of failed jobs; what failed, the summary says.
parallel --will-cite --quote --arg-file "$fixed" --joblog "$joblog" --resume-failed --retries "$retries" --workdir "$PWD" \
    ${machines[@]+"${machines[@]}"} -- "${command[@]}" {} "$config" "$out" "$@" >"$out/logs/parallel.log" 2>&1 || true
"$here/summarise.sh" "$fixed" "$config" "$out"
