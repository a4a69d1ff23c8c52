// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Turns an input's payload into a flat JSON object: the first step of a frame, before the producers'
// objects are merged.
#pragma once

#include "SwAny.h"
#include "SwJson.h"

namespace render_payload {

/// The object that `payload` holds, converts to, or spells as JSON text, in this order of preference; an
/// empty object when there is none. Text that is no valid JSON gives nothing, silently; valid text whose
/// root is no object writes "Root is not a JSON object." to standard error. Never throws, not even when
/// a registered conversion does. SwAny(std::string(R"({"a":1})")) gives an object with the Int 1 under "a".
SwJsonObject anyToJsonObject(SwAny const& payload);

/// The same for a payload that nobody looks at again: an object it holds is moved out instead of copied.
SwJsonObject anyToJsonObject(SwAny&& payload);

}  // namespace render_payload
