// The editor's pictures against the way of the command that makes one annotated picture.
#include "editor/preview.h"

#include "clips.h"
#include "temp_folder.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int kFrames = 50;

using media_test::TempFolder;

std::string makeClip(TempFolder const& folder)
{
    clip_test::ClipSpec spec;
    spec.path = folder.file("clip.ts");
    spec.frames = kFrames;
    spec.klvStreams.emplace_back();
    for (int i = 0; i < kFrames; ++i) {
        spec.klvStreams.front().push_back({{"heading_deg", SwJsonValue(1.5 * i)}});
    }
    clip_test::makeClip(spec);
    return spec.path;
}

TEST(Preview, ShowsTheFrameAtATime)
{
    TempFolder const folder;
    editor::Preview preview({makeClip(folder), {}, {}, {}, {}});
    EXPECT_EQ(preview.facts().name, "clip.ts");
    EXPECT_EQ(preview.facts().width, 320);
    EXPECT_EQ(preview.facts().height, 240);
    editor::Shown const shown =
        preview.show(R"({"overlay":[{"formatString":"%heading_deg"}]})", editor::Place::at(0.4));
    EXPECT_EQ(shown.frame, 11U);
    EXPECT_EQ(shown.rgb.size(), 320U * 240U * 3U);
    ASSERT_EQ(shown.boxes.size(), 1U);
    EXPECT_EQ(shown.boxes.front().block, 0U);
}

}  // namespace
