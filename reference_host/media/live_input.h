// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A live address that is read by a thread of its own and opened again whenever nothing comes from it any more.
// First step of live work: live input -> live clip -> live writer.
#pragma once

#include "media/demuxer.h"
#include "media/live_queue.h"
#include "media/reopening_pauses.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>

namespace media {

struct LiveInputOptions {
    std::string address;
    double giveUpSeconds = 60.0;  ///< without any picture; 0: never
    bool studySound = false;      ///< as in LiveReading
};

class LiveInput {
public:
    /// Begins to read. What comes stands in queue(); it is closed when the input has given up.
    explicit LiveInput(LiveInputOptions options);
    /// Ends reading, at most a tenth of a second later.
    ~LiveInput();
    LiveInput(LiveInput const&) = delete;
    LiveInput& operator=(LiveInput const&) = delete;

    LiveQueue& queue() { return queue_; }
    std::string const& address() const { return options_.address; }

private:
    void run_();
    void readUntilLost_();
    void readAll_(Demuxer& demuxer);
    void handOn_(PacketPtr packet, Demuxer& demuxer);
    std::string nothingComes_() const;
    bool shallAbandon_();
    bool pause_();
    bool isOver_() const;

    LiveInputOptions options_;
    LiveQueue queue_;
    std::atomic<bool> stop_ = false;
    // What follows belongs to the thread.
    std::shared_ptr<LiveProgram const> program_;
    std::uint64_t openings_ = 0;
    LiveTime attempt_;      ///< when opening began last
    LiveTime lastPacket_;   ///< of any stream, or the attempt
    LiveTime lastPicture_;  ///< or the beginning
    bool mayReturn_ = true;
    bool silent_ = false;         ///< nothing has come for too long
    bool cameInAttempt_ = false;  ///< a picture since the last opening
    bool ended_ = false;          ///< standard input, the only one whose end is the end
    std::string readError_;       ///< what ended reading
    std::string lostBecause_;
    ReopeningPauses pauses_;
    std::thread thread_;
};

}  // namespace media
