// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From planes and telemetry to an annotated picture.
#include "picture_overlay.h"

#include "FrameTime.h"
#include "clip/host_keys.h"
#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace gst_overlay {
namespace {

/// The plugin takes 0 for "never".
constexpr std::uint64_t kFirstFrameNs = 3600000000000;

constexpr double kNanoseconds = 1e9;

/// The plugin is loaded and let go by several elements at once, and so are fonts; what loads libraries keeps lists.
std::mutex& loading()
{
    static std::mutex lock;
    return lock;
}

frame::FrameRenderer load(frame::Look look)
{
    std::lock_guard const hold(loading());
    return frame::FrameRenderer(std::move(look), moduleFolders());
}

}  // namespace

std::vector<std::string> moduleFolders()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void const*>(&moduleFolders), &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    std::error_code ignored;
    std::filesystem::path const folder = std::filesystem::absolute(info.dli_fname, ignored).parent_path();
    return {folder.string(), (folder / "..").string(), (folder / OVERLAY_LIBRARY_FOLDER).string()};
}

PictureOverlay::PictureOverlay(frame::Look look) : renderer_(load(std::move(look)))
{
    imaging::recordTexts(
        renderer_.painter(), [this](imaging::DrawnText const& text) { draws_.push_back(text); },
        imaging::RecordedTexts::Drawn);
    applyConfig_();
}

void PictureOverlay::applyConfig_()
{
    telemetry::KeySelection const keys = telemetry::KeySelection::namedIn(config_);
    renderer_.plugin().setConfig(config_);
    derived_.emplace(keys);
    hostKeysWanted_ = clip::wantsHostKeys(keys);
    completed_.clear();
}

void PictureOverlay::setConfig(std::string config)
{
    std::lock_guard const hold(lock_);
    config_ = std::move(config);
    applyConfig_();
}

void PictureOverlay::setLook(frame::Look look)
{
    std::lock_guard const hold(lock_);
    renderer_.setLook(std::move(look));
}

void PictureOverlay::setColor(PictureColor color)
{
    std::lock_guard const hold(lock_);
    imaging::setColor(renderer_.painter(), color.bt709 ? imaging::ColorMatrix::Bt709 : imaging::ColorMatrix::Bt601,
                      color.fullRange);
}

void PictureOverlay::restart()
{
    std::lock_guard const hold(lock_);
    frameIndex_ = 0;
    firstNs_.reset();
    lastTime_ = 0;
    applyConfig_();
}

std::uint64_t PictureOverlay::nextIndex() const
{
    std::lock_guard const hold(lock_);
    return frameIndex_ + 1;
}

/// Never falls, whatever the times of the pictures do.
std::uint64_t PictureOverlay::frameTime_(std::uint64_t runningNs)
{
    firstNs_ = firstNs_.value_or(runningNs);
    std::uint64_t const since = runningNs > *firstNs_ ? runningNs - *firstNs_ : 0;
    lastTime_ = std::max(lastTime_, kFirstFrameNs + since);
    return lastTime_;
}

/// A packet serves several pictures and is completed once.
void PictureOverlay::complete_(frame::Choice& choice)
{
    Completed& completed = completed_[choice.producer];
    if (completed.packet != choice.payload) {
        completed.packet = choice.payload;
        for (auto const& [key, value] : *choice.payload) {
            keys_.emplace(key);
        }
        SwJsonObject payload = *choice.payload;
        derived_->addTo(payload);
        completed.payload = std::make_shared<SwJsonObject const>(std::move(payload));
    }
    choice.payload = completed.payload;
}

void PictureOverlay::addHostKeys_(PictureMoment& moment)
{
    if (!moment.newestSeconds) {
        return;
    }
    moment.producers.emplace_back(clip::kHostProducer);
    if (hostKeysWanted_ || moment.choices.empty()) {
        double const seconds = static_cast<double>(moment.runningNs) / kNanoseconds;
        double const first = static_cast<double>(*firstNs_) / kNanoseconds;
        SwJsonObject keys =
            clip::hostKeys(std::max(0.0, seconds - *moment.newestSeconds), seconds - first, frameIndex_ - 1);
        derived_->addTo(keys);
        moment.choices.push_back(
            {clip::kHostProducer, std::make_shared<SwJsonObject const>(std::move(keys)), frameIndex_, false});
    }
}

bool PictureOverlay::draw(PictureMoment moment, std::function<MappedNV12()> const& planes)
{
    std::lock_guard const hold(lock_);
    ++frameIndex_;
    draws_.clear();
    FrameTime const time(frameTime_(moment.runningNs));
    for (frame::Choice& choice : moment.choices) {
        complete_(choice);
    }
    addHostKeys_(moment);
    if (moment.choices.empty()) {
        renderer_.pass(frameIndex_, moment.producers, moment.choices);
        return false;
    }
    MappedNV12 const target = planes();
    if (target.y == nullptr) {
        return false;
    }
    renderer_.renderOnto(frameIndex_, imaging::wrapPlanes(target), moment.producers, moment.choices);
    return true;
}

std::string PictureOverlay::schema()
{
    std::lock_guard const hold(lock_);
    return renderer_.plugin().getConfigList();
}

std::vector<std::string> PictureOverlay::availableKeys() const
{
    std::lock_guard const hold(lock_);
    return {keys_.begin(), keys_.end()};
}

std::vector<imaging::DrawnText> PictureOverlay::draws() const
{
    std::lock_guard const hold(lock_);
    return draws_;
}

}  // namespace gst_overlay
