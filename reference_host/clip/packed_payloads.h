// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The telemetry of a whole clip in little room: an hour of thirty packets a second with sixty keys takes some 70 MB.
#pragma once

#include "SwJson.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace clip {

class PackedPayloads {
public:
    /// Gives the payload's number, from 0.
    std::size_t add(SwJsonObject const& payload);

    /// Payloads with the same keys have the same list of keys.
    std::size_t keyListOf(std::size_t payload) const { return payloads_[payload].keyList; }
    /// The lists of all payloads, in the order in which they were first met.
    std::vector<std::vector<std::string>> const& keyLists() const { return keyLists_; }

    /// The values of those keys of the payload whose place in its list is `wanted`, as they were.
    SwJsonObject unpack(std::size_t payload, std::vector<bool> const& wanted) const;

private:
    struct Packed {
        std::size_t keyList = 0;
        std::string values;  ///< each with its type in front, in the order of the keys
    };

    std::size_t keyListFor_(SwJsonObject const& payload);
    void pack_(SwJsonValue const& value, std::string& bytes);
    SwJsonValue next_(char const*& bytes) const;

    std::vector<std::vector<std::string>> keyLists_;
    std::map<std::vector<std::string>, std::size_t> numbers_;  ///< of the lists
    std::vector<Packed> payloads_;
    std::vector<SwJsonValue> containers_;  ///< arrays and objects, which are rare
};

}  // namespace clip
