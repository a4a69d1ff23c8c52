// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Sets the locale that localedef made in the build folder, and in the end the one that was set before.
#include "comma_locale.h"

#include <clocale>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

CommaCLocale::CommaCLocale() : before_(std::setlocale(LC_ALL, nullptr))
{
    setenv("LOCPATH", OVERLAY_LOCALE_DIR, 1);
    char const* const taken = std::setlocale(LC_ALL, OVERLAY_COMMA_LOCALE);
    unsetenv("LOCPATH");
    if (taken == nullptr) {
        throw std::runtime_error("no locale " OVERLAY_COMMA_LOCALE " in " OVERLAY_LOCALE_DIR);
    }
    // The conversions themselves, not what the locale says of itself.
    if (std::string_view(std::localeconv()->decimal_point) != "," || std::strtod("2,5", nullptr) != 2.5) {
        std::setlocale(LC_ALL, before_.c_str());
        throw std::runtime_error("locale " OVERLAY_COMMA_LOCALE " has no decimal comma");
    }
}

CommaCLocale::~CommaCLocale()
{
    std::setlocale(LC_ALL, before_.c_str());
}
