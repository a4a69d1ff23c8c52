#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Runs the benchmark of the painter and writes its tables, plot and pictures into benchmarks/.
#   benchmarks/run_painter.sh BUILD_DIR [SECONDS]      SECONDS for each painter and scene (3)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:?"usage: benchmarks/run_painter.sh BUILD_DIR [SECONDS]"}
seconds=${2:-3}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

load=$(cut -d' ' -f1 /proc/loadavg)
"$build/bin/painter_benchmark" "$work" "$seconds"

{
    echo "Machine: $(LC_ALL=C lscpu | sed -n 's/^Model name: *//p'), $(nproc) processors, load $load before the run,"
    echo "$(. /etc/os-release && echo "$PRETTY_NAME"), $(c++ --version | head -n 1)."
    echo "Command: \`benchmarks/run_painter.sh BUILD_DIR $seconds\`. Processor time of one thread."
    echo
    cat "$work/painter.md"
} | "$root/scripts/write-section" "$root/benchmarks/README.md" painter
cp "$work"/painter.svg "$work"/{ours,drawtext,libass,textoverlay}.png "$root/benchmarks/pictures/"
