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

    bool wants(std::string_view key) const { return all_ || texts_.find(key) != std::string::npos; }

private:
    bool all_ = true;
    std::string texts_;  ///< one a line
};

}  // namespace telemetry
