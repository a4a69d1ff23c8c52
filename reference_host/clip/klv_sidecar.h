// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The telemetry of a stream in a file of its own, beside an output that cannot carry it.
#pragma once

#include "media/output_file.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <span>
#include <string>

namespace clip {

/// The file for the stream that is the `number`th, from 0, of those that are left out: "out.klv" beside "out.mp4", then
/// "out.2.klv".
std::string sidecarPath(std::string const& output, std::size_t number);

class KlvSidecar {
public:
    /// Nothing is under the name before finish(). Throws std::runtime_error with one line, here and below.
    explicit KlvSidecar(std::string const& path);

    void add(std::span<std::uint8_t const> unit);
    void finish();

private:
    void check_() const;

    media::OutputFile file_;
    std::ofstream stream_;
};

}  // namespace clip
