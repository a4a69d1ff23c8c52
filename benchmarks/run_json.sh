#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Runs the benchmark of reading and writing JSON and writes its table into benchmarks/README.md.
#   benchmarks/run_json.sh BUILD_DIR [options of Google Benchmark]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:?"usage: benchmarks/run_json.sh BUILD_DIR"}
shift

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$build/bin/json_benchmark" --table="$work/table" --benchmark_repetitions=25 --benchmark_min_time=0.05 \
    --benchmark_enable_random_interleaving=true "$@"

{
    echo "Machine: $(LC_ALL=C lscpu | sed -n 's/^Model name: *//p'), $(nproc) processors,"
    echo "$(. /etc/os-release && echo "$PRETTY_NAME"), $(c++ --version | head -n 1)."
    echo "Command: \`benchmarks/run_json.sh BUILD_DIR\`. The least of 25 repetitions, processor time."
    echo
    cat "$work/table"
} | "$root/scripts/write-section" "$root/benchmarks/README.md" json
