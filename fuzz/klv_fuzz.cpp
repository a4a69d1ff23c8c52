// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Any bytes as a stream unit: what is decoded and encoded again decodes to the same payload, and
// what people read of it can be made.
#include "telemetry/derived_keys.h"
#include "telemetry/nested_sets.h"
#include "telemetry/telemetry.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

void require(bool holds, char const* property)
{
    if (!holds) {
        std::fprintf(stderr, "klv_fuzz: does not hold: %s\n", property);
        std::abort();
    }
}

/// The keys that are written again: those of nested items other than the security set are not.
SwJsonObject withoutNested(SwJsonObject payload)
{
    for (telemetry::NestedRow const& nested : telemetry::nestedTable()) {
        payload.erase(nested.row.key);
    }
    payload.erase(telemetry::countryCodingMethods().textKey);
    // Of a set that cannot be read only this is left; no item says it.
    if (payload.contains("security_classification") && !payload.contains("security_classification_code")) {
        payload.erase("security_classification");
        payload.erase("security_line");
    }
    return payload;
}

/// What people read is made of any values, and leaves these as they are.
void requireDerived(SwJsonObject const& payload)
{
    // What it learns from other payloads only saves time.
    static telemetry::DerivedKeyMaker maker(telemetry::KeySelection::withDerived());
    SwJsonObject more = payload;
    maker.addTo(more);
    for (auto const& [key, value] : payload) {
        require(more.find(key)->second == value, "no key is replaced");
    }
    for (auto const& [key, value] : more) {
        require(value.stringRef().find("60.00\"") == std::string::npos || payload.contains(key), "seconds are carried");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    telemetry::KlvDecoder decoder;
    auto const packets = decoder.decode({data, size}, std::nullopt);
    require(decoder.counts().packets == packets.size(), "every packet is counted");
    require(decoder.counts().badChecksums <= packets.size(), "bad checksums are packets");
    require((decoder.counts().foreignKeys + decoder.counts().truncated + packets.size()) * 16 <= size,
            "every count has a key of its own");
    for (telemetry::Packet const& packet : packets) {
        requireDerived(packet.payload);
        auto const bytes = telemetry::encodeKlv(packet.payload);
        telemetry::KlvDecoder again;
        auto const back = again.decode(bytes, std::nullopt);
        require(back.size() == 1, "an encoded payload is one packet");
        require(back[0].checksum == telemetry::Checksum::Ok, "its checksum is right");
        require(back[0].payload == withoutNested(packet.payload), "it decodes to the same payload");
        require(telemetry::encodeKlv(back[0].payload) == bytes, "and encodes to the same bytes");
    }
    return 0;
}
