// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// How the plain pass reads a number: as the standard library does, and only a text that is one from end to end.
#pragma once

#include "SwJson.h"
#include "sw_extended.h"

#include <exception>
#include <string>

namespace stanag_overlay::plain {

inline bool parseWhole(std::string const& text, long double& out)
{
    try {
        std::size_t used = 0;
        out = sw_detail::extended(std::stold(text, &used));
        return used == text.size();
    } catch (std::exception const&) {
        return false;
    }
}

inline bool parseNumber(SwJsonValue const& value, long double& out)
{
    if (value.isInt()) {
        out = static_cast<double>(value.toInt());
        return true;
    }
    if (value.isDouble()) {
        out = value.toDouble();
        return true;
    }
    return value.isString() && parseWhole(value.toString(), out);
}

}  // namespace stanag_overlay::plain
