// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The parts of a pack, each bounded by the pack's bytes.
#include "telemetry/pack_reader.h"

#include "telemetry/klv_reader.h"

namespace telemetry {

std::span<std::uint8_t const> PackReader::fail_()
{
    failed_ = true;
    position_ = pack_.size();
    return {};
}

std::span<std::uint8_t const> PackReader::bytes(std::size_t count)
{
    if (count > pack_.size() - position_) {
        return fail_();
    }
    auto const part = pack_.subspan(position_, count);
    position_ += count;
    return part;
}

std::span<std::uint8_t const> PackReader::sized()
{
    auto const length = readBerLength(pack_, position_);
    if (!length.has_value() || *length > pack_.size() - position_) {
        return fail_();
    }
    return bytes(static_cast<std::size_t>(*length));
}

std::uint32_t PackReader::number()
{
    auto const found = readBerOid(pack_, position_);
    if (!found.has_value()) {
        fail_();
    }
    return found.value_or(0);
}

}  // namespace telemetry
