// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A made flight for the sample command: a drone circles over a farmed valley with its camera on a target.
// Telemetry and picture come from one model, so what the text says is what the picture shows. Everything
// is a pure function of the time: the same second gives the same values and the same pixels.
#pragma once

#include "Picture.h"
#include "SwJson.h"

namespace flight {

/// The telemetry `seconds` after the start of the flight, under the payload keys of the telemetry library;
/// telemetry::encodeKlv takes it as it is. Velocities are the derivatives of the position, the slant range
/// is the distance to the frame center, target_lrf_* are present only while the laser ranges.
/// Precondition: `seconds` is finite and at least 0. `aspect` is the picture's width over its height; the
/// horizontal field of view follows from it.
SwJsonObject telemetryAt(double seconds, double aspect = 16.0 / 9.0);

/// Paints the ground as that camera sees it over the whole picture (any size, 1x1 included).
void paintGround(double seconds, MappedNV12 const& planes);

}  // namespace flight
