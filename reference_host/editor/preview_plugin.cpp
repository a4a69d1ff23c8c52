// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Holds, delays and counted frames come out right because the plugin sees again what came before.
#include "editor/preview_plugin.h"

#include "FrameTime.h"
#include "clip/config_memory.h"
#include "imaging/imaging_access.h"

#include <algorithm>
#include <utility>

namespace editor {
namespace {

SwJsonObject withoutItems(SwJsonObject root, std::vector<std::size_t> const& hidden)
{
    SwJsonArray const& items = std::as_const(root)["overlay"].toArray();
    SwJsonArray shown;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (std::find(hidden.begin(), hidden.end(), i) == hidden.end()) {
            shown.append(items[i]);
        }
    }
    root["overlay"] = SwJsonValue(std::move(shown));
    return root;
}

/// The first frame that can change what is drawn on frame `number`.
std::size_t firstThatCounts(clip::ClipFrames const& frames, std::size_t number, std::optional<std::uint64_t> memoryNs)
{
    if (!memoryNs || number == 0) {
        return 0;
    }
    std::uint64_t const newest = frames.timeNs(number - 1);
    std::size_t first = number - 1;
    while (first > 0 && newest - frames.timeNs(first - 1) <= *memoryNs) {
        --first;
    }
    return first;
}

/// The plugin takes frame number 0 for "none yet".
std::uint64_t indexOf(std::size_t number)
{
    return number + 1;
}

}  // namespace

PreviewConfig previewConfig(std::string const& text, SwJsonObject const& root, std::vector<std::size_t> const& hidden)
{
    std::string const numbered = clip::configText(withoutItems(clip::withNumbersForColors(root), hidden));
    return {hidden.empty() ? text : clip::configText(withoutItems(root, hidden)), numbered};
}

PreviewPlugin::PreviewPlugin(frame::Look const& look) : drawing_(look), placing_(look)
{
    imaging::recordTexts(placing_.painter(), [this](imaging::DrawnText const& text) {
        placed_.push_back({clip::numberOf(text), text});
    });
}

void PreviewPlugin::forget()
{
    telemetry_.reset();
    seen_.reset();
}

DrawnPicture PreviewPlugin::draw(PreviewConfig const& config, clip::ClipFrames const& frames,
                                 clip::UndrawnPicture const& undrawn)
{
    bool const isOther = config.text != config_.text || config.numbered != config_.numbered;
    if (isOther || !telemetry_) {
        config_ = config;
        memoryNs_ = clip::memoryNsOf(config_.text);
        telemetry_.emplace(frames, telemetry::KeySelection::namedIn(config_.text));
        seen_.reset();
    }
    bringTo_(frames, undrawn.number);
    std::vector<frame::Choice> const choices = telemetry_->at(undrawn.number);
    FrameTime const time(frames.timeNs(undrawn.number));
    DrawnPicture drawn;
    drawn.blocks = place_(frames, undrawn, choices);
    imaging::setColor(drawing_.painter(),
                      undrawn.color.bt709 ? imaging::ColorMatrix::Bt709 : imaging::ColorMatrix::Bt601,
                      undrawn.color.fullRange);
    drawn.picture = drawing_.render(indexOf(undrawn.number), undrawn.picture, frames.producers(), choices);
    seen_ = undrawn.number;
    return drawn;
}

void PreviewPlugin::bringTo_(clip::ClipFrames const& frames, std::size_t number)
{
    std::size_t next = firstThatCounts(frames, number, memoryNs_);
    // A failure on the way leaves nothing to go on from.
    std::optional<std::size_t> const seen = std::exchange(seen_, std::nullopt);
    if (seen && *seen < number && next <= *seen + 1) {
        next = *seen + 1;
    } else {
        drawing_.plugin().setConfig(config_.text);
        placing_.plugin().setConfig(config_.numbered);
    }
    for (; next < number; ++next) {
        std::vector<frame::Choice> const choices = telemetry_->at(next);
        FrameTime const time(frames.timeNs(next));
        drawing_.pass(indexOf(next), frames.producers(), choices);
        placing_.pass(indexOf(next), frames.producers(), choices);
    }
}

std::vector<clip::DrawnBlock> PreviewPlugin::place_(clip::ClipFrames const& frames, clip::UndrawnPicture const& undrawn,
                                                    std::vector<frame::Choice> const& choices)
{
    unsigned const width = undrawn.picture->width();
    unsigned const height = undrawn.picture->height();
    if (!canvas_ || canvas_->width() != width || canvas_->height() != height) {
        canvas_ = placing_.takePicture(width, height);
    }
    placed_.clear();
    placing_.renderOnto(indexOf(undrawn.number), canvas_, frames.producers(), choices);
    return std::move(placed_);
}

}  // namespace editor
