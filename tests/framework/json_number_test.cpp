// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Bare numbers against the C library: the same double, bit by bit, and the same refusals.
#include "SwJson.h"

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace {

/// As an element of an array, so that there is text behind the number, too.
void expectAsStrtod(std::string const& token)
{
    errno = 0;
    double const expected = std::strtod(token.c_str(), nullptr);
    bool const refused = errno == ERANGE;
    for (std::string const& text : {token, "[" + token + "]", "[" + token + " ,\"0123456789\"]"}) {
        SwString error;
        SwJsonDocument const document = SwJsonDocument::fromJson(text, SwString(), error);
        ASSERT_EQ(!error.isEmpty(), refused) << token << ": " << error.toStdString();
        if (!refused) {
            SwJsonValue const& value = document.isArray() ? document.array()[0] : document.root();
            ASSERT_TRUE(value.isDouble()) << token;
            ASSERT_EQ(std::bit_cast<std::uint64_t>(value.toDouble()), std::bit_cast<std::uint64_t>(expected)) << token;
        }
    }
}

std::string randomDigits(std::mt19937_64& random, std::size_t count)
{
    std::string digits;
    for (; count > 0; --count) {
        digits.push_back(static_cast<char>('0' + random() % 10));
    }
    return digits;
}

/// A whole number without leading zeros, of so many digits.
std::string randomWhole(std::mt19937_64& random, std::size_t count)
{
    return std::to_string(1 + random() % 9) + randomDigits(random, count - 1);
}

}  // namespace

TEST(JsonNumber, DecimalsOfAllLengths)
{
    std::mt19937_64 random(1);
    for (std::size_t whole = 1; whole <= 22; ++whole) {
        for (std::size_t decimals = 1; decimals <= 22; ++decimals) {
            for (int i = 0; i < 20; ++i) {
                expectAsStrtod((i % 2 == 0 ? "" : "-") + randomWhole(random, whole) + "." +
                               randomDigits(random, decimals));
                expectAsStrtod("0." + std::string(whole, '0') + randomDigits(random, decimals));
            }
        }
    }
}

TEST(JsonNumber, AnyBitsWrittenInFull)
{
    std::mt19937_64 random(2);
    for (int i = 0; i < 30000; ++i) {
        auto const number = std::bit_cast<double>(random());
        // 17 digits name a double; fewer and more lie between.
        for (int const digits : {15, 17, 19, 21}) {
            char text[64];
            std::snprintf(text, sizeof text, "%.*e", digits - 1, number);
            if (std::string(text).find_first_of("ni") == std::string::npos) {
                expectAsStrtod(text);
            }
        }
    }
}

TEST(JsonNumber, HalfwayBetweenTwoDoubles)
{
    std::mt19937_64 random(3);
    for (int i = 0; i < 20000; ++i) {
        // Above 2^53 the halves are whole numbers; a digit behind the point tips them over.
        int const shift = static_cast<int>(random() % 10);
        std::uint64_t const half = (((random() >> 11U) | (std::uint64_t{1} << 52U)) * 2 + 1)
                                   << static_cast<unsigned>(shift);
        for (char const* const end : {".0", ".1", ".00000000000000000000001"}) {
            expectAsStrtod(std::to_string(half) + end);
            expectAsStrtod(std::to_string(half - 1) + end);
        }
    }
    // 53 digits of two and a half of the next, in decimals: 0.5 + 2^-54 and its like.
    expectAsStrtod("0.500000000000000055511151231257827021181583404541015625");
    expectAsStrtod("0.500000000000000055511151231257827021181583404541015624");
    expectAsStrtod("0.500000000000000055511151231257827021181583404541015626");
    expectAsStrtod("1.00000000000000011102230246251565404236316680908203125");
    expectAsStrtod("9007199254740993.0");
    expectAsStrtod("9007199254740992.9999");
    expectAsStrtod("900719925474099.3");
    expectAsStrtod("9007199254740.993");
    expectAsStrtod("0.9007199254740993");
}

TEST(JsonNumber, TheEdgesOfTheRange)
{
    for (char const* const token : {"1.7976931348623157e308",
                                    "1.7976931348623158e308",
                                    "1.7976931348623159e308",
                                    "1e309",
                                    "-1e309",
                                    "2.2250738585072014e-308",
                                    "2.2250738585072011e-308",
                                    "4.9406564584124654e-324",
                                    "2.4703282292062327e-324",
                                    "2.4703282292062328e-324",
                                    "1e-400",
                                    "-0.0",
                                    "0.0",
                                    "0e0",
                                    "0e999999999999",
                                    "0.0e-999999999999",
                                    "1e00000001",
                                    "1.0E+2",
                                    "1.5e-0",
                                    "1e22",
                                    "1e23",
                                    "123456789012345678e1",
                                    "9.5e-1",
                                    "18446744073709551615.0",
                                    "18446744073709551616.0",
                                    "9999999999999999999.9",
                                    "0.1",
                                    "0.10",
                                    "0.3",
                                    "100.25"}) {
        expectAsStrtod(token);
    }
    expectAsStrtod("1" + std::string(400, '0') + ".0");
    expectAsStrtod("0." + std::string(400, '0') + "1");
    expectAsStrtod("0." + std::string(300, '0') + "1");
    expectAsStrtod("1" + std::string(300, '0') + ".5e-300");
}

TEST(JsonNumber, WholeNumbersOfAllLengths)
{
    std::mt19937_64 random(4);
    for (std::size_t digits = 1; digits <= 21; ++digits) {
        for (int i = 0; i < 200; ++i) {
            std::string const token = (i % 2 == 0 ? "" : "-") + randomWhole(random, digits);
            errno = 0;
            long long const expected = std::strtoll(token.c_str(), nullptr, 10);
            bool const refused = errno == ERANGE;
            SwString error;
            SwJsonDocument const document = SwJsonDocument::fromJson("[" + token + "]", SwString(), error);
            ASSERT_EQ(!error.isEmpty(), refused) << token;
            if (!refused) {
                ASSERT_TRUE(document.array()[0].isInt()) << token;
                ASSERT_EQ(document.array()[0].toInt(), expected) << token;
            }
        }
    }
}
