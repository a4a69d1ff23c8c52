// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The recorded clips that tests run over, each with telemetry to show.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace e2e {

inline constexpr std::array<char const*, 7> kRecordedClips = {
    "osh_sim_640x480_h264_klv06.ts",         "kwiver_h264_160x120_klv06_nopts.ts",
    "kwiver_mpeg2_160x120_klv06_nopts.ts",   "kwiver_h264_160x120_no_klv.ts",
    "kwiver_aphill_720x480i_h264_eg0104.ts", "mp2tp_foreman_352x288_h264_klv15_aucell.ts",
    "mux_car_768x432_osh_klv_30hz.ts"};

/// Where the clip of this name should be; it may be missing.
std::string recordedClip(std::string const& name);

/// Words that give the clip telemetry: none when it has its own, else --telemetry with a file made at `path`, whose
/// values turn and have gaps.
std::vector<std::string> telemetryFor(std::string const& name, std::string const& path);

}  // namespace e2e
