// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The one handle of the "C" locale. It lives as long as the process: numbers are read until the very end.
#include "sw_text.h"

#include <new>

namespace sw_detail {

namespace {

locale_t makeClassicLocale()
{
    locale_t const made = newlocale(LC_ALL_MASK, "C", nullptr);
    if (made == nullptr) {
        throw std::bad_alloc();
    }
    return made;
}

}  // namespace

locale_t classicLocale()
{
    static locale_t const locale = makeClassicLocale();
    return locale;
}

}  // namespace sw_detail
