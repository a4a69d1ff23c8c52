// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Where the packets of a telemetry file stand on the clip's time axis: by times of their own, by their precision
// time stamps, or spread over the clip.
#pragma once

#include "telemetry/telemetry.h"

#include <optional>
#include <string>
#include <vector>

namespace clip {

struct Placement {
    std::vector<double> seconds;       ///< per packet, after the clip's first picture
    std::vector<std::string> remarks;  ///< what somebody should know of it, without the file's name
};

/// How long the clip is and how long a picture is shown.
struct ClipLength {
    std::optional<double> seconds{};  ///< empty when unknown
    double frameSeconds = 0.04;
};

/// The places of one stream's packets, in reading order.
///
/// * A packet with a time stands there. When any packet has one, or none a stamp, those without are spread: the
///   n-th of m packets stands n/m of the clip's length after its start; one to a picture when the length is
///   unknown.
/// * Else the stamps decide (key utc_timestamp_us; 0 is none): the first stands at the clip's start, each other as
///   much later as its stamp is. A packet without a stamp stands evenly between its stamped neighbours; before the
///   first and after the last it stands with that one.
/// * The first packet, when it is lasting, needs neither: it stands with or before all others.
/// * Stamps that do not rise as they should leave the order of reading: one that runs back by up to a second stands
///   with the packet before it, until the stamps have caught up; one that runs back further, or leaps ahead by more
///   than the clip lasts (an hour when that is unknown) and more than ten seconds, is a new clock and stands one step
///   behind the packet before, where the step is the last ordinary rise from one stamp to the next.
Placement placePackets(std::vector<telemetry::Packet> const& packets, ClipLength const& length);

}  // namespace clip
