// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The meeting of telemetry and pictures in a live pipeline.
#include "telemetry_inbox.h"

#include <algorithm>
#include <utility>

namespace gst_overlay {

void TelemetryInbox::addProducer(Id id, std::string name)
{
    auto producer = std::make_shared<Producer>();
    producer->name = std::move(name);
    producer->timeline.addProducer(producer->name);
    std::lock_guard const hold(lock_);
    producers_[id] = std::move(producer);
}

void TelemetryInbox::removeProducer(Id id)
{
    std::lock_guard const hold(lock_);
    if (ProducerPtr const producer = find_(id)) {
        producer->removed = true;
        producers_.erase(id);
    }
    changed_.notify_all();
}

TelemetryInbox::ProducerPtr TelemetryInbox::find_(Id id) const
{
    auto const found = producers_.find(id);
    return found == producers_.end() ? nullptr : found->second;
}

TelemetryInbox::Taken TelemetryInbox::add(Id id, std::span<std::uint8_t const> bytes, std::optional<double> seconds)
{
    std::unique_lock hold(lock_);
    ProducerPtr const producer = find_(id);
    if (!producer) {
        return Taken::Flushing;
    }
    hold.unlock();
    std::vector<telemetry::Packet> packets = producer->decoder.decode(bytes, seconds);
    hold.lock();
    auto const isLetGo = [&] { return closed_ || producer->removed || producer->flushing; };
    changed_.wait(hold, [&] { return isLetGo() || picturesEnded_ || producer->ahead.size() < kMostAhead; });
    if (isLetGo()) {
        return Taken::Flushing;
    }
    if (picturesEnded_) {
        return Taken::Ended;
    }
    producer->hasTimes = seconds.has_value();
    producer->silent = false;
    std::optional<double> const place = seconds ? seconds : picture_;
    for (telemetry::Packet& packet : packets) {
        if (place) {
            producer->timeline.add(0, *place, std::move(packet.payload));
        } else if (producer->untimed.size() < kMostAhead) {
            producer->untimed.push_back(std::move(packet));
        }
    }
    if (seconds) {
        producer->wait.arrived(*seconds);
        producer->reached = std::max(producer->reached.value_or(*seconds), *seconds);
        if (!picture_ || *seconds > *picture_) {
            producer->ahead.insert(*seconds);
        }
    }
    changed_.notify_all();
    return Taken::Yes;
}

void TelemetryInbox::advance(Id id, double seconds)
{
    std::lock_guard const hold(lock_);
    if (ProducerPtr const producer = find_(id)) {
        producer->reached = std::max(producer->reached.value_or(seconds), seconds);
    }
    changed_.notify_all();
}

void TelemetryInbox::end(Id id)
{
    std::lock_guard const hold(lock_);
    if (ProducerPtr const producer = find_(id)) {
        producer->ended = true;
    }
    changed_.notify_all();
}

void TelemetryInbox::begin(Id id)
{
    std::lock_guard const hold(lock_);
    if (ProducerPtr const producer = find_(id)) {
        producer->ended = false;
    }
}

void TelemetryInbox::startFlush(Id id)
{
    std::lock_guard const hold(lock_);
    if (ProducerPtr const producer = find_(id)) {
        producer->flushing = true;
    }
    changed_.notify_all();
}

void TelemetryInbox::finishFlush(Id id)
{
    std::lock_guard const hold(lock_);
    if (ProducerPtr const producer = find_(id)) {
        auto fresh = std::make_shared<Producer>();
        fresh->name = producer->name;
        fresh->timeline.addProducer(fresh->name);
        producers_[id] = std::move(fresh);
    }
    changed_.notify_all();
}

bool TelemetryInbox::isComplete_(Producer const& producer, double seconds, Source source)
{
    if (producer.ended || producer.silent || !producer.hasTimes) {
        return true;
    }
    if (producer.reached && *producer.reached >= seconds - frame::kSameMoment) {
        return true;
    }
    bool const isStrict = source == Source::Recording && !producer.impatient;
    return !isStrict && !producer.wait.expectsFor(seconds);
}

bool TelemetryInbox::isComplete_(double seconds, Source source) const
{
    return std::all_of(producers_.begin(), producers_.end(),
                       [&](auto const& entry) { return isComplete_(*entry.second, seconds, source); });
}

bool TelemetryInbox::deservesPatience_(double seconds) const
{
    return std::any_of(producers_.begin(), producers_.end(), [&](auto const& entry) {
        return !entry.second->impatient && !isComplete_(*entry.second, seconds, Source::Recording);
    });
}

bool TelemetryInbox::waitFor(double seconds, std::chrono::nanoseconds timeout, Source source)
{
    auto const came = std::chrono::steady_clock::now();
    std::unique_lock hold(lock_);
    picture_ = seconds;
    auto const isLetGo = [this] { return closed_ || pictureFlush_; };
    if (timeout.count() > 0) {
        auto const isDone = [&] { return isLetGo() || isComplete_(seconds, source); };
        changed_.wait_until(hold, came + timeout, isDone);
        if (source == Source::Recording) {
            changed_.wait_until(hold, came + std::max<std::chrono::nanoseconds>(timeout, kRecordingPatience),
                                [&] { return isLetGo() || !deservesPatience_(seconds); });
        }
    }
    if (isLetGo()) {
        return false;
    }
    for (auto const& [id, producer] : producers_) {
        if (timeout.count() > 0 && !isComplete_(*producer, seconds, source)) {
            producer->wait.gaveUp();
            producer->silent = true;
            producer->impatient = true;
        }
    }
    return true;
}

std::vector<frame::Choice> TelemetryInbox::choose(double seconds, std::uint64_t frameIndex,
                                                  std::optional<double> maxAge)
{
    std::vector<frame::Choice> choices;
    std::lock_guard const hold(lock_);
    for (auto const& [id, producer] : producers_) {
        for (telemetry::Packet& packet : std::exchange(producer->untimed, {})) {
            producer->timeline.add(0, seconds, std::move(packet.payload));
        }
        producer->timeline.setMaxAge(maxAge);
        for (frame::Choice& choice : producer->timeline.choose(seconds, frameIndex)) {
            choices.push_back(std::move(choice));
        }
        producer->ahead.erase(producer->ahead.begin(), producer->ahead.upper_bound(seconds));
    }
    changed_.notify_all();
    return choices;
}

std::optional<double> TelemetryInbox::newestSeconds() const
{
    std::lock_guard const hold(lock_);
    std::optional<double> newest;
    for (auto const& [id, producer] : producers_) {
        // Empty is less than any time.
        newest = std::max(newest, producer->timeline.newestSeconds());
    }
    return newest;
}

std::vector<std::string> TelemetryInbox::producers() const
{
    std::lock_guard const hold(lock_);
    std::vector<std::string> names;
    for (auto const& [id, producer] : producers_) {
        names.push_back(producer->name);
    }
    return names;
}

void TelemetryInbox::startPictureFlush()
{
    std::lock_guard const hold(lock_);
    pictureFlush_ = true;
    changed_.notify_all();
}

void TelemetryInbox::finishPictureFlush()
{
    std::lock_guard const hold(lock_);
    pictureFlush_ = false;
    picturesEnded_ = false;
    picture_.reset();
}

void TelemetryInbox::endPictures()
{
    std::lock_guard const hold(lock_);
    picturesEnded_ = true;
    changed_.notify_all();
}

void TelemetryInbox::beginPictures()
{
    std::lock_guard const hold(lock_);
    picturesEnded_ = false;
}

void TelemetryInbox::close()
{
    std::lock_guard const hold(lock_);
    closed_ = true;
    changed_.notify_all();
}

void TelemetryInbox::open()
{
    std::lock_guard const hold(lock_);
    for (auto& [id, producer] : producers_) {
        auto fresh = std::make_shared<Producer>();
        fresh->name = producer->name;
        fresh->timeline.addProducer(fresh->name);
        producer = std::move(fresh);
    }
    picture_.reset();
    closed_ = false;
    pictureFlush_ = false;
    picturesEnded_ = false;
}

}  // namespace gst_overlay
