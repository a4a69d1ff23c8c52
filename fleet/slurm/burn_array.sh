#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Burns the clips of a list on a Slurm cluster: job arrays, one task for each clip, and a job that sums up.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
if [ ! -f "$here/lib.sh" ]; then
    # `sbatch burn_array.sh ...` runs a copy somewhere else; the job knows of what.
    here=${FLEET_HOME:-$({ scontrol show job "${SLURM_JOB_ID:-none}" 2>/dev/null || true; } |
        sed -n 's|^ *Command=\(.*\)/slurm/burn_array\.sh.*|\1|p')}
    here=${here:-${SLURM_SUBMIT_DIR:-}/fleet}
    if [ ! -f "$here/lib.sh" ]; then
        echo "burn_array.sh: set FLEET_HOME to the folder that holds lib.sh and the folder slurm of this script" >&2
        exit 2
    fi
fi
# shellcheck source-path=SCRIPTDIR source=../lib.sh
. "$here/lib.sh"

if [ "${1:-}" = --help ]; then
    cat <<'HELP'
usage: burn_array.sh [--wait] [--at-once N] LIST CONFIG OUT [BURN_OPTION...]
       sbatch burn_array.sh [--at-once N] LIST CONFIG OUT [BURN_OPTION...]

Submits one task for each clip of LIST, a file with one path a line, and a job that sums up in OUT/summary.csv and
OUT/summary.txt what failed and why. Each clip becomes OUT/NAME, with OUT/logs/NAME.log and OUT/summaries/NAME.json.
Clips that are done already are passed over, so the same command takes up what was left. Tasks that were killed, or whose
node failed, are queued again, up to three times where they were killed. Paths must mean the same on all nodes. As a job
it does the same from the node that it runs on.

  --wait          return when all is done, with exit code 0 when every clip is done, else 1
  --at-once N     no more than N tasks at a time
  BURN_OPTION     passed on to `stanag-overlay burn`, such as --crf 28
  FLEET_ENDING    ending of the outputs, such as mkv (default: that of the clip)
  FLEET_PROGRAM   the program (default: stanag-overlay)
  SBATCH_...      where and how the tasks run: SBATCH_PARTITION, SBATCH_ACCOUNT, SBATCH_TIMELIMIT, SBATCH_MEM_PER_CPU;
                  FLEET_CPUS is the number of processors of a task (default: 1)
HELP
    exit 0
fi

wait=() at_once=
while :; do
    case ${1:-} in
        --wait) wait=(--wait) ;;
        --at-once)
            [[ ${2:-} =~ ^[1-9][0-9]*$ ]] || fail "--at-once ${2@Q}: give a number"
            at_once=%$2
            shift
            ;;
        *) break ;;
    esac
    shift
done
[ $# -ge 3 ] || fail "give LIST, CONFIG and OUT; burn_array.sh --help tells more"
list=$1 config=$2 out=$3
shift 3
read_list "$list"
need_file "the configuration" "$config"
one_line "the output folder" "$out"
need_command sbatch slurm-client
need_program

config=$(absolute "$config")
out=$(absolute "$out")
mkdir -p "$out/logs/slurm"
rm -f -- "$out/summary.csv" "$out/summary.txt"
# Tasks begin later: what they read is the list as it is now, each clip under a name that holds everywhere.
fixed=$out/clips.txt
for clip in "${clips[@]}"; do absolute "$clip"; echo; done >"$fixed.new"
mv -f -- "$fixed.new" "$fixed"
export FLEET_HOME=$here
# A sign of percent begins a replacement there.
logs=${out//%/%%}/logs/slurm
# Within a job: the tasks are jobs of their own, of the same cluster.
if [ -n "${SLURM_JOB_ID:-}" ]; then
    for variable in "${!SLURM_@}"; do
        [[ $variable == SLURM_CONF* ]] || unset "$variable"
    done
fi

# A cluster takes so many tasks in one array.
largest=$(scontrol show config | sed -n 's/^MaxArraySize *= *//p')
largest=$((${largest:-1001} - 1))
jobs='' after=()
for ((FLEET_FIRST = 0; FLEET_FIRST < ${#clips[@]}; FLEET_FIRST += largest)); do
    tasks=$((${#clips[@]} - FLEET_FIRST))
    [ "$tasks" -le "$largest" ] || tasks=$largest
    export FLEET_FIRST
    job=$(sbatch --parsable --requeue --export=ALL --job-name=burn --array="1-$tasks$at_once" --ntasks=1 \
        --cpus-per-task="${FLEET_CPUS:-1}" --output="$logs/%A_%a.log" ${after[@]+"${after[@]}"} \
        "$here/slurm/array_task.sh" "$fixed" "$config" "$out" "$@")
    jobs+=:${job%%;*}
    # An array counts its own tasks only: that no more than N run, the next one waits for this one.
    [ -z "$at_once" ] || after=("--dependency=afterany:${job%%;*}")
done
echo "burn_array: ${#clips[@]} clips, jobs ${jobs#:}; $out/summary.txt will tell what became of them"
sbatch --parsable --requeue --export=ALL --job-name=burn-summary --dependency="afterany$jobs" --ntasks=1 \
    --output="$logs/summary_%j.log" "${wait[@]}" "$here/summarise.sh" "$fixed" "$config" "$out" >/dev/null || {
    cat -- "$out/summary.txt" >&2
    exit 1
}
