// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One open decoder, and the way of clip_seek when it stands behind the wanted frame or far before it.
#include "clip/frame_pictures.h"

#include "clip/upright_converter.h"
#include "imaging/imaging_access.h"
#include "media/interrupt.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace clip {
namespace {

/// Pictures on the way that are rather decoded than passed over.
constexpr std::size_t kNear = 30;

/// Bytes of pictures that are kept: some twenty of 1920x1080.
constexpr std::size_t kMostKeptBytes = 64U << 20U;

std::size_t bytesOf(zelvo::ZelvoPicture const& picture)
{
    return std::size_t{picture.width()} * picture.height() * 3 / 2;
}

}  // namespace

struct FramePictures::Opened {
    explicit Opened(ClipSource const& source)
        : demuxer(source.input)
        , reader(demuxer, 0.0, source.decoding)
        , converter(demuxer)
    {
    }

    media::Demuxer demuxer;
    media::FrameReader reader;
    UprightConverter converter;
};

FramePictures::FramePictures(ClipSource const& source, ClipFrames const& frames, FramesFrom from)
    : source_(source)
    , frames_(frames)
    , from_(from)
{
}

FramePictures::~FramePictures() = default;

UndrawnPicture const* FramePictures::at(std::size_t number)
{
    if (UndrawnPicture const* const kept = kept_(number)) {
        return kept;
    }
    if (!isNear_(number) && !open_(beginFor_(number))) {
        return nullptr;
    }
    while (next_ <= number) {
        if (!take_(next_ + mostKept_() > number)) {
            opened_.reset();
            return nullptr;
        }
    }
    return kept_(number);
}

UndrawnPicture const* FramePictures::kept_(std::size_t number) const
{
    auto const kept = std::find_if(recent_.begin(), recent_.end(),
                                   [number](UndrawnPicture const& recent) { return recent.number == number; });
    return kept == recent_.end() ? nullptr : &*kept;
}

bool FramePictures::isNear_(std::size_t number) const
{
    return opened_ && number >= next_ && (from_ == FramesFrom::Decoder || number - next_ <= kNear);
}

/// Somebody who goes back one by one gets the pictures before at once.
std::size_t FramePictures::beginFor_(std::size_t number) const
{
    std::size_t const most = mostKept_();
    bool const stepsBack = number < next_ && next_ - number <= 2 * most;
    return stepsBack ? number - std::min(number, most - 1) : number;
}

bool FramePictures::open_(std::size_t number)
{
    opened_ = std::make_unique<Opened>(source_);
    next_ = 0;
    if (from_ == FramesFrom::Decoder) {
        return true;
    }
    media::FrameReader& reader = opened_->reader;
    reader.tellFromPackets();
    for (std::optional<media::FramePlace> place = reader.peek(); place; place = reader.peek()) {
        reader.takeSideUnits();
        if (place->ticks != frames_.place(next_).ticks) {
            return false;
        }
        if (next_ == number) {
            return reader.settle();
        }
        reader.skip();
        ++next_;
    }
    return false;
}

bool FramePictures::take_(bool keep)
{
    std::optional<media::VideoUnit> const unit = opened_->reader.next();
    opened_->reader.takeSideUnits();
    bool const told = from_ == FramesFrom::Packets;
    if (!unit || unit->ticks != frames_.place(next_).ticks || (told && opened_->reader.damaged() > 0)) {
        return false;
    }
    if (keep) {
        keep_(*unit->frame);
    }
    ++next_;
    return true;
}

void FramePictures::keep_(AVFrame const& decoded)
{
    AVFrame const* const first = opened_->reader.firstPicture();
    media::PictureTraits const traits = opened_->converter.traitsOf(first != nullptr ? *first : decoded);
    auto const width = static_cast<unsigned>(traits.width);
    auto const height = static_cast<unsigned>(traits.height);
    UndrawnPicture undrawn{next_, imaging::takePicture(pool_, width, height), traits.color};
    if (!undrawn.picture) {
        throw std::runtime_error(source_.input + ": no memory for a picture; use a smaller clip");
    }
    opened_->converter.convert(decoded, traits.color, *undrawn.picture);
    std::erase_if(recent_, [this](UndrawnPicture const& recent) { return recent.number == next_; });
    recent_.push_back(std::move(undrawn));
    while (recent_.size() > mostKept_()) {
        recent_.pop_front();
    }
}

std::size_t FramePictures::mostKept_() const
{
    return recent_.empty() ? 1 : std::max<std::size_t>(1, kMostKeptBytes / bytesOf(*recent_.back().picture));
}

}  // namespace clip
