#!/bin/sh
# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# The check itself: on a small tree every forbidden include is found, and a good tree passes.
#   check_includes_test.sh CHECK WORK_DIR
set -eu
check=$1
tree=$2/tree

good_tree() {
    rm -rf "$tree"
    mkdir -p "$tree/gstreamer" "$tree/framework" "$tree/host_api" "$tree/stanag_overlay_plugin/src" "$tree/reference_host/media" \
        "$tree/tests/framework" "$tree/tests/host_api" "$tree/tests/plugin" "$tree/tests/support/host"
    for room in imaging telemetry flight check frame clip editor cli; do
        mkdir "$tree/reference_host/$room"
        : >"$tree/reference_host/$room/$room.h"
    done
    : >"$tree/framework/SwText.h"
    echo '#include "SwText.h"' >"$tree/host_api/Plugin.h"
    : >"$tree/stanag_overlay_plugin/src/stanag_overlay_config.h"
    printf '#include "Plugin.h"\n#include "SwText.h"\n' >"$tree/stanag_overlay_plugin/src/Overlay.cpp"
    printf '#include "Plugin.h"\n#include <libavformat/avformat.h>\n' >"$tree/reference_host/media/demuxer.h"
    echo '#include <gst/gst.h>' >"$tree/gstreamer/element.h"
    echo '#include <libavformat/avformat.h>' >"$tree/tests/support/host/clips.cpp"
    printf '#include "frame/frame.h"\n#include "media/demuxer.h"\n' >"$tree/reference_host/clip/clip.h"
}

# refused FILE INCLUDE
refused() {
    good_tree
    echo "#include $2" >>"$tree/$1"
    if "$check" "$tree" >/dev/null; then
        echo "$1 may include $2"
        exit 1
    fi
}

good_tree
"$check" "$tree"
refused framework/SwText.h '"Plugin.h"'
refused framework/SwText.h '"stanag_overlay_config.h"'
refused framework/SwText.h '<libavutil/frame.h>'
refused host_api/Plugin.h '"stanag_overlay_config.h"'
refused host_api/Plugin.h '"demuxer.h"'
refused stanag_overlay_plugin/src/Overlay.cpp '"media/demuxer.h"'
refused stanag_overlay_plugin/src/Overlay.cpp '<hb.h>'
refused stanag_overlay_plugin/src/Overlay.cpp '"../../framework/SwText.h"'
refused stanag_overlay_plugin/src/stanag_overlay_config.h '"Plugin.h"'
refused stanag_overlay_plugin/src/stanag_overlay_config.h '<class_loader/class_loader.hpp>'
refused reference_host/media/demuxer.h '"stanag_overlay_config.h"'
refused tests/plugin/some_test.cpp '<CLI/CLI.hpp>'
refused tests/support/text.cpp '<png.h>'
refused tests/plugin/some_test.cpp '"../support/text.h"'
refused reference_host/cli/cli.h '<gst/gst.h>'
refused tests/plugin/some_test.cpp '<gst/gst.h>'
refused gstreamer/element.h '"media/demuxer.h"'
refused gstreamer/element.h '"clip/clip.h"'
refused gstreamer/element.h '"stanag_overlay_config.h"'
refused reference_host/cli/cli.h '<GeographicLib/MGRS.hpp>'
refused tests/plugin/some_test.cpp '<GeographicLib/MGRS.hpp>'
refused reference_host/clip/clip.h '"cli/cli.h"'
refused reference_host/clip/clip.h '"check/check.h"'
refused reference_host/clip/clip.h '"frame.h"'
refused reference_host/check/check.h '"clip/clip.h"'
refused reference_host/check/check.h '"Plugin.h"'
refused reference_host/telemetry/telemetry.h '"Plugin.h"'
refused reference_host/frame/frame.h '"media/demuxer.h"'
refused reference_host/media/demuxer.h '"imaging/imaging.h"'
mkdir "$tree/reference_host/attic"
if "$check" "$tree" >/dev/null; then
    echo "a room without a rule is found good"
    exit 1
fi
echo "every forbidden include is found"
