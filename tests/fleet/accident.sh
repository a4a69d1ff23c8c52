#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# The program, with accidents: killed in the midst of its work, or standing still until its node is lost.
#   killed_*         killed with its first attempt
#   always_killed_*  killed with every attempt
#   any, on node n2  the first one there stands still; the mark `held` tells its number
# Called as the program is: burn CLIP -c CONFIG -o OUTPUT --summary FILE ...
set -euo pipefail
clip=${2##*/} output=$6 summary=$8
part=${output%/*}/.${output##*/}.part-

accident=
case $clip in
    always_killed_*) accident="kill" ;;
    killed_*) if mkdir "$ACCIDENT_MARKS/$clip" 2>/dev/null; then accident="kill"; fi ;;
    *) if [ "${SLURMD_NODENAME:-}" = n2 ] && mkdir "$ACCIDENT_MARKS/hold" 2>/dev/null; then accident=hold; fi ;;
esac
[ -n "$accident" ] || exec "$OVERLAY_PROGRAM" "$@"

# The program stands still while its temporary file is there: it has begun and has not ended. One that was quicker than this
# script has never been here.
stopped=
for _ in $(seq 50); do
    "$OVERLAY_PROGRAM" "$@" &
    burn=$!
    until [ -e "$part$burn" ] || ! kill -0 "$burn" 2>/dev/null; do :; done
    kill -STOP "$burn" 2>/dev/null || true
    if [ -e "$part$burn" ]; then
        stopped=1
        break
    fi
    wait "$burn" || true
    rm -f -- "$output" "$summary"
done
[ -n "$stopped" ] || echo "$clip" >>"$ACCIDENT_MARKS/too_late"
if [ "$accident" = hold ]; then
    echo "$burn" >"$ACCIDENT_MARKS/hold/new" && mv "$ACCIDENT_MARKS/hold/new" "$ACCIDENT_MARKS/held"
else
    kill -KILL "$burn"
fi
code=0
# The shell's own line about a killed child is none of the program's.
{ wait "$burn" || code=$?; } 2>/dev/null
exit "$code"
