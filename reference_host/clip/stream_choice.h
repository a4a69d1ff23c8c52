// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Names of telemetry streams, and the one that somebody asks for.
#pragma once

#include "media/demuxer.h"

#include <string>
#include <vector>

namespace clip {

/// As other tools write a PID: "0x1f1".
std::string pidText(int pid);

/// The name by which other tools call the stream: its PID as in "0x1f1", its number in a container without such.
std::string streamName(AVStream const& stream);

class StreamChoice {
public:
    /// `text` is a PID with its 0x, or a stream's number in the container, counted from 0; empty takes all streams.
    /// Throws media::UnknownChoice with one line when it is neither.
    explicit StreamChoice(std::string text);

    bool takesAll() const { return text_.empty(); }
    bool takes(AVStream const& stream) const;
    /// One line that lists the telemetry streams when the chosen one is not there; else empty.
    std::string missingIn(media::InputStreams const& streams, std::string const& source) const;
    /// Throws std::runtime_error with that line.
    void requireIn(media::Demuxer const& demuxer) const;

    /// The same for streams that are known by streamName() only.
    bool takes(std::string const& name) const;
    void requireAmong(std::vector<std::string> const& names, std::string const& source) const;

private:
    std::string text_;
    int id_ = -1;      ///< the PID
    int number_ = -1;  ///< the stream's number
};

}  // namespace clip
