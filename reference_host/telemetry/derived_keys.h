// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Keys that are computed from others because people read them so: feet and knots, degrees with minutes and seconds,
// MGRS, compass points, dates, the direction of north in the picture. One table drives them.
#pragma once

#include "SwJson.h"
#include "telemetry/key_selection.h"

#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace telemetry {

/// One kind of derived key. A "*" in its name stands for any name: the row makes sensor_alt_ft from sensor_alt_m.
struct DerivedRow {
    std::string_view key;      ///< "*_ft"
    std::string_view sources;  ///< "*_m"; several are parted by blanks, and all must be numbers
    std::string_view meaning;  ///< for people, with an example
    /// From the sources in their order; Null when they have no such value.
    SwJsonValue (*compute)(std::span<double const> values);
    /// Which names the "*" may stand for; null: all.
    bool (*takes)(std::string_view name) = nullptr;
};

/// All rows; of rows with one key the first whose sources are there counts. A row may use keys of the rows before it.
std::span<DerivedRow const> derivedTable();

/// One derived key that can be made.
struct DerivedKey {
    std::string key;
    std::vector<std::string> sources;
    SwJsonValue (*compute)(std::span<double const> values) = nullptr;
};

/// The derived keys that can be made where `keys` are delivered, each behind those of which it is made.
std::vector<DerivedKey> derivableFrom(std::set<std::string> const& keys);

/// Those of them that are named, and those of which these are made, in the same order.
std::vector<DerivedKey> namedAmong(std::vector<DerivedKey> all, KeySelection const& wanted);

/// What a key that nobody delivers would need: the sources, of the row that misses fewest, that are not among `keys`.
/// Empty when it is no derived key. sensor_mgrs needs sensor_lat_deg and sensor_lon_deg.
std::vector<std::string> missingSources(std::string const& key, std::set<std::string> const& keys);

/// Adds derived keys to payloads. It learns from payload to payload which keys there are, so each further one costs
/// little.
class DerivedKeyMaker {
public:
    /// Makes those that are named, and those of which they are made.
    explicit DerivedKeyMaker(KeySelection const& wanted);

    /// What is there already stays; a value out of range (a latitude of 91 degrees) gives no key.
    void addTo(SwJsonObject& payload);

private:
    void learn_(SwJsonObject const& payload);

    KeySelection wanted_;
    bool any_ = false;  ///< whether a derived key may be named at all
    std::set<std::string, std::less<>> seen_;
    std::vector<DerivedKey> made_;
};

}  // namespace telemetry
