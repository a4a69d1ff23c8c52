// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Before main: fontconfig sees only the fonts that the tests are written for, whatever else is installed.
#include <cstdlib>

namespace {

bool const arePinned = [] {
    setenv("FONTCONFIG_FILE", OVERLAY_SOURCE_DIR "/tests/golden/painter/fonts.conf", 1);
    return true;
}();

}  // namespace
