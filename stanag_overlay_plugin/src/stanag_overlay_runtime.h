// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What one block carries from frame to frame. Reset by replacing the record with a default one.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

namespace stanag_overlay {

/// A text and the frame's time (ns) that belongs to it; time 0 means no entry.
struct TimedText {
    std::string text;
    std::uint64_t timeNs = 0;
};

struct OverlayRuntime {
    std::string text;                     ///< last expanded text: what is drawn
    std::uint64_t lastUpdateFrame = 0;    ///< frameIndex of the last expansion; 0 = never
    std::uint64_t conditionSince = 0;     ///< ns since which the condition holds; 0 = it does not
    std::uint64_t conditionLastTrue = 0;  ///< ns of the last frame shown because the condition held; 0 = never
    std::unordered_map<std::string, TimedText> heldValues;     ///< by key: last text shown and when
    std::unordered_map<std::string, TimedText> refreshValues;  ///< by key: text being shown and when it was taken
};

}  // namespace stanag_overlay
