// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the plugin's forgiving parser would silently change in a configuration. Written from the rules of
// the configuration, not from the plugin's code: the program sees the plugin only through its interface.
//
// For each member one function computes what the record will hold (reading_rules.h); that is compared with what
// stands in the file (written_config.h), and the message is made from it.
#pragma once

#include "check/member.h"

#include "SwJson.h"

#include <functional>
#include <string>
#include <vector>

namespace check {

/// All findings, block by block and there in the order of the rules. `root` has an array "overlay" and was read from
/// `text`. Where nothing is said about a member, the block's record holds what stands in the text.
Findings checkConfig(SwJsonObject const& root, std::string const& text);

/// Keys that are made for those who name them.
struct Derivable {
    std::vector<std::string> keys{};  ///< that can be made, sorted
    /// The keys, none of them delivered, of which one that cannot be made would be made; empty for other keys.
    std::function<std::vector<std::string>(std::string const& key)> missingSources{};
};

/// Telemetry keys that templates, conditions and formats use and that are neither among `delivered`, which is
/// sorted, nor can be made. Each finding names what the key would be made of, or else the most similar one.
Findings checkKeys(SwJsonObject const& root, std::vector<std::string> const& delivered,
                   Derivable const& derivable = {});

}  // namespace check
