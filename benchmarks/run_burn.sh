#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Measures what `burn` adds to decoding and encoding and writes the table into benchmarks/README.md.
#   benchmarks/run_burn.sh BUILD_DIR
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:?"usage: benchmarks/run_burn.sh BUILD_DIR"}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
load=$(cut -d' ' -f1 /proc/loadavg)
"$build/bin/stanag-overlay" sample "$work/flight.ts" --seconds 8 --size 1920x1080
# Of five runs the one with the least disturbance counts.
for run in 1 2 3 4 5; do
    "$build/bin/burn_benchmark" "$work/flight.ts" "$root/examples/full_screen_hud.json" "$work/out.ts" \
        >"$work/table$run" 2>/dev/null
done
best=$(for run in 1 2 3 4 5; do echo "$(grep together "$work/table$run" | awk '{ print $(NF - 1) }') $run"; done | sort -n | head -n 1)
{
    echo "Machine: $(LC_ALL=C lscpu | sed -n 's/^Model name: *//p'), $(nproc) processors, load $load before the run,"
    echo "$(. /etc/os-release && echo "$PRETTY_NAME"), $(c++ --version | head -n 1)."
    echo "Command: \`benchmarks/run_burn.sh BUILD_DIR\`. Processor time of the program's own thread per frame of 1920x1080;"
    echo "the best of five runs."
    echo
    cat "$work/table${best##* }"
} | "$root/scripts/write-section" "$root/benchmarks/README.md" burn
