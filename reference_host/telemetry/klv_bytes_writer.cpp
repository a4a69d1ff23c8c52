// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The framing of KLV (SMPTE ST 336, MISB ST 0107) in the direction of writing.
#include "telemetry/klv_bytes_writer.h"

namespace telemetry {

void appendLength(std::vector<std::uint8_t>& out, std::size_t length)
{
    if (length < 0x80) {
        out.push_back(static_cast<std::uint8_t>(length));
        return;
    }
    unsigned count = 1;
    while (count < sizeof(length) && (length >> (8U * count)) != 0) {
        ++count;
    }
    out.push_back(static_cast<std::uint8_t>(0x80U | count));
    for (unsigned i = count; i > 0; --i) {
        out.push_back(static_cast<std::uint8_t>((length >> (8U * (i - 1))) & 0xFFU));
    }
}

void appendTag(std::vector<std::uint8_t>& out, std::uint32_t tag)
{
    unsigned groups = 1;
    while ((tag >> (7U * groups)) != 0) {
        ++groups;
    }
    for (unsigned i = groups; i > 0; --i) {
        std::uint32_t const group = (tag >> (7U * (i - 1))) & 0x7FU;
        out.push_back(static_cast<std::uint8_t>(i > 1 ? group | 0x80U : group));
    }
}

void appendItem(std::vector<std::uint8_t>& out, std::uint32_t tag, std::vector<std::uint8_t> const& data)
{
    if (data.empty()) {
        return;
    }
    appendTag(out, tag);
    appendLength(out, data.size());
    out.insert(out.end(), data.begin(), data.end());
}

}  // namespace telemetry
