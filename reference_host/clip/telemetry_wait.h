// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Whether a live picture is worth waiting with: its telemetry may come a little after it, or not at all.
#pragma once

#include <optional>

namespace clip {

/// For one telemetry stream; times are those of the clip's axis, in seconds.
class TelemetryWait {
public:
    /// A packet that belongs to this time has come.
    void arrived(double seconds);
    /// A picture was shown without the packet that was expected: until the next packet comes, none is waited for.
    void gaveUp() { waitsInVain_ = true; }

    /// Whether a packet for a picture of this time, which has not come yet, is to be expected: packets come as
    /// regularly as the last two did. Packets at 1.0 and 1.1: one is expected for a picture at 1.2, none for a picture
    /// at 1.16.
    bool expectsFor(double seconds) const;

private:
    std::optional<double> newest_;
    std::optional<double> interval_;
    bool waitsInVain_ = false;
};

}  // namespace clip
