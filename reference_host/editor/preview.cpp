// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What is asked for is looked up in the clip's frames; the plugin is brought there, and draws on a copy of the picture.
#include "editor/preview.h"

#include "clip/clip_frames.h"
#include "clip/delivered_keys.h"
#include "clip/frame_pictures.h"
#include "editor/preview_plugin.h"
#include "imaging/imaging_access.h"
#include "media/frame_converter.h"
#include "media/interrupt.h"
#include "media/output_file.h"
#include "media/rgb_picture.h"
#include "telemetry/derived_keys.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace editor {
namespace {

void requireFile(std::string const& path)
{
    std::error_code ignored;
    bool const isMissing = !media::isAddress(path) && !std::filesystem::exists(path, ignored);
    if (!isMissing && !std::filesystem::is_regular_file(path, ignored)) {  // opening says more of what is missing
        throw std::runtime_error(path + ": is no file; the editor goes to and fro in files only");
    }
}

clip::ClipSource const& requireFiles(clip::ClipSource const& source)
{
    requireFile(source.input);
    if (!source.telemetry.file.empty()) {
        requireFile(source.telemetry.file);
    }
    return source;
}

}  // namespace

/// The clip as far as it was read, by packets or by decoding.
struct OpenedClip {
    OpenedClip(clip::ClipSource const& source, clip::FramesFrom from)
        : frames(source, from)
        , pictures(source, frames, from)
        , allTelemetry(frames, telemetry::KeySelection::withDerived())
    {
    }

    clip::ClipFrames frames;
    clip::FramePictures pictures;
    clip::TelemetryView allTelemetry;
};

struct Preview::Impl {
    explicit Impl(clip::ClipSource given) : source(std::move(given)), plugin(requireFiles(source).look)
    {
        open(clip::FramesFrom::Packets);
        learnFacts();
    }

    void open(clip::FramesFrom from);
    std::size_t find(Place const& place);
    clip::UndrawnPicture const& reach(Place const& place);
    void learnFacts();
    void readKeys();
    SwJsonObject valuesOf(std::size_t number);
    std::vector<std::uint8_t> rgbOf(zelvo::ZelvoPicture& picture, media::ColorFormat color);

    clip::ClipSource source;
    PreviewPlugin plugin;
    std::unique_ptr<OpenedClip> clip;
    ClipFacts facts;
    media::FrameConverter converter;
    std::vector<std::string> keys;
    std::vector<std::string> derivable;
    std::string schema;
};

void Preview::Impl::open(clip::FramesFrom from)
{
    plugin.forget();
    clip = std::make_unique<OpenedClip>(source, from);
}

/// Number from 0.
std::size_t Preview::Impl::find(Place const& place)
{
    clip::ClipFrames& frames = clip->frames;
    if (!place.frame) {
        return frames.shownAt(place.seconds);
    }
    std::size_t const wanted = static_cast<std::size_t>(std::max<std::uint64_t>(*place.frame, 1)) - 1;
    return frames.reach(wanted) || frames.known() == 0 ? wanted : frames.known() - 1;
}

/// The frame after it is known then, too, if there is one.
clip::UndrawnPicture const& Preview::Impl::reach(Place const& place)
{
    for (clip::FramesFrom const from : {clip::FramesFrom::Packets, clip::FramesFrom::Decoder}) {
        std::size_t const number = find(place);
        clip->frames.reach(number + 1);
        bool const isTold = clip->frames.doubt().empty();
        if (isTold && clip->frames.known() == 0) {
            throw clip::noPictures(source.input);
        }
        clip::UndrawnPicture const* const picture = isTold ? clip->pictures.at(number) : nullptr;
        if (picture != nullptr) {
            return *picture;
        }
        if (media::interrupted()) {
            throw std::runtime_error(source.input + ": interrupted");
        }
        if (from == clip::FramesFrom::Packets) {
            open(clip::FramesFrom::Decoder);
        }
    }
    throw std::runtime_error(source.input +
                             ": gives other pictures than before; it was changed meanwhile: start again");
}

void Preview::Impl::learnFacts()
{
    zelvo::ZelvoPicture const& first = *reach(Place::ofFrame(1)).picture;
    media::Demuxer const& demuxer = clip->frames.demuxer();
    facts.name = std::filesystem::path(source.input).filename().string();
    facts.width = static_cast<int>(first.width());
    facts.height = static_cast<int>(first.height());
    facts.seconds = demuxer.durationSeconds();
    facts.frameSeconds = 1.0 / av_q2d(demuxer.frameRate());
}

void Preview::Impl::readKeys()
{
    if (!schema.empty()) {
        return;
    }
    clip::DeliveredKeys delivered = clip::deliveredKeys(source.input, source.telemetry);
    keys = delivered.newest.keys();
    derivable = clip::derivableKeys(delivered);
    telemetry::DerivedKeyMaker(telemetry::KeySelection::withDerived()).addTo(delivered.newest);
    schema = frame::FrameRenderer().schemaFor(std::move(delivered.newest));
}

/// As the plugin joins them: of producers with the same key the first wins.
SwJsonObject Preview::Impl::valuesOf(std::size_t number)
{
    SwJsonObject values;
    for (frame::Choice const& choice : clip->allTelemetry.at(number)) {
        values.addMissing(SwJsonObject(*choice.payload));
    }
    return values;
}

std::vector<std::uint8_t> Preview::Impl::rgbOf(zelvo::ZelvoPicture& picture, media::ColorFormat color)
{
    media::FramePtr const frame = media::rgbOf(imaging::planesOf(picture), color, converter);
    std::size_t const row = std::size_t{picture.width()} * 3;
    std::vector<std::uint8_t> rgb(row * picture.height());
    for (std::size_t y = 0; y < picture.height(); ++y) {
        std::copy_n(frame->data[0] + y * static_cast<std::size_t>(frame->linesize[0]), row, rgb.data() + y * row);
    }
    return rgb;
}

Preview::Preview(clip::ClipSource source) : impl_(std::make_unique<Impl>(std::move(source))) {}

Preview::~Preview() = default;

ClipFacts Preview::facts() const
{
    ClipFacts facts = impl_->facts;
    clip::ClipFrames const& frames = impl_->clip->frames;
    facts.frames = frames.complete() ? std::optional<std::uint64_t>(frames.known()) : std::nullopt;
    return facts;
}

std::vector<std::string> const& Preview::keys()
{
    impl_->readKeys();
    return impl_->keys;
}

std::vector<std::string> const& Preview::derivableKeys()
{
    impl_->readKeys();
    return impl_->derivable;
}

std::string const& Preview::schema()
{
    impl_->readKeys();
    return impl_->schema;
}

Shown Preview::show(std::string const& configText, Place const& place, std::vector<std::size_t> const& hidden)
{
    clip::UndrawnPicture const& undrawn = impl_->reach(place);
    clip::ClipFrames const& frames = impl_->clip->frames;
    check::ConfigText config = check::readConfigText(configText);
    DrawnPicture drawn{undrawn.picture, {}};
    if (!config.fault) {
        drawn = impl_->plugin.draw(previewConfig(configText, config.root, hidden), frames, undrawn);
    }
    Shown shown;
    shown.frame = undrawn.number + 1;
    shown.seconds = frames.seconds(undrawn.number);
    shown.last = undrawn.number + 1 == frames.known() && frames.complete();
    shown.width = static_cast<int>(undrawn.picture->width());
    shown.height = static_cast<int>(undrawn.picture->height());
    shown.rgb = impl_->rgbOf(*drawn.picture, undrawn.color);
    for (auto const& [block, text] : drawn.blocks) {
        shown.boxes.push_back({block, text.left, text.top, text.right, text.bottom, text.x, text.y});
    }
    shown.values = impl_->valuesOf(undrawn.number);
    shown.fault = std::move(config.fault);
    return shown;
}

}  // namespace editor
