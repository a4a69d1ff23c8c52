// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Positions as people say them. Empty for what is no position on the earth: latitudes beyond 90 degrees, longitudes
// beyond 180, not-a-number.
#pragma once

#include <string>

namespace telemetry {

/// Degrees, minutes and seconds to a hundredth, rounded as a whole, so that seconds never read 60.00:
/// 34.71914 is 34°43'08.90"N, 34.999999 is 35°00'00.00"N. What rounds to zero is north.
std::string latitudeDms(double latDeg);
/// -86.5 is 086°30'00.00"W; what rounds to zero is east.
std::string longitudeDms(double lonDeg);

/// The MGRS square of one metre in which a position lies: "16S ED 30033 40491"; a zone has no leading zero, and
/// around the poles there is none: "Z AH 00000 00000".
std::string mgrs(double latDeg, double lonDeg);

}  // namespace telemetry
