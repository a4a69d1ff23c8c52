// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The display conditions written the plain way, by the standard library's own number conversions. Shares no
// code with the plugin's evaluator: the opponent of property tests and benchmarks.
#pragma once

#include "stanag_overlay_condition.h"

#include "SwJson.h"

#include <cstdint>

namespace stanag_overlay::plain {

/// As OverlayConditionEvaluator::visibility.
Visibility visibility(OverlayCfg const& cfg, OverlayRuntime& runtime, SwJsonObject const* root, std::uint64_t nowNs);

}  // namespace stanag_overlay::plain
