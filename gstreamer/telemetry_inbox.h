// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Where the threads that bring telemetry meet the one that brings pictures. Each telemetry pad of an element is a
// producer; a picture takes of each the newest packet that is not later, and may wait a moment for it.
#pragma once

#include "clip/telemetry_wait.h"
#include "frame/telemetry_timeline.h"
#include "telemetry/telemetry.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace gst_overlay {

/// Units of telemetry, of one producer, that may be ahead of the pictures; its thread is held up beyond that.
inline constexpr std::size_t kMostAhead = 1024;

/// A recording's telemetry is waited for longer: only a pipeline that is tied up needs an end of it.
inline constexpr std::chrono::milliseconds kRecordingPatience{1000};

/// All times are running times in seconds.
class TelemetryInbox {
public:
    using Id = unsigned;

    enum class Source {
        Live,       ///< what is late holds everybody up: packets are waited for when they are due only
        Recording,  ///< pictures wait until it is known what belongs to them
    };
    enum class Taken {
        Yes,
        Flushing,
        Ended,  ///< no picture will come
    };

    /// Producers with lower ids win when keys collide.
    void addProducer(Id id, std::string name);
    /// Its telemetry is forgotten, and nobody waits for it.
    void removeProducer(Id id);

    /// A unit of KLV; without time it belongs to the newest picture, or to the first one. Waits while too much is ahead
    /// of the pictures. For one producer this and the next four come from one thread at a time.
    Taken add(Id id, std::span<std::uint8_t const> bytes, std::optional<double> seconds);
    /// The producer has nothing up to this time.
    void advance(Id id, double seconds);
    /// The producer has nothing any more, until it begins again.
    void end(Id id);
    void begin(Id id);
    /// What the producer has brought is forgotten.
    void finishFlush(Id id);
    /// From any thread: the producer's thread is let go, as it is until finishFlush().
    void startFlush(Id id);

    /// Waits until all telemetry for the picture of this time is here, at most for `timeout`; with Source::Recording at
    /// most for kRecordingPatience if that is longer, but once this has been in vain, no producer that made it so is
    /// waited for as patiently again. A producer that kept a picture waiting in vain is not waited for until its next
    /// packet; one whose packets carry no time never is. 0 never waits. Returns false during a flush of the pictures.
    bool waitFor(double seconds, std::chrono::nanoseconds timeout, Source source);
    /// What each producer delivers for the next picture; `frameIndex` counts from 1. Older packets than `maxAge` count
    /// as gone.
    std::vector<frame::Choice> choose(double seconds, std::uint64_t frameIndex, std::optional<double> maxAge);
    /// The time of the newest packet that belonged to a picture, however old.
    std::optional<double> newestSeconds() const;
    /// In the order in which they win.
    std::vector<std::string> producers() const;

    void startPictureFlush();
    void finishPictureFlush();
    /// No picture comes until the next beginPictures(): nobody may wait for one.
    void endPictures();
    void beginPictures();

    /// Lets everybody go, until open().
    void close();
    /// As new, with the same producers.
    void open();

private:
    struct Producer {
        std::string name;
        telemetry::KlvDecoder decoder;  ///< of its own thread
        frame::TelemetryTimeline timeline{std::size_t{4} * kMostAhead};
        clip::TelemetryWait wait;
        std::multiset<double> ahead;             ///< times of units that no picture has reached
        std::vector<telemetry::Packet> untimed;  ///< for the first picture
        std::optional<double> reached;           ///< nothing earlier comes any more
        bool hasTimes = true;                    ///< of its last unit
        bool ended = false;
        bool flushing = false;
        bool removed = false;
        bool silent = false;     ///< a picture has waited in vain
        bool impatient = false;  ///< one has, ever
    };
    using ProducerPtr = std::shared_ptr<Producer>;

    ProducerPtr find_(Id id) const;
    static bool isComplete_(Producer const& producer, double seconds, Source source);
    bool isComplete_(double seconds, Source source) const;
    bool deservesPatience_(double seconds) const;

    mutable std::mutex lock_;
    std::condition_variable changed_;
    std::map<Id, ProducerPtr> producers_;
    std::optional<double> picture_;  ///< the newest one's time
    bool closed_ = true;
    bool pictureFlush_ = false;
    bool picturesEnded_ = false;
};

}  // namespace gst_overlay
