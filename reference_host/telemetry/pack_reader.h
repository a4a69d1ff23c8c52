// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Cuts a pack, whose parts have no tags, into its parts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace telemetry {

/// Reads a pack from its front. A part that does not fit ends the reading: everything after it is missing too.
class PackReader {
public:
    explicit PackReader(std::span<std::uint8_t const> pack) : pack_(pack) {}

    bool atEnd() const { return position_ >= pack_.size(); }
    /// Whether a part did not fit.
    bool failed() const { return failed_; }

    /// The next `count` bytes.
    std::span<std::uint8_t const> bytes(std::size_t count);
    /// A BER length and as many bytes.
    std::span<std::uint8_t const> sized();
    /// A BER-OID number; 0 when it does not fit.
    std::uint32_t number();
    /// All that is left.
    std::span<std::uint8_t const> rest() { return bytes(pack_.size() - position_); }

private:
    std::span<std::uint8_t const> fail_();

    std::span<std::uint8_t const> pack_;
    std::size_t position_ = 0;
    bool failed_ = false;
};

}  // namespace telemetry
