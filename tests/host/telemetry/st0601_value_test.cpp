// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Values of single items: worked examples of MISB ST 0601, boundary codes, odd lengths, and the way back.
#include "telemetry/st0601_value.h"

#include "klv_bytes.h"
#include "sw_utf8.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace telemetry {
namespace {

struct NumberRow {
    std::uint32_t tag;
    char const* hex;
    double expected;
    double tolerance = 1e-9;
};

void expectNumbers(std::span<NumberRow const> rows)
{
    for (NumberRow const& row : rows) {
        SCOPED_TRACE("tag " + std::to_string(row.tag) + " " + row.hex);
        SwJsonValue const value = decodeValue(*findRow(row.tag), fromHex(row.hex));
        ASSERT_TRUE(value.isDouble());
        EXPECT_NEAR(value.toDouble(), row.expected, row.tolerance);
    }
}

TEST(St0601Value, WorkedExamplesOfScaledItems)
{
    NumberRow const rows[] = {
        {5, "71C2", 159.974364843},
        {6, "FD3D", -0.431531724},
        {7, "08B8", 3.405865658},
        {8, "93", 147},
        {9, "9F", 159},
        {13, "5595B66D", 60.176822967},
        {14, "5B5360C4", 128.426759042},
        {15, "C221", 14190.719462882},
        {16, "CD9C", 144.571297780},
        {17, "D917", 152.643625544},
        {18, "724A0A20", 160.719211437},
        {19, "87F84B86", -168.792324834},
        {20, "7DC55ECE", 176.865437649},
        {21, "03830926", 68590.983298745},
        {22, "1281", 722.819867247},
        {23, "F101A229", -10.542388633},
        {24, "14BC082B", 29.157890123},
        {25, "34F3", 3216.037232013},
        {26, "1750", 0.013660085},
        {40, "8F695262", -79.163850052},
        {41, "765457F2", 166.400812960},
        {42, "F823", 18389.047074083},
        {50, "C883", -8.670308542},
        {51, "D3FE", 61.887874996},  // positive down
        {52, "DF79", -5.082552568},
        {55, "81", 50.588235294},
        {56, "8C", 140},
        {57, "B38EACF1", 3506979.031606, 1e-6},
        {64, "DDC5", 311.868162051},
        {75, "C221", 14190.719462882},
        {78, "0BB3", 9.445334554},
        {79, "09FB", 25.497756890},
        {80, "04BC", 12.095217750},
        {82, "F1069B63", -10.528728394},
        {83, "14BCB2C0", 29.161550416},
        {90, "FF62E2F2", -0.431525102},
        {91, "04D804DF", 3.405813982},
        {96, "00D92A", 13898.5},
        {103, "2F921E", 23456.234375},
        {104, "2F921E", 23456.234375},
        {112, "1F40", 125},
        {113, "05F500", 2150},
        {114, "05F740", 2154.5},
        {117, "3E90", 1},
        {118, "3E8011", 0.004150390625},
        {119, "3B60", -50},
        {134, "3700", 55},
    };
    expectNumbers(rows);
}

TEST(St0601Value, OtherScaledItems)
{
    NumberRow const rows[] = {
        {35, "A7C4", 235.92401007095447},
        {36, "B2", 69.80392156862744},
        {37, "BEBA", 3725.1850156404976},
        {38, "CA35", 14818.677042801555},
        {39, "54", 84},
        {39, "F6", -10},
        {39, "80", -128},
        {45, "1A95", 425.2151522087434},
        {46, "2611", 608.9230945296407},
        {49, "3D07", 1191.958495460441},
        {53, "6AF4", 2088.9600976577403},
        {54, "7670", 8306.805523765926},
        {58, "A45D", 6420.5386434729535},
        {67, "85A15A39", -86.04120734894704},
        {68, "001C501C", 0.15552755452484243},
        {69, "0BB3", 9.445334554054966},
        {71, "172F", 32.60242618448158},
        {76, "0BB3", 9.445334554054966},
        {92, "F3AB48EF", -8.670176984123037},
        {93, "DE179323", -47.683000037299},
        {105, "2F921E", 23456.234375},
        {109, "0001A0", 1.625},
        {120, "4800", 72},
        {132, "0257C0", 2400},
    };
    expectNumbers(rows);
}

TEST(St0601Value, BoundaryCodes)
{
    NumberRow const rows[] = {
        {5, "0000", 0, 0},         {5, "FFFF", 360, 0},      {18, "00000000", 0, 0},   {18, "FFFFFFFF", 360, 0},
        {20, "00000000", 0, 0},    {20, "FFFFFFFF", 360, 0}, {6, "8001", -20, 0},      {6, "7FFF", 20, 0},
        {7, "8001", -50, 0},       {7, "7FFF", 50, 0},       {13, "80000001", -90, 0}, {13, "7FFFFFFF", 90, 0},
        {14, "80000001", -180, 0}, {14, "7FFFFFFF", 180, 0}, {15, "0000", -900, 0},    {15, "FFFF", 19000, 0},
        {25, "0000", -900, 0},     {25, "FFFF", 19000, 0},   {42, "0000", -900, 0},    {42, "FFFF", 19000, 0},
        {16, "0000", 0, 0},        {16, "FFFF", 180, 0},     {17, "0000", 0, 0},       {17, "FFFF", 180, 0},
        {21, "00000000", 0, 0},    {21, "FFFFFFFF", 5e6, 0}, {57, "00000000", 0, 0},   {57, "FFFFFFFF", 5e6, 0},
        {79, "8001", -327, 0},     {79, "7FFF", 327, 0},     {80, "8001", -327, 0},    {80, "7FFF", 327, 0},
        {51, "8001", 180, 0},      {51, "7FFF", -180, 0},    {26, "8001", -0.075, 0},  {33, "7FFF", 0.075, 0},
        {22, "FFFF", 10000, 0},    {55, "FF", 100, 0},       {112, "0000", 0, 0},      {112, "5A00", 360, 0},
        {134, "0000", 0, 0},       {134, "6400", 100, 0},    {117, "0000", -1000, 0},  {117, "7D00", 1000, 0},
    };
    expectNumbers(rows);
}

TEST(St0601Value, NegatedZeroIsZero)
{
    SwJsonValue const value = decodeValue(*findRow(51), fromHex("0000"));
    ASSERT_TRUE(value.isDouble());
    EXPECT_EQ(value.toDouble(), 0.0);
    EXPECT_FALSE(std::signbit(value.toDouble()));
}

TEST(St0601Value, NoValue)
{
    struct Row {
        char const* name;
        std::uint32_t tag;
        char const* hex;
    };
    Row const rows[] = {
        {"pitch out of range", 6, "8000"},
        {"roll out of range", 7, "8000"},
        {"latitude", 13, "80000000"},
        {"longitude", 14, "80000000"},
        {"tilt", 19, "80000000"},
        {"frame center latitude off earth", 23, "80000000"},
        {"frame center longitude off earth", 24, "80000000"},
        {"corner offset off earth", 26, "8000"},
        {"target latitude", 40, "80000000"},
        {"target longitude", 41, "80000000"},
        {"angle of attack", 50, "8000"},
        {"vertical speed", 51, "8000"},
        {"sideslip", 52, "8000"},
        {"north velocity", 79, "8000"},
        {"east velocity", 80, "8000"},
        {"corner latitude", 82, "80000000"},
        {"corner longitude", 83, "80000000"},
        {"full pitch", 90, "80000000"},
        {"full roll", 91, "80000000"},
        {"reserved code in a wider field", 6, "FFFF8000"},
        {"Imapb special: lowest", 112, "8001"},
        {"Imapb special: positive infinity", 112, "C800"},
        {"Imapb special: not a number", 113, "D00000"},
        {"Imapb above the item's range", 112, "5A01"},
        {"Imapb top bit alone is above every range", 134, "8000"},
        {"Imapb of nine bytes", 112, "000000000000000000"},
        {"length 0: number", 5, ""},
        {"length 0: count", 65, ""},
        {"length 0: text", 11, ""},
        {"length 0: Imapb", 112, ""},
        {"unsigned that does not fit", 22, "00011281"},
        {"count that does not fit", 65, "0111"},
        {"signed that does not fit", 6, "00FD3D"},
        {"signed with the sign of its last bytes only", 6, "FFFF7D3D"},
        {"negative that does not fit", 6, "FE8001"},
        {"count above the signed 64-bit range", 2, "8000000000000000"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE(decodeValue(*findRow(row.tag), fromHex(row.hex)).isNull());
    }
}

TEST(St0601Value, IntegersOfAnotherLengthScaleByTheTagsOwnWidth)
{
    NumberRow const rows[] = {
        {22, "00001281", 722.819867247},       // four bytes instead of two, as recorded flights send it
        {22, "81", 10000.0 * 0x81 / 65535.0},  // one byte instead of two
        {5, "0000000000000000000071C2", 159.974364843},
        {6, "FFFFFFFD3D", -0.431531724},
        {6, "FFFD3D", -0.431531724},
        {6, "FD", 20.0 * -3 / 32767.0},
        {6, "7F", 20.0 * 127 / 32767.0},
        {13, "5595", 90.0 * 0x5595 / 2147483647.0},
        {8, "0093", 147},
        {39, "FFF6", -10},
    };
    expectNumbers(rows);
}

TEST(St0601Value, ImapbOfAnyLength)
{
    NumberRow const rows[] = {
        {113, "05F5", 2150}, {112, "1F4000", 125},    {112, "1F40000000000000", 125},
        {112, "1F", 124},    {117, "3E8000", 0, 0},  // zero is an exact code
        {117, "3E80", 0, 0}, {117, "3E800000", 0, 0}, {117, "7D", 992},
    };
    expectNumbers(rows);
    // -900 m is no multiple of a one-byte step (512 m): the offset keeps zero exact.
    NumberRow const coarse[] = {{113, "02", 0, 0}, {113, "03", 512, 0}};
    expectNumbers(coarse);
}

TEST(St0601Value, Integers)
{
    struct Row {
        std::uint32_t tag;
        char const* hex;
        std::int64_t expected;
    };
    Row const rows[] = {
        {2, "000459F4A6AA4AA8", 1224807209913000},
        {2, "7FFFFFFFFFFFFFFF", std::numeric_limits<std::int64_t>::max()},
        {34, "02", 2},
        {43, "03", 6},
        {44, "0F", 30},
        {44, "FF", 510},
        {47, "31", 0x31},
        {60, "AFD8", 45016},
        {61, "BA", 186},
        {62, "06CF", 1743},
        {63, "02", 2},
        {65, "11", 17},
        {65, "0011", 17},
        {72, "0002D5D024660180", 798039894000000},
        {72, "0000000000000000", 0},
        {77, "01", 1},
        {110, "4DAF", 19887},
        {110, "01", 1},
        {111, "0BB8", 3000},
        {123, "07", 7},
        {124, "03", 3},
        {125, "09", 9},
        {126, "05", 5},
        {131, "056F271B5E41B7", 1529588637122999},
        {133, "2710", 10000},
        {136, "1E", 30},
        {137, "012B8DC635", 5025678901},
        {137, "F3", -13},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE("tag " + std::to_string(row.tag) + " " + row.hex);
        SwJsonValue const value = decodeValue(*findRow(row.tag), fromHex(row.hex));
        ASSERT_TRUE(value.isInt());
        EXPECT_EQ(value.toInt(), row.expected);
    }
}

TEST(St0601Value, Texts)
{
    struct Row {
        std::uint32_t tag;
        char const* hex;
        char const* expected;
    };
    Row const rows[] = {
        {3, "4D495353494F4E3031", "MISSION01"},
        {4, "41462D313031", "AF-101"},
        {10, "4D51312D42", "MQ1-B"},
        {11, "454F", "EO"},
        {12, "47656F6465746963205747533834", "Geodetic WGS84"},
        {59, "544F502047554E", "TOP GUN"},
        {70, "415041434845", "APACHE"},
        {106, "424C5545", "BLUE"},
        {107, "424153453031", "BASE01"},
        {108, "484F4D45", "HOME"},
        {129, "41313233", "A123"},
        {135, "4672657175656E6379204D6F64756C6174696F6E", "Frequency Modulation"},
        {11, "41FF42",
         "A\xEF\xBF\xBD"
         "B"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.expected);
        SwJsonValue const value = decodeValue(*findRow(row.tag), fromHex(row.hex));
        ASSERT_TRUE(value.isString());
        EXPECT_EQ(value.stringRef(), row.expected);
    }
}

TEST(Utf8Text, Rows)
{
    struct Row {
        char const* name;
        std::string_view bytes;
        std::string_view expected;
    };
    Row const rows[] = {
        {"nothing", "", ""},
        {"plain", "abc", "abc"},
        {"two, three and four bytes", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x9A\x81", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x9A\x81"},
        {"lone tail", "\x80", "\xEF\xBF\xBD"},
        {"cut off", "a\xE2\x82", "a\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"overlong slash", "\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"overlong of three bytes", "\xE0\x80\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"surrogate", "\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"largest", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
        {"above the largest", "\xF4\x90\x80\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"never a first byte",
         "\xF5"
         "a",
         "\xEF\xBF\xBD"
         "a"},
        {"the bytes after a bad one count",
         "\xE2"
         "a\xC3\xA9",
         "\xEF\xBF\xBD"
         "a\xC3\xA9"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(sw_utf8::valid(row.bytes), row.expected);
    }
}

/// Half a code step of a number's row at `value`, with room for the rounding of doubles.
double halfStep(TableRow const& row)
{
    double const codes = std::pow(2.0, 8.0 * static_cast<double>(row.width));
    switch (row.rule) {
    case Rule::Range:
        return 0.5 * (row.high - row.low) / (codes - 1) * (1 + 1e-6);
    case Rule::Symmetric:
        return 0.5 * std::abs(row.high) / (codes / 2 - 1) * (1 + 1e-6);
    case Rule::Imapb:
        return 0.5 * std::pow(2.0, std::ceil(std::log2(row.high - row.low))) / (codes / 2);
    case Rule::TwiceCount:
        return 1.0;
    default:
        return 0.5;
    }
}

TEST(St0601Value, EveryNumberComesBackWithinHalfACodeStep)
{
    for (TableRow const& row : st0601Table()) {
        if (row.rule == Rule::Text) {
            continue;
        }
        SCOPED_TRACE(std::string(row.key));
        bool const isCount = row.rule == Rule::Count || row.rule == Rule::SignedCount || row.rule == Rule::TwiceCount;
        double const low = isCount ? 0.0 : std::min(row.low, row.high);
        double const high = isCount ? 255.0 : std::max(row.low, row.high);
        for (int i = 0; i <= 1000; ++i) {
            double const wanted = low + (high - low) * i / 1000.0;
            SwJsonValue const back = decodeValue(row, encodeValue(row, wanted));
            ASSERT_TRUE(isCount ? back.isInt() : back.isDouble()) << wanted;
            double const value = isCount ? static_cast<double>(back.toInt()) : back.toDouble();
            ASSERT_NEAR(value, wanted, halfStep(row)) << wanted;
        }
    }
}

TEST(St0601Value, NumbersOutOfRangeAreLimited)
{
    struct Row {
        char const* name;
        std::uint32_t tag;
        SwJsonValue value;
        char const* hex;
    };
    Row const rows[] = {
        {"heading too large", 5, 400.0, "FFFF"},
        {"heading negative", 5, -1.0, "0000"},
        {"pitch too large", 6, 21.0, "7FFF"},
        {"pitch too small, never the reserved code", 6, -1e300, "8001"},
        {"negated speed", 51, 200.0, "8001"},
        {"infinity", 21, std::numeric_limits<double>::infinity(), "FFFFFFFF"},
        {"latitude", 13, -91, "80000001"},
        {"count too large", 65, 256, "FF"},
        {"count negative", 65, -1, "00"},
        {"count as a double", 65, 16.6, "11"},
        {"twice a count", 43, 7, "03"},
        {"twice a count, too large", 43, 100000, "FF"},
        {"time stamp", 2, std::numeric_limits<std::int64_t>::max(), "7FFFFFFFFFFFFFFF"},
        {"time stamp as too large a double", 2, 1e30, "7FFFFFFFFFFFFFFF"},
        {"signed whole number", 39, -200.0, "80"},
        {"Imapb too large", 112, 361.0, "5A00"},
        {"Imapb too small", 113, -1000.0, "000000"},
        {"count of any length: one byte", 110, 255, "FF"},
        {"count of any length: two bytes", 110, 256, "0100"},
        {"count of any length: zero", 110, 0, "00"},
        {"signed count of any length: -13", 137, -13, "F3"},
        {"signed count of any length: 128 needs two bytes", 137, 128, "0080"},
        {"signed count of any length: smallest", 137, std::numeric_limits<std::int64_t>::min(), "8000000000000000"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(encodeValue(*findRow(row.tag), row.value), fromHex(row.hex));
    }
}

TEST(St0601Value, ImapbTakesTheLengthThatHoldsTheValue)
{
    EXPECT_EQ(encodeValue(*findRow(112), 125.0), fromHex("1F40"));
    EXPECT_EQ(encodeValue(*findRow(117), 0.0), fromHex("3E8000"));
    EXPECT_EQ(encodeValue(*findRow(112), 125.001953125), fromHex("1F4020")) << "a third byte is needed";
    double const awkward = 359.99999999999994;
    EXPECT_EQ(decodeValue(*findRow(112), encodeValue(*findRow(112), awkward)).toDouble(), awkward);
}

TEST(St0601Value, WhatCannotBeEncodedGivesNoBytes)
{
    TableRow const& number = *findRow(5);
    TableRow const& text = *findRow(3);
    EXPECT_TRUE(encodeValue(number, SwJsonValue()).empty());
    EXPECT_TRUE(encodeValue(number, "12").empty());
    EXPECT_TRUE(encodeValue(number, true).empty());
    EXPECT_TRUE(encodeValue(number, SwJsonObject()).empty());
    EXPECT_TRUE(encodeValue(number, std::numeric_limits<double>::quiet_NaN()).empty());
    EXPECT_TRUE(encodeValue(text, SwJsonValue()).empty());
    EXPECT_TRUE(encodeValue(text, "").empty());
    EXPECT_TRUE(encodeValue(text, SwJsonArray()).empty());
    // A tail number of digits only is a number once it has been through JSON text.
    EXPECT_EQ(encodeValue(text, 101), fromHex("313031"));
    EXPECT_EQ(encodeValue(text, "AF-101"), fromHex("41462D313031"));
}

TEST(St0601Table, FindsEveryRowAndNothingElse)
{
    for (TableRow const& row : st0601Table()) {
        EXPECT_EQ(findRow(row.tag), &row);
    }
    for (std::uint32_t const tag :
         {0U, 1U, 48U, 66U, 73U, 74U, 81U, 94U, 95U, 97U, 115U, 127U, 138U, 142U, 0xFFFFFFFFU}) {
        EXPECT_EQ(findRow(tag), nullptr) << tag;
    }
}

}  // namespace
}  // namespace telemetry
