// What the plugin's forgiving parser would silently change in a configuration. Written from the rules of
// the configuration, not from the plugin's code: the program sees the plugin only through its interface.
#pragma once

#include "SwJson.h"

#include <string>
#include <vector>

namespace check {

/// One thing that is not taken as it stands.
struct Finding {
    std::string place;  ///< "overlay[0].position.x"; empty for the root
    std::string text;   ///< "1.5 becomes 1 (allowed: 0 to 1)"
};

/// All findings in the order of the configuration. `root` has an array "overlay".
std::vector<Finding> checkConfig(SwJsonObject const& root);

/// Telemetry keys that templates, conditions and formats use and that are not among `delivered`, which is
/// sorted.
std::vector<Finding> checkKeys(SwJsonObject const& root, std::vector<std::string> const& delivered);

}  // namespace check
