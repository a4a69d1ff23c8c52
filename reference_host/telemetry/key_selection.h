// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The keys that somebody will look at: making all others costs time for nobody.
#pragma once

#include <string>
#include <string_view>

namespace telemetry {

class KeySelection {
public:
    /// All keys.
    KeySelection() = default;

    /// The keys that the configuration can name: rather more, never fewer. Wanted is each key whose name stands
    /// anywhere in a text or a member's name; all are when a block has no template, because it lists what there is.
    /// Keys of which a named one is made are wanted too.
    /// {"overlay":[{"formatString":"%{heading_deg}"}]} wants heading_deg and not pitch_deg. A text that cannot be read
    /// names nothing.
    static KeySelection namedIn(std::string const& config);

    /// All keys, and all that can be derived from them.
    static KeySelection withDerived();

    bool wants(std::string_view key) const { return all_ || named_(key); }
    /// Whether a key that is made only for those who name it is wanted.
    bool names(std::string_view key) const { return derived_ || namedFromItsBeginning_(key); }

private:
    bool named_(std::string_view key) const { return texts_.find(key) != std::string::npos; }
    bool namedFromItsBeginning_(std::string_view key) const;
    void addSources_();

    bool all_ = true;
    bool derived_ = false;
    std::string texts_;  ///< one a line
};

}  // namespace telemetry
