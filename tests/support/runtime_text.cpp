// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One line a field, held and refreshed values in the order of their keys.
#include "runtime_text.h"

#include <map>

namespace stanag_overlay {

namespace {

std::string entriesOf(char const* name, std::unordered_map<std::string, TimedText> const& entries)
{
    std::string out;
    for (auto const& [key, entry] : std::map<std::string, TimedText>(entries.begin(), entries.end())) {
        out += std::string(name) + "[" + key + "]=" + entry.text + "@" + std::to_string(entry.timeNs) + "\n";
    }
    return out;
}

}  // namespace

std::string runtimeText(OverlayRuntime const& runtime)
{
    return "text=" + runtime.text + "\nlastUpdateFrame=" + std::to_string(runtime.lastUpdateFrame) +
           "\nconditionSince=" + std::to_string(runtime.conditionSince) +
           "\nconditionLastTrue=" + std::to_string(runtime.conditionLastTrue) + "\n" +
           entriesOf("held", runtime.heldValues) + entriesOf("refresh", runtime.refreshValues);
}

}  // namespace stanag_overlay
