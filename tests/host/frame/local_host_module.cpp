// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A host in a library of its own, as players and editors have their filters: it loads the plugin and gives it the
// frames' times. Opened with local binding by its test.
#include "FrameTime.h"
#include "frame/frame_renderer.h"
#include "imaging/imaging_access.h"

#include <cstddef>
#include <cstdint>
#include <memory>

/// Renders one frame for each of the times with a block that appears after 200 ms; says in `shown` which frames
/// show it.
extern "C" __attribute__((visibility("default"))) void renderAt(std::uint64_t const* timesNs, std::size_t count,
                                                                bool* shown)
{
    frame::FrameRenderer renderer;
    renderer.plugin().setConfig(R"({"overlay":[{"formatString":"%v","condition":{"key":"v","showAfterMs":200}}]})");
    frame::Choice const choice{"klv", std::make_shared<SwJsonObject const>(SwJsonObject{{"v", 7}}), 1, false};
    bool drawn = false;
    imaging::recordTexts(renderer.painter(), [&drawn](imaging::DrawnText const&) { drawn = true; });
    for (std::size_t frame = 0; frame < count; ++frame) {
        drawn = false;
        FrameTime const time(timesNs[frame]);
        renderer.render(frame + 1, renderer.takePicture(64, 1080), {"klv"}, {choice});
        shown[frame] = drawn;
    }
}
