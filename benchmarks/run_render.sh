#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Runs the benchmark of the plugin's share of a frame and writes its tables into benchmarks/README.md.
#   benchmarks/run_render.sh BUILD_DIR [options of Google Benchmark]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:?"usage: benchmarks/run_render.sh BUILD_DIR"}
shift

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$build/bin/render_benchmark" --table="$work/table" --benchmark_repetitions=15 --benchmark_min_time=0.05 \
    --benchmark_enable_random_interleaving=true "$@"

{
    echo "Machine: $(LC_ALL=C lscpu | sed -n 's/^Model name: *//p'), $(nproc) processors,"
    echo "$(. /etc/os-release && echo "$PRETTY_NAME"), $(c++ --version | head -n 1)."
    echo "Command: \`benchmarks/run_render.sh BUILD_DIR\`. The least of 15 repetitions, processor time."
    echo
    cat "$work/table"
} | "$root/scripts/write-section" "$root/benchmarks/README.md" render
