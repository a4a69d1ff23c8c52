#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Burns one long recording on many nodes: pieces of equal length as a job array, and a job that joins them.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
if [ ! -f "$here/lib.sh" ]; then
    echo "burn_long.sh: run it as it is, it calls sbatch itself" >&2
    exit 2
fi
# shellcheck source-path=SCRIPTDIR source=../lib.sh
. "$here/lib.sh"

if [ "${1:-}" = --help ]; then
    cat <<'HELP'
usage: burn_long.sh [--wait] INPUT CONFIG OUTPUT PIECES [BURN_OPTION...]

Cuts INPUT into PIECES parts of equal length, burns each as a task of its own and joins them to OUTPUT. The texts on every
picture are those of one burn. The pieces stand in OUTPUT.pieces, which goes when OUTPUT is there; when one fails, they
stay, OUTPUT is as it was, and the same command burns only what is missing. Paths must mean the same on all nodes.

  --wait          return when all is done, with exit code 0 when OUTPUT is there, else 1
  BURN_OPTION     passed on to `stanag-overlay burn`, such as --crf 28; not --from and --to
  FLEET_PROGRAM   the program (default: stanag-overlay)
  SBATCH_...      where and how the tasks run; FLEET_CPUS is the number of processors of a task (default: 1)
HELP
    exit 0
fi

# The pieces have their own names.
unset FLEET_ENDING

wait=()
if [ "${1:-}" = --wait ]; then
    wait=(--wait)
    shift
fi
[ $# -ge 4 ] || fail "give INPUT, CONFIG, OUTPUT and PIECES; burn_long.sh --help tells more"
input=$1 config=$2 output=$3 pieces=$4
shift 4
need_file "the input" "$input"
need_file "the configuration" "$config"
one_line "the output" "$output"
[[ $pieces =~ ^[1-9][0-9]{0,3}$ ]] || fail "the number of pieces ${pieces@Q}: give one from 1 to 9999"
[[ ${output##*/} == ?*.* ]] || fail "the output ${output@Q} has no ending that names its container"
for option in "$@"; do
    case $option in
        --from | --from=* | --to | --to=* | --summary | --summary=*) fail "$option: the pieces have their own" ;;
    esac
done
need_command sbatch slurm-client
need_command ffmpeg ffmpeg
need_command ffprobe ffmpeg
need_program

input=$(absolute "$input")
config=$(absolute "$config")
output=$(absolute "$output")
[ -d "${output%/*}" ] || fail "the folder ${output%/*} does not exist; create it first"
folder=$output.pieces
if [ -e "$folder" ] && [ ! -f "$folder/plan" ]; then
    fail "$folder is needed for the pieces and holds something else; rename it"
fi

# Of the pictures; where they do not say, of the whole.
seconds() {
    ffprobe -v error "$@" -of csv=p=0 -i "file:$input" 2>/dev/null || true
}
length=$(seconds -select_streams V:0 -show_entries stream=duration)
length=${length%%$'\n'*}
[[ $length =~ ^[0-9]+(\.[0-9]+)?$ ]] || length=$(seconds -show_entries format=duration)
[[ $length =~ ^[0-9]+(\.[0-9]+)?$ ]] || fail "$input: does not say how long it is"

# Pieces of another cut are of no use, but go only when others are on their way.
plan="$pieces pieces of $length s: $*"
outdated=
put_back() {
    [ -z "$outdated" ] || { rm -rf -- "$folder" && mv -- "$outdated/pieces" "$folder" && rmdir -- "$outdated"; }
}
if [ -e "$folder" ] && [ "$(<"$folder/plan")" != "$plan" ]; then
    outdated=$(mktemp -d "$folder.outdated-XXXXXX")
    trap put_back EXIT
    mv -- "$folder" "$outdated/pieces"
fi
mkdir -p "$folder/logs/slurm"
printf '%s\n' "$plan" >"$folder/plan"
printf '%s\n' "${output##*.}" >"$folder/ending"
awk -v length_="$length" -v pieces="$pieces" \
    'BEGIN { for (cut = 1; cut < pieces; ++cut) printf "%.3f\n", length_ * cut / pieces }' >"$folder/cuts"
rm -f -- "$folder/missing"
export FLEET_HOME=$here
# A sign of percent begins a replacement there.
logs=${folder//%/%%}/logs/slurm

job=$(sbatch --parsable --requeue --export=ALL --job-name=burn-piece --array="1-$pieces" --ntasks=1 \
    --cpus-per-task="${FLEET_CPUS:-1}" --output="$logs/%A_%a.log" \
    "$here/slurm/long_task.sh" "$input" "$config" "$folder" "$@")
if [ -n "$outdated" ]; then
    trap - EXIT
    rm -rf -- "$outdated"
fi
echo "burn_long: $pieces pieces, job ${job%%;*}"
sbatch --parsable --requeue --export=ALL --job-name=burn-join --dependency="afterany:${job%%;*}" --ntasks=1 \
    --output="$logs/join_%j.log" "${wait[@]}" "$here/slurm/join_pieces.sh" "$folder" "$output" >/dev/null ||
    {
        [ ! -f "$folder/missing" ] || cat -- "$folder/missing" >&2
        exit 1
    }
