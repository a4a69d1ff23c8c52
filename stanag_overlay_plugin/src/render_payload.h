// Turns an input's payload into a flat JSON object.
#pragma once

#include "SwAny.h"
#include "SwJson.h"

namespace render_payload {

/// The object that `payload` holds, converts to, or spells as JSON text, in this order of preference; an
/// empty object when there is none. Text whose root is no object writes "Root is not a JSON object." to
/// standard error. Never throws for bad content.
SwJsonObject anyToJsonObject(SwAny const& payload);

}  // namespace render_payload
