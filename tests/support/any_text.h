// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Conversions through the variant in one call, for its tests.
#pragma once

#include "SwAny.h"

#include <string>
#include <vector>

namespace framework_test {

template <typename To, typename From>
To converted(From const& value)
{
    return SwAny(value).convert<To>().template get<To>();
}

template <typename From>
std::string textOf(From const& value)
{
    return converted<SwString>(value);
}

inline SwList<unsigned char> listOf(std::vector<unsigned char> const& bytes)
{
    SwList<unsigned char> list;
    list.assign(bytes.begin(), bytes.end());
    return list;
}

}  // namespace framework_test
