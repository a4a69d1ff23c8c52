// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Keys that a packet's own keys give: names of codes, single flags, corners of the picture on the ground.
#pragma once

#include "SwJson.h"
#include "telemetry/code_names.h"
#include "telemetry/key_selection.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace telemetry {

/// The codes of ST 0601 that have names.
std::span<CodeRow const> st0601Codes();

/// One bit of the generic flags (tag 47).
struct FlagRow {
    unsigned bit;
    std::string_view key;
    std::string_view meaning;  ///< of a flag that is set
};
std::span<FlagRow const> genericFlagRows();

/// A key and those of which it is made.
struct SecondKey {
    std::string key;
    std::vector<std::string> sources;
};
/// Every key that SecondKeyMaker can add.
std::vector<SecondKey> const& secondKeys();

/// Where something stands, by the names of keys without their endings.
struct Place {
    std::string key;   ///< of the position that is made
    std::string item;  ///< of the items that tell it
};

class SecondKeyMaker {
public:
    /// Makes the wanted ones.
    explicit SecondKeyMaker(KeySelection const& wanted);

    /// Adds to the keys of a packet
    /// * the names of its codes; a code without name gives its number: sensor_fov_name 9 is "9";
    /// * its flags one by one;
    /// * corner1_lat_deg, corner1_lon_deg to corner4: where each corner of the picture is, from the corner's own
    ///   position, else from its offset and the frame center; nothing when half of what is needed is missing;
    /// * likewise the first moving target, if it has no position but an offset.
    void addTo(SwJsonObject& payload) const;

private:
    std::vector<CodeRow> codes_;
    std::vector<FlagRow> flags_;
    bool positioning_ = false;
    std::vector<Place> places_;
};

}  // namespace telemetry
