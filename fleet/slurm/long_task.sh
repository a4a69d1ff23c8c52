#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# One piece of a long recording: array task N burns from the (N-1)-th cut to the N-th. Submitted by burn_long.sh.
#   long_task.sh INPUT CONFIG PIECES_FOLDER [BURN_OPTION...]
set -euo pipefail
# shellcheck source-path=SCRIPTDIR source=../lib.sh
. "${FLEET_HOME:?}/lib.sh"

piece=$SLURM_ARRAY_TASK_ID
folder=$3
ending=$(<"$folder/ending")
mapfile -t cuts <"$folder/cuts"

range=()
[ "$piece" -eq 1 ] || range+=(--from "${cuts[piece - 2]}")
[ "$piece" -gt "${#cuts[@]}" ] || range+=(--to "${cuts[piece - 1]}")

FLEET_NAME=$(printf 'piece-%04d.%s' "$piece" "$ending")
export FLEET_NAME
code=0
"${FLEET_HOME:?}/burn_one.sh" "$1" "$2" "$folder" "${range[@]}" "${@:4}" || code=$?
requeue_when_killed "$code"
exit "$code"
