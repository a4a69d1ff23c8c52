// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The items of a stream's packets that hold several values. They are read apart from the others, and only when
// somebody wants their keys.
#pragma once

#include "SwJson.h"
#include "telemetry/key_selection.h"
#include "telemetry/klv_reader.h"

#include <cstdint>
#include <span>

namespace telemetry {

class NestedItems {
public:
    explicit NestedItems(KeySelection const& wanted);

    /// Adds the keys of a packet's nested items and the marking that holds at its place to its other keys. Keys that
    /// are not wanted may be missing, but a packet that holds any key gives one. `packet` has no damaged item.
    void addKeys(KlvPacket const& packet, SwJsonObject& payload);

    /// Takes a security set that stands alone. Returns false when an item runs past its end.
    bool takeSecurity(KlvPacket const& set);
    /// The keys of the last security set, empty when there has been none.
    SwJsonObject const& security() const { return security_; }

    /// Nested sets that were looked at and in which an item runs past the end: they give no key.
    std::uint64_t damaged() const { return damaged_; }

private:
    bool takeMarking_(std::span<std::uint8_t const> set, bool& marked);

    bool wantsSecurity_ = false;
    bool wantsOthers_ = false;
    SwJsonObject security_;
    std::uint64_t damaged_ = 0;
};

}  // namespace telemetry
