// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A payload as one line for comparing whole: "heading_deg=90 mission_id='M'". Numbers with the digits that
// a double needs.
#pragma once

#include "SwJson.h"

#include <cstdio>
#include <string>

namespace telemetry {

inline std::string valueText(SwJsonValue const& value)
{
    switch (value.type()) {
    case SwJsonValue::Double: {
        char text[40];
        std::snprintf(text, sizeof text, "%.17g", value.toDouble());
        return std::string(text) + "d";
    }
    case SwJsonValue::String:
        return "'" + value.stringRef() + "'";
    default:
        return value.toString();
    }
}

/// Doubles end in "d", so that 90 and 90.0 differ: "a=90 b=90d".
inline std::string payloadText(SwJsonObject const& payload)
{
    std::string text;
    for (auto const& [key, value] : payload) {
        text += (text.empty() ? "" : " ") + key + "=" + valueText(value);
    }
    return text;
}

}  // namespace telemetry
