#!/bin/sh
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Holds the arrows between the folders: framework <- host_api <- plugin, framework, host_api <- reference host <-
# gstreamer, and those between the rooms of the reference host. Reads the #include lines; a quoted header belongs to
# the folder in which it lies.
#   check_includes.sh SOURCE_DIR
set -eu
cd "$1"
failures=0

# files_of FOLDER...: sources and headers
files_of() {
    find "$@" -type f \( -name '*.h' -o -name '*.cpp' \) | sort
}

# headers_of FOLDER: the names by which its headers are included, as one alternative of a pattern
headers_of() {
    find "$1" -type f -name '*.h' | sed 's|.*/||; s|\.|\\.|g' | sort -u | paste -s -d '|'
}

# forbid WHY PATTERN FILE...: no #include line of the files may match
forbid() {
    why=$1
    pattern=$2
    shift 2
    [ $# -gt 0 ] && [ -n "$pattern" ] || { echo "check_includes: nothing to check for: $why"; failures=1; return 0; }
    if grep -nE "^[[:space:]]*#[[:space:]]*include[[:space:]]*[<\"]([^>\"]*/)?($pattern)[>\"]" "$@" /dev/null; then
        echo "  ^ $why"
        failures=1
    fi
}

host_api=$(headers_of host_api)
plugin=$(headers_of stanag_overlay_plugin)
host=$(headers_of reference_host)
media='libav[a-z]*/.*|libsw[a-z]*/.*|ft2build\.h|freetype.*|hb(-[a-z]+)?\.h|fribidi.*|fontconfig.*|CLI/.*|png\.h|hwy/.*|microhttpd\.h'

forbid "the framework uses nothing of this project" "$host_api|$plugin|$host" $(files_of framework)
forbid "the plugin interface uses only the framework" "$plugin|$host" $(files_of host_api)
forbid "the plugin sees only framework and plugin interface" "$host" $(files_of stanag_overlay_plugin)
forbid "the host loads the plugin, it never includes it" "$plugin" $(files_of reference_host)
forbid "configuration, conditions and formats need no host" "$host_api|class_loader/.*" \
    $(find stanag_overlay_plugin/src -name 'stanag_overlay_*' -o -name 'overlay_number*' -o -name 'overlay_date*')
forbid "media and text libraries belong to the reference host" "$media" \
    $(files_of framework host_api stanag_overlay_plugin tests/framework tests/host_api tests/plugin tests/support |
        grep -v '^tests/support/host/')
forbid "GStreamer belongs to its element" 'gst/.*' \
    $(files_of framework host_api stanag_overlay_plugin reference_host tests | grep -v '^tests/gstreamer/')
forbid "what meets GStreamer loads the plugin and reads no stream by itself" \
    "$plugin|(media|flight|editor|cli)/[^>\"]*|clip/(annotated|clip|live|stream|telemetry_[^w])[^>\"]*|libav[a-z]*/.*" \
    $(files_of gstreamer)
forbid "positions become text in the telemetry only" 'GeographicLib/.*' \
    $(files_of framework host_api stanag_overlay_plugin reference_host tests |
        grep -v '^reference_host/telemetry/')
forbid "a folder is never reached by a relative path" '\.\./.*' \
    $(files_of framework host_api stanag_overlay_plugin reference_host tests)

# Within the reference host an include names its room.
if grep -nE "^[[:space:]]*#[[:space:]]*include[[:space:]]*\"($host)\"" $(files_of reference_host) /dev/null; then
    echo "  ^ a header of the reference host is included with its room"
    failures=1
fi

# room NAME USES...: of the reference host, files of room NAME include only the rooms that it uses and their own
room() {
    own_and_used=$(printf '%s/\n' "$@")
    others=$(cd reference_host && ls -d */ | grep -vxF "$own_and_used" | paste -s -d '|')
    [ -n "$others" ] || return 0
    name=$1
    shift
    forbid "$name uses ${*:-no other room}" "($others)[^>\"]*" $(files_of "reference_host/$name")
}

room imaging
room telemetry
room media
room flight
room check
room frame imaging
room clip frame media telemetry imaging
room editor clip check frame media telemetry imaging
room cli editor clip frame check flight media telemetry imaging
forbid "telemetry and check know the framework only" "$host_api" $(files_of reference_host/telemetry reference_host/check)
for folder in reference_host/*/; do
    grep -q "^room $(basename "$folder")\b" "$0" || { echo "$folder: has no rule here"; failures=1; }
done

[ "$failures" -eq 0 ] && echo "all includes follow the arrows"
exit "$failures"
