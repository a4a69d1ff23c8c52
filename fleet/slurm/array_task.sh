#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# One task of an array: the clip in line FLEET_FIRST + SLURM_ARRAY_TASK_ID. Submitted by burn_array.sh.
#   array_task.sh LIST CONFIG OUT [BURN_OPTION...]
set -euo pipefail
# shellcheck source-path=SCRIPTDIR source=../lib.sh
. "$FLEET_HOME/lib.sh"

code=0
"$FLEET_HOME/burn_one.sh" --line $((FLEET_FIRST + SLURM_ARRAY_TASK_ID)) "$@" || code=$?
requeue_when_killed "$code"
exit "$code"
