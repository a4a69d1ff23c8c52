// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reads the telemetry of a clip with its places on the clip's time axis, the same that it has beside the pictures;
// no picture is decoded.
#pragma once

#include "media/demuxer.h"
#include "media/side_placer.h"
#include "media/timeline.h"

#include <deque>
#include <optional>

namespace media {

class KlvUnitReader {
public:
    /// The demuxer must outlive the reader.
    explicit KlvUnitReader(Demuxer& demuxer);

    /// The next telemetry unit in stream order; empty at the end or after an interrupt.
    std::optional<SideUnit> next();
    /// The time of the clip's first picture; of a clip without video, that of its first unit.
    double startSeconds() const { return start_.value_or(0.0); }

private:
    void readPacket_();

    Demuxer& demuxer_;
    Timeline timeline_;
    SidePlacer placer_;
    std::deque<SideUnit> ready_;
    std::optional<double> start_;
    bool ended_ = false;
};

}  // namespace media
