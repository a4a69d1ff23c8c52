#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Joins the pieces of a long recording; without all of them says which are missing and why, and joins nothing.
#   join_pieces.sh PIECES_FOLDER OUTPUT
set -euo pipefail
# shellcheck source-path=SCRIPTDIR source=../lib.sh
. "${FLEET_HOME:?}/lib.sh"
folder=${1:?"usage: join_pieces.sh PIECES_FOLDER OUTPUT"}
output=${2:?"usage: join_pieces.sh PIECES_FOLDER OUTPUT"}
ending=$(<"$folder/ending")
pieces=$(($(wc -l <"$folder/cuts") + 1))

# member NAME FILE: of a summary, as it stands there.
member() {
    sed -n "s/^  \"$1\": \"\\{0,1\\}\\(.*[^\"]\\)\"\\{0,1\\},\$/\\1/p" -- "$2" 2>/dev/null || true
}

# begin OPTION...: when a piece begins, or the stream of it that the options choose.
begin() {
    local text
    text=$(ffprobe -v error "${@:2}" -of csv=p=0 -i "file:$1")
    printf '%s' "${text%%[$'\n',]*}"
}

missing=0
rm -f -- "$folder/missing"
names=() leads=() lengths=()
for ((piece = 1; piece <= pieces; ++piece)); do
    name=$(printf 'piece-%04d.%s' "$piece" "$ending")
    summary=$folder/summaries/$name.json
    if [ ! -s "$folder/$name" ] || [ "$(member exitCode "$summary")" != 0 ]; then
        missing=$((missing + 1))
        recall "$name" "$folder"
        explain
        echo "piece $piece is missing: $reason" >>"$folder/missing"
        continue
    fi
    start=$(begin "$folder/$name" -show_entries format=start_time)
    names+=("$name")
    lengths+=("$(member videoSeconds "$summary")")
    leads+=("$(awk -v video="$(begin "$folder/$name" -select_streams V:0 -show_entries stream=start_time)" -v all="$start" \
        'BEGIN { printf "%.6f", video - all }')")
    [ "$piece" -gt 1 ] || first_start=$start
done
if [ "$missing" -gt 0 ]; then
    cat -- "$folder/missing" >&2
    exit 1
fi

# The next piece's pictures follow on this one's, whatever its sound does: pieces are placed by the first packet in them,
# which may be one of sound before the pictures.
{
    echo "ffconcat version 1.0"
    for ((piece = 0; piece < pieces; ++piece)); do
        echo "file '${names[piece]}'"
        awk -v length_="${lengths[piece]}" -v lead="${leads[piece]}" -v next_="${leads[piece + 1]:-${leads[piece]}}" \
            'BEGIN { printf "duration %.6f\n", length_ + lead - next_ }'
    done
} >"$folder/join.txt"

part=${output%/*}/.${output##*/}.part-join.$ending
trap 'rm -f -- "$part"' EXIT
ffmpeg -v error -nostdin -y -f concat -safe 0 -i "file:$folder/join.txt" -map 0 -ignore_unknown -c copy \
    -muxdelay 0 -muxpreload 0 -output_ts_offset "$first_start" "file:$part"
mv -f -- "$part" "$output"
# The folder holds the log of this very job; on some network disks an open file keeps it.
rm -rf -- "$folder" || true
