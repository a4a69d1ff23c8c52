// Before main: fontconfig sees only the fonts that the tests are written for, whatever else is installed.
#include <cstdlib>

namespace {

bool const arePinned = [] {
    setenv("FONTCONFIG_FILE", OVERLAY_SOURCE_DIR "/tests/golden/painter/fonts.conf", 1);
    return true;
}();

}  // namespace
