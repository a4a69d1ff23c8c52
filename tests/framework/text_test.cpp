// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A program of its own: it defines newlocale itself, and the "C" locale is made once per process.
#include "sw_text.h"

#include "SwString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <dlfcn.h>
#include <locale.h>
#include <new>
#include <string_view>

namespace {

bool g_localesFail = false;

}  // namespace

extern "C" locale_t newlocale(int categories, char const* name, locale_t base)
{
    if (g_localesFail) {
        return nullptr;
    }
    return reinterpret_cast<decltype(&newlocale)>(dlsym(RTLD_NEXT, "newlocale"))(categories, name, base);
}

TEST(Text, TheClassesOfEveryByte)
{
    constexpr std::string_view kSpaces = " \t\n\v\f\r";
    constexpr std::string_view kDigits = "0123456789";
    constexpr std::string_view kLowerDigits = "0123456789abcdef";
    constexpr std::string_view kUpperDigits = "0123456789ABCDEF";
    auto const place = [](std::string_view digits, char byte) {
        std::size_t const found = digits.find(byte);
        return found == std::string_view::npos ? -1 : static_cast<int>(found);
    };
    for (int value = 0; value < 256; ++value) {
        SCOPED_TRACE(value);
        char const byte = static_cast<char>(static_cast<unsigned char>(value));
        EXPECT_EQ(sw_detail::isSpace(byte), kSpaces.find(byte) != std::string_view::npos);
        EXPECT_EQ(sw_detail::isDigit(byte), kDigits.find(byte) != std::string_view::npos);
        bool const isCapital = value >= 'A' && value <= 'Z';
        EXPECT_EQ(sw_detail::toLower(byte), isCapital ? static_cast<char>(value + 32) : byte);
        EXPECT_EQ(sw_detail::hexDigitValue(byte), std::max(place(kLowerDigits, byte), place(kUpperDigits, byte)));
    }
}

TEST(Text, AMissingLocaleIsAFailingAllocationAndNoNumber)
{
    g_localesFail = true;
    double number = 7.0;
    EXPECT_THROW(sw_detail::classicLocale(), std::bad_alloc);
    EXPECT_THROW(SwString("1.5").parseNumericDouble(number), std::bad_alloc);
    EXPECT_EQ(number, 7.0);
    g_localesFail = false;
    EXPECT_TRUE(SwString("1.5").parseNumericDouble(number));
    EXPECT_EQ(number, 1.5);
    EXPECT_NE(sw_detail::classicLocale(), nullptr);
    EXPECT_EQ(sw_detail::classicLocale(), sw_detail::classicLocale());
}
