#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Measures `frame --at` in an hour of 1080p and writes the table into benchmarks/README.md.
#   benchmarks/run_seek.sh BUILD_DIR [FOLDER]      FOLDER keeps the clip of some gigabytes for the next run
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:?"usage: benchmarks/run_seek.sh BUILD_DIR [FOLDER]"}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
folder=${2:-$work}

hour=$folder/hour.ts
if [ ! -e "$hour" ]; then
    # A minute of flight sixty times over, with clocks that go on.
    "$build/bin/stanag-overlay" sample "$work/minute.ts" --seconds 60 --size 1920x1080
    ffmpeg -v error -stream_loop 59 -i "$work/minute.ts" -map 0 -c copy "$hour"
    rm "$work/minute.ts"
fi

# Processor time of a command, all its threads.
seconds_of() {
    local TIMEFORMAT='%U %S'
    { time "$@" >"$work/said" 2>&1 || { cat "$work/said" >&2; exit 1; }; } 2>&1 | awk '{ printf "%.3f", $1 + $2 }'
}

config=$root/examples/full_screen_hud.json
cat "$hour" >/dev/null  # into memory, for all alike
load=$(cut -d' ' -f1 /proc/loadavg)
for run in 1 2 3; do
    read -r demux decode < <("$build/bin/seek_benchmark" "$hour" 3570)
    frame=$(seconds_of "$build/bin/stanag-overlay" frame "$hour" -c "$config" --at 00:59:30 -o "$work/f.png")
    ffmpeg=$(seconds_of ffmpeg -y -v error -ss 00:59:30 -i "$hour" -frames:v 1 "$work/g.png")
    echo "$frame $demux $decode $ffmpeg"
done | sort -n | sed -n 2p >"$work/median"
read -r frame demux decode ffmpeg <"$work/median"
limit=$(echo "$demux $decode" | awk '{ printf "%.3f", 2 * $1 + $2 }')
{
    echo "Machine: $(LC_ALL=C lscpu | sed -n 's/^Model name: *//p'), $(nproc) processors, load $load before the run,"
    echo "$(. /etc/os-release && echo "$PRETTY_NAME"), $(c++ --version | head -n 1)."
    echo "Command: \`benchmarks/run_seek.sh BUILD_DIR\`. A transport stream of $(($(stat -c %s "$hour") / 1000000)) MB;"
    echo "the median of three runs, processor time of all threads."
    echo
    echo "| what | s |"
    echo "| --- | ---: |"
    echo "| \`frame --at 00:59:30\`, exact | $frame |"
    echo "| reading the clip up to there | $demux |"
    echo "| decoding from the key picture before | $decode |"
    echo "| allowed: twice the reading and the decoding | $limit |"
    echo "| \`ffmpeg -ss 00:59:30 -frames:v 1\`, without telemetry | $ffmpeg |"
} | "$root/scripts/write-section" "$root/benchmarks/README.md" seek
