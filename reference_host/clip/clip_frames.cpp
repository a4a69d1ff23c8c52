// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Telemetry is chosen once for all configurations; which of its keys are made is each configuration's own matter.
#include "clip/clip_frames.h"

#include "media/interrupt.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <utility>

namespace clip {

ClipFrames::ClipFrames(ClipSource const& source, FramesFrom from)
    : demuxer_(source.input)
    , feed_(demuxer_, source.telemetry, {}, Payloads::Bare)
    , reader_(demuxer_, feed_.aheadSeconds(kLateSeconds), source.decoding)
    , clock_(reader_.timeBase())
{
    if (from == FramesFrom::Packets) {
        reader_.tellFromPackets();
    }
}

bool ClipFrames::reach(std::size_t number)
{
    while (frames_.size() <= number && !complete_) {
        std::optional<media::FramePlace> const place = reader_.peek();
        if (media::interrupted()) {
            throw std::runtime_error(demuxer_.name() + ": interrupted");
        }
        if (!place) {
            complete_ = reader_.doubt().empty();
            return false;
        }
        reader_.skip();
        keep_(*place);
    }
    return number < frames_.size();
}

void ClipFrames::keep_(media::FramePlace const& place)
{
    for (media::SideUnit const& unit : reader_.takeSideUnits(place.seconds)) {
        feed_.add(unit);
    }
    if (frames_.empty()) {
        feed_.begin(place.seconds);
    }
    for (frame::Choice const& choice : feed_.choose(place.seconds, place.number)) {
        choices_.push_back(pack_(choice));
    }
    frames_.push_back({place, clock_.next(place.ticks), choices_.size()});
}

ClipFrames::PackedChoice ClipFrames::pack_(frame::Choice const& choice)
{
    auto const named = std::find(producerNames_.begin(), producerNames_.end(), choice.producer);
    auto const producer = static_cast<std::size_t>(named - producerNames_.begin());
    if (named == producerNames_.end()) {
        producerNames_.push_back(choice.producer);
        newest_.emplace_back();
    }
    PackedChoice& newest = newest_[producer];
    if (newest.payloadFrame != choice.payloadFrame) {
        newest.payload = static_cast<std::uint32_t>(payloads_.add(*choice.payload));
        newest.payloadFrame = choice.payloadFrame;
        newest.producer = static_cast<std::uint32_t>(producer);
    }
    newest.fromLookback = choice.fromLookback;
    return newest;
}

std::size_t ClipFrames::shownAt(double seconds)
{
    std::size_t number = 0;
    if (!reach(number)) {
        return number;
    }
    double const latest = place(0).seconds + seconds + frame::kSameMoment;
    while (reach(number + 1) && place(number + 1).seconds <= latest) {
        ++number;
    }
    return number;
}

TelemetryView::TelemetryView(ClipFrames const& frames, telemetry::KeySelection keys)
    : frames_(frames)
    , keys_(std::move(keys))
    , completer_(keys_)
{
    for (auto const& [producer, constants] : frames_.feed_.constants()) {
        completer_.setConstants(producer, constants);
    }
}

/// A key is needed by its name, or because a named one is made of it.
void TelemetryView::chooseKeys_()
{
    std::vector<std::vector<std::string>> const& lists = frames_.payloads_.keyLists();
    if (wanted_.size() == lists.size()) {
        return;
    }
    std::set<std::string> all;
    for (std::vector<std::string> const& list : lists) {
        all.insert(list.begin(), list.end());
    }
    std::set<std::string> sources;
    for (telemetry::DerivedKey const& derived : namedAmong(telemetry::derivableFrom(all), keys_)) {
        sources.insert(derived.sources.begin(), derived.sources.end());
    }
    wanted_.clear();
    for (std::vector<std::string> const& list : lists) {
        std::vector<bool> wanted;
        for (std::string const& key : list) {
            wanted.push_back(keys_.wants(key) || sources.count(key) != 0);
        }
        // A packet that says something must not look like one that says nothing.
        if (std::find(wanted.begin(), wanted.end(), true) == wanted.end()) {
            wanted.front() = true;
        }
        wanted_.push_back(std::move(wanted));
    }
    newest_.clear();
}

std::vector<frame::Choice> TelemetryView::at(std::size_t number)
{
    chooseKeys_();
    std::vector<frame::Choice> choices;
    std::size_t const begin = number == 0 ? 0 : frames_.frames_[number - 1].choicesEnd;
    for (std::size_t each = begin; each < frames_.frames_[number].choicesEnd; ++each) {
        ClipFrames::PackedChoice const& choice = frames_.choices_[each];
        choices.push_back(
            {frames_.producerNames_[choice.producer], payloadOf_(choice), choice.payloadFrame, choice.fromLookback});
    }
    return choices;
}

std::shared_ptr<SwJsonObject const> TelemetryView::payloadOf_(ClipFrames::PackedChoice const& choice)
{
    Unpacked& newest = newest_[choice.producer];
    if (!newest.payload || newest.number != choice.payload) {
        SwJsonObject payload =
            frames_.payloads_.unpack(choice.payload, wanted_[frames_.payloads_.keyListOf(choice.payload)]);
        completer_.complete(frames_.producerNames_[choice.producer], payload);
        newest = {choice.payload, std::make_shared<SwJsonObject const>(std::move(payload))};
    }
    return newest.payload;
}

}  // namespace clip
