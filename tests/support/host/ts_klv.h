// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The KLV units of a recorded transport stream, without the media part of the host.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace telemetry {

/// The PES payloads of all private streams (ids BD and FC) of an MPEG transport stream in stream order;
/// empty when the file cannot be read.
std::vector<std::vector<std::uint8_t>> klvUnitsOfTransportStream(std::string const& path);

/// The bytes of a file; empty when it cannot be read.
std::vector<std::uint8_t> fileBytes(std::string const& path);

}  // namespace telemetry
