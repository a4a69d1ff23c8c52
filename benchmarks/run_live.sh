#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Measures the delay of live work against ffmpeg's drawtext and writes the table into benchmarks/README.md.
#   benchmarks/run_live.sh BUILD_DIR [SECONDS]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:?"usage: benchmarks/run_live.sh BUILD_DIR [SECONDS]"}
seconds=${2:-20}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# What a camera with telemetry sends: no pictures out of order, a key picture every second.
"$build/bin/stanag-overlay" sample "$work/flight.ts" --seconds $((seconds + 5)) --size 1280x720 --fps 25
ffmpeg -v error -i "$work/flight.ts" -map 0 -c copy -c:v libx264 -preset veryfast -tune zerolatency -g 25 -bf 0 \
    -b:v 4M "$work/camera.ts"

font=$(fc-match -f '%{file}' 'DejaVu Sans')
run() { "$build/bin/live_benchmark" "$1" "$work/camera.ts" "$seconds" -- "${@:2}"; }
ours() {
    run '`stanag-overlay burn --live`' "$build/bin/stanag-overlay" burn '{in}' \
        -c "$root/examples/full_screen_hud.json" --live -o '{out}?pkt_size=1316' 2>/dev/null
}
theirs() {
    run '`ffmpeg`, one drawtext, its low-delay options' ffmpeg -v quiet -nostdin -fflags nobuffer -flags low_delay \
        -probesize 65536 -analyzeduration 0 -copyts -i '{in}' -map 0:v -vsync 0 \
        -vf "drawtext=fontfile=$font:text='HDG %{pts}':fontsize=24:fontcolor=white:x=20:y=20" \
        -c:v libx264 -preset veryfast -tune zerolatency -crf 20 -g 25 -bf 0 \
        -muxdelay 0 -muxpreload 0 -flush_packets 1 -f mpegts '{out}?pkt_size=1316'
}
load=$(cut -d' ' -f1 /proc/loadavg)
{
    echo "Machine: $(LC_ALL=C lscpu | sed -n 's/^Model name: *//p'), $(nproc) processors, load $load before the run,"
    echo "$(. /etc/os-release && echo "$PRETTY_NAME"), $(c++ --version | head -n 1)."
    echo "Command: \`benchmarks/run_live.sh BUILD_DIR\`. $seconds s of 1280x720 at 25 pictures per second, one frame is 40 ms."
    echo
    echo "| command | pictures | median ms | 95th percentile ms | did not come out |"
    echo "| --- | ---: | ---: | ---: | ---: |"
    ours
    theirs
    ours
    theirs
} >"$work/table"
"$root/scripts/write-section" "$root/benchmarks/README.md" live <"$work/table"
cat "$work/table"
