// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Tells blocks by their text colour, which takes part in nothing but the painting: each is given its number for one.
#include "clip/placed_blocks.h"

#include "clip/clip_seek.h"

#include <array>
#include <cstdio>

namespace clip {
namespace {

constexpr int kMostPictures = 300;

}  // namespace

SwJsonObject withNumbersForColors(SwJsonObject root)
{
    SwJsonArray& items = *root["overlay"].editArray();
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (items[i].isObject()) {
            std::array<char, 8> color{};
            std::snprintf(color.data(), color.size(), "#%06x", static_cast<unsigned>(i & 0xFFFFFFU));
            (*items[i].editObject())["textColor"] = color.data();
        }
    }
    return root;
}

std::size_t numberOf(imaging::DrawnText const& text)
{
    return std::size_t{text.pen.r} << 16U | std::size_t{text.pen.g} << 8U | text.pen.b;
}

std::string configText(SwJsonObject const& root)
{
    SwString text;
    SwJsonDocument::generateJson(SwJsonValue(root), text, false, 0, SwString());
    return text;
}

DrawnBlocks blocksShownAt(ClipSource source, SwJsonObject const& root, std::optional<double> seconds)
{
    source.config = configText(withNumbersForColors(root));
    auto const clip = seconds ? openShownAt(source, *seconds) : openRange(source, {});
    DrawnBlocks drawn;
    imaging::recordTexts(clip->painter(), [&drawn](imaging::DrawnText const& text) {
        drawn.blocks.push_back({numberOf(text), text});
    });
    int const pictures = seconds ? 1 : kMostPictures;
    for (int i = 0; i < pictures && drawn.blocks.empty(); ++i) {
        std::optional<ClipFrame> const frame = clip->next();
        if (!frame) {
            break;
        }
        clip->annotate(*frame);
        drawn.seconds = clip->sinceFirst(*frame);
        drawn.width = static_cast<int>(frame->picture->width());
        drawn.height = static_cast<int>(frame->picture->height());
    }
    return drawn;
}

}  // namespace clip
