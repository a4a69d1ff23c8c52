#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Measures the GStreamer element against textoverlay and writes the table into benchmarks/README.md.
#   benchmarks/run_gstreamer.sh BUILD_DIR [FRAMES]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:?"usage: benchmarks/run_gstreamer.sh BUILD_DIR [FRAMES]"}
frames=${2:-300}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

load=$(cut -d' ' -f1 /proc/loadavg)
{
    echo "Machine: $(LC_ALL=C lscpu | sed -n 's/^Model name: *//p'), $(nproc) processors, load $load before the run,"
    echo "$(. /etc/os-release && echo "$PRETTY_NAME"), $(c++ --version | head -n 1)."
    echo "Command: \`benchmarks/run_gstreamer.sh BUILD_DIR $frames\`."
    echo
    "$build/bin/gstreamer_benchmark" "$frames" 2>/dev/null
} >"$work/table"
"$root/scripts/write-section" "$root/benchmarks/README.md" gstreamer <"$work/table"
cat "$work/table"
