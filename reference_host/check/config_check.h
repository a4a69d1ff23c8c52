// What the plugin's forgiving parser would silently change in a configuration. Written from the rules of
// the configuration, not from the plugin's code: the program sees the plugin only through its interface.
//
// For each member one function computes what the record will hold (reading_rules.h); that is compared with what
// stands in the file (written_config.h), and the message is made from it.
#pragma once

#include "check/member.h"

#include "SwJson.h"

#include <string>
#include <vector>

namespace check {

/// All findings, block by block and there in the order of the rules. `root` has an array "overlay" and was read from
/// `text`. Where nothing is said about a member, the block's record holds what stands in the text.
Findings checkConfig(SwJsonObject const& root, std::string const& text);

/// Telemetry keys that templates, conditions and formats use and that are not among `delivered`, which is
/// sorted.
Findings checkKeys(SwJsonObject const& root, std::vector<std::string> const& delivered);

}  // namespace check
