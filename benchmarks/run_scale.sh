#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Measures what one core burns in an hour, by picture size and encoder, alone and beside others, and what that makes for
# many cores; writes the tables into docs/scale.md.
#   benchmarks/run_scale.sh BUILD_DIR                    all, in four minutes
#   benchmarks/run_scale.sh BUILD_DIR core|growth|live   one part, and what follows from the tables as they stand then
#   benchmarks/run_scale.sh BUILD_DIR thousand           only what follows from the tables
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:?"usage: benchmarks/run_scale.sh BUILD_DIR [core|growth|live|thousand]"}
part=${2:-all}
program=$build/bin/stanag-overlay
hud=$root/examples/full_screen_hud.json
cores=$(nproc)
scale=$root/docs/scale.md

section() { "$root/scripts/write-section" "$scale" "$1"; }

# table NAME: what stands in the section now.
table() { sed -n "/^<!-- $1:begin/,/^<!-- $1:end/p" "$scale"; }

# thousand: what the tables of one core and of many processes make for a thousand cores.
thousand() {
    local share start
    share=$(table scale-growth | awk -F '|' -v cores="$cores" '$2 + 0 == cores {
        share = $4 / 100
        printf "%.2f\n", share < 1 ? share : 1 }')
    start=$(table scale-core | sed -n 's/^A process costs \(.*\) processor seconds .*/\1/p')
    echo "| pictures | encoder | video hours an hour on one core | x 1,000 | x $share | clips of 60 s an hour |"
    echo "| --- | --- | ---: | ---: | ---: | ---: |"
    table scale-core | awk -F ' *[|] *' -v share="$share" -v start="$start" '$3 ~ /^libx264/ {
        hours = $6
        printf "| %s | %s | %s | %.0f | %.0f | %.0f |\n", $2, $3, hours, 1000 * hours, 1000 * hours * share,
            1000 * share * 3600 / (60 / hours + start) }'
}

if [ "$part" = thousand ]; then
    thousand | section scale-thousand
    exit
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
load=$(cut -d' ' -f1 /proc/loadavg)
echo '{"overlay":[]}' >"$work/empty.json"
# What is written to these goes nowhere, so that no disk is measured.
for ending in ts nut; do ln -s /dev/null "$work/null.$ending"; done

declare -A size=([720p]=1280x720 [1080p]=1920x1080 [2160p]=3840x2160) seconds=([720p]=4 [1080p]=3 [2160p]=1)
heights=(720p 1080p 2160p)
for height in "${heights[@]}"; do
    "$program" sample "$work/$height.ts" --seconds "${seconds[$height]}" --size "${size[$height]}" >&2
done

declare -A options=(
    [ultrafast]="--video-codec libx264 --preset ultrafast --crf 23"
    [veryfast]="--video-codec libx264 --preset veryfast --crf 20"
    [medium]="--video-codec libx264 --preset medium --crf 20"
    [mpeg2]="--video-codec mpeg2video --bitrate 12M"
    [raw]="--video-codec rawvideo")
declare -A called=(
    [ultrafast]="libx264 ultrafast" [veryfast]="libx264 veryfast (default)" [medium]="libx264 medium"
    [mpeg2]="mpeg2video" [raw]="none: decoded pictures copied")
encoders=(raw ultrafast mpeg2 veryfast medium)

member() { sed -n "s/^  \"$1\": \(.*\),\$/\1/p" "$2"; }

# figures SUMMARY: processor seconds, wall seconds, pictures, seconds of video, MiB.
figures() {
    echo "$(member processorSeconds "$1") $(member wallSeconds "$1") $(member frames "$1") $(member videoSeconds "$1")" \
        "$(member peakMemoryMiB "$1")"
}

# burn HEIGHT ENCODER CONFIG SUMMARY
burn() {
    local ending=ts
    [ "$2" != raw ] || ending=nut
    # shellcheck disable=SC2086 # options are words
    "$program" burn "$work/$1.ts" -c "$3" -o "$work/null.$ending" ${options[$2]} --threads 1 --summary "$4" \
        --no-progress 2>/dev/null
}

# least: of the lines of figures the one of the run with the least disturbance.
least() {
    sort -n | { head -n 1 && cat >/dev/null; }
}

# best HEIGHT ENCODER: the figures with all blocks.
best() {
    # Slow encoders take so long that disturbances even out.
    for _ in $([ "$2" = medium ] && echo 1 || echo 1 2); do
        burn "$1" "$2" "$hud" "$work/summary"
        figures "$work/summary"
    done | least
}

# plugin_seconds HEIGHT: what the blocks add; runs with and without take turns.
plugin_seconds() {
    : >"$work/with"
    : >"$work/without"
    for _ in 1 2 3; do
        burn "$1" raw "$work/empty.json" "$work/summary" && figures "$work/summary" >>"$work/without"
        burn "$1" raw "$hud" "$work/summary" && figures "$work/summary" >>"$work/with"
    done
    awk -v with="$(least <"$work/with")" -v without="$(least <"$work/without")" 'BEGIN { print with - without }'
}

# What a process costs before its first picture.
burn 720p raw "$hud" "$work/warm"
startup=$("$program" burn "$work/720p.ts" -c "$hud" -o "$work/null.nut" --video-codec rawvideo --threads 1 --to 0.01 \
    --summary - --no-progress 2>/dev/null | sed -n 's/^  "processorSeconds": \(.*\),$/\1/p')

one_core() {
    echo "| pictures | encoder | ms a picture | of it the plugin | video hours | clips of 60 s | MiB |"
    echo "| --- | --- | ---: | ---: | ---: | ---: | ---: |"
    for height in "${heights[@]}"; do
        plugin=$(plugin_seconds "$height")
        for encoder in "${encoders[@]}"; do
            read -r cpu _ frames video memory <<<"$(best "$height" "$encoder")"
            awk -v height="$height" -v encoder="${called[$encoder]}" -v cpu="$cpu" -v frames="$frames" -v video="$video" \
                -v memory="$memory" -v plugin="$plugin" -v start="$startup" 'BEGIN {
                hours = video / (cpu - start)
                printf "| %s | %s | %.2f | %.1f %% | %.2f | %.0f | %.0f |\n", height, encoder, 1e3 * (cpu - start) / frames,
                    100 * plugin / (cpu - start), hours, 3600 / (60 / hours + start), memory }'
        done
    done
}

# together N: video seconds in a second of N processes at once, and their processor seconds for a second of video.
together() {
    local begin end
    begin=$(date +%s%N)
    for ((process = 1; process <= $1; ++process)); do
        burn 1080p ultrafast "$hud" "$work/together$process" &
    done
    wait
    end=$(date +%s%N)
    for ((process = 1; process <= $1; ++process)); do figures "$work/together$process"; done |
        awk -v wall=$((end - begin)) '{ cpu += $1; video += $4 } END { print video / (wall / 1e9), cpu / video }'
}

growth() {
    echo "| processes | video seconds in a second | of N times one | processor seconds for a second of video |"
    echo "| ---: | ---: | ---: | ---: |"
    local alone=
    for processes in $(seq 1 "$cores") $((2 * cores)); do
        read -r rate cost <<<"$(for _ in 1 2; do together "$processes"; done | sort -rn | { head -n 1 && cat >/dev/null; })"
        alone=${alone:-$rate}
        awk -v n="$processes" -v rate="$rate" -v alone="$alone" -v cost="$cost" -v cores="$cores" 'BEGIN {
            used = n < cores ? n : cores
            printf "| %d | %.2f | %.0f %% | %.3f |\n", n, rate, 100 * rate / (alone * used), cost }'
    done
}

# As fast as a camera sends. One core cannot carry 2160p.
live() {
    echo "| pictures | encoder | ms a picture | cores for 30 pictures a second | streams on a core at 70 % | dropped | MiB |"
    echo "| --- | --- | ---: | ---: | ---: | ---: | ---: |"
    for height in 720p 1080p; do
        for encoder in ultrafast veryfast; do
            # shellcheck disable=SC2086 # options are words
            ffmpeg -v error -nostdin -re -i "$work/$height.ts" -map 0 -c copy -f mpegts - 2>/dev/null |
                "$program" burn - --live -c "$hud" -o "$work/null.ts" ${options[$encoder]} --threads 1 \
                    --summary "$work/live" 2>/dev/null
            awk -v height="$height" -v encoder="${called[$encoder]}" -v cpu="$(member processorSeconds "$work/live")" \
                -v frames="$(member frames "$work/live")" -v start="$startup" -v memory="$(member peakMemoryMiB "$work/live")" \
                -v dropped="$(sed -n 's/.*"droppedPictures": \([0-9]*\),/\1/p' "$work/live")" 'BEGIN {
                cost = (cpu - start) / frames
                printf "| %s | %s | %.1f | %.2f | %.2f | %d of %d | %.0f |\n", height, encoder, 1e3 * cost, 30 * cost,
                    0.7 / (30 * cost), dropped, dropped + frames, memory }'
        done
    done
}

if [ "$part" = all ] || [ "$part" = core ]; then
    {
        echo "Machine: $(LC_ALL=C lscpu | sed -n 's/^Model name: *//p'), $cores processors, load $load before the run,"
        echo "$(sed -n 's/^PRETTY_NAME="\(.*\)"$/\1/p' /etc/os-release), $(c++ --version | head -n 1)."
        echo "A process costs $startup processor seconds before its first picture."
        echo
        one_core
    } | section scale-core
fi
if [ "$part" = all ] || [ "$part" = growth ]; then growth | section scale-growth; fi
thousand | section scale-thousand
if [ "$part" = all ] || [ "$part" = live ]; then live | section scale-live; fi
