#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Measures the editor's pictures at 1080p against a run of `frame`, and writes the table into benchmarks/README.md.
#   benchmarks/run_edit.sh BUILD_DIR
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:?"usage: benchmarks/run_edit.sh BUILD_DIR"}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

at=20
config=$root/examples/full_screen_hud.json
"$build/bin/stanag-overlay" sample "$work/clip.ts" --seconds 45 --size 1920x1080

# Real time of a command in milliseconds: people wait for it.
milliseconds_of() {
    local TIMEFORMAT='%R'
    { time "$@" >"$work/said" 2>&1 || { cat "$work/said" >&2; exit 1; }; } 2>&1 | awk '{ printf "%.1f", 1000 * $1 }'
}

load=$(cut -d' ' -f1 /proc/loadavg)
for run in 1 2 3; do
    frame=$(milliseconds_of "$build/bin/stanag-overlay" frame "$work/clip.ts" -c "$config" --at $at -o "$work/f.png")
    echo "$frame $("$build/bin/edit_benchmark" "$work/clip.ts" $at "$config")"
done | sort -n | sed -n 2p >"$work/median"
read -r frame first change unbounded next jump <"$work/median"
row() { echo "| $1 | $2 | $(echo "$frame $2" | awk '{ printf "%.1f", $1 / $2 }') |"; }
{
    echo "Machine: $(LC_ALL=C lscpu | sed -n 's/^Model name: *//p'), $(nproc) processors, load $load before the run,"
    echo "$(. /etc/os-release && echo "$PRETTY_NAME"), $(c++ --version | head -n 1)."
    echo "Command: \`benchmarks/run_edit.sh BUILD_DIR\`. The median of three runs, real time."
    echo
    echo "| what | ms | times faster than \`frame\` |"
    echo "| --- | ---: | ---: |"
    row "\`frame --at $at\`, as PNG" "$frame"
    row "the first picture there" "$first"
    row "another text, at most 200 ms" "$change"
    row "another text, with \`updateEveryNFrames\`" "$unbounded"
    row "the next picture, at most 100 ms" "$next"
    row "a jump" "$jump"
} | "$root/scripts/write-section" "$root/benchmarks/README.md" edit
