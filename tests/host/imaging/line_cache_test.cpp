// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What is remembered of lines: told apart by text, style and parity, and kept within bounds.
#include "imaging/line_cache.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using imaging::LineKey;
using imaging::LineStyle;
using imaging::PackedCoverage;
using imaging::SetLine;

constexpr LineStyle kStyle{20, 1};

SetLine measureOf(std::int64_t advance)
{
    return {advance, {}};
}

PackedCoverage coverageOf(std::size_t bytes)
{
    PackedCoverage coverage;
    coverage.luma.assign(bytes, 255);
    return coverage;
}

TEST(MeasureCache, KnowsALineByTextAndStyle)
{
    imaging::MeasureCache cache;
    EXPECT_EQ(cache.find({"Alt", kStyle}), nullptr);
    cache.keep({"Alt", kStyle}, measureOf(31));
    ASSERT_NE(cache.find({"Alt", kStyle}), nullptr);
    EXPECT_EQ(cache.find({"Alt", kStyle})->advance, 31);
    EXPECT_EQ(cache.find({"Al", kStyle}), nullptr);
    EXPECT_EQ(cache.find({"Alt", {21, 1}}), nullptr);
    EXPECT_EQ(cache.find({"Alt", {20, 2}}), nullptr);
}

TEST(MeasureCache, KnownLineTakesNoFurtherMemory)
{
    imaging::MeasureCache cache;
    cache.keep({"Alt", kStyle}, measureOf(31));
    auto const bytes = cache.bytes();
    ASSERT_GT(bytes, 0U);
    cache.keep({"Alt", kStyle}, measureOf(31));
    EXPECT_EQ(cache.bytes(), bytes);
    cache.clear();
    EXPECT_EQ(cache.bytes(), 0U);
    EXPECT_EQ(cache.find({"Alt", kStyle}), nullptr);
}

TEST(MeasureCache, StaysWithinItsBound)
{
    imaging::MeasureCache cache;
    for (std::size_t i = 0; i < 3000; ++i) {
        cache.keep({std::string(1000 + i, 'x'), kStyle}, measureOf(1));
        ASSERT_LE(cache.bytes(), imaging::kMeasureCacheBytes);
    }
    EXPECT_GT(cache.bytes(), imaging::kMeasureCacheBytes / 2);
}

TEST(CoverageCache, KnowsLinesByTextStyleAndParity)
{
    imaging::CoverageCache cache;
    EXPECT_EQ(cache.find({"Alt", kStyle, 2}), nullptr);
    cache.keep({"Alt", kStyle, 2}, coverageOf(7));
    ASSERT_NE(cache.find({"Alt", kStyle, 2}), nullptr);
    EXPECT_EQ(cache.find({"Alt", kStyle, 2})->luma.size(), 7U);
    EXPECT_EQ(cache.find({"Alt", kStyle, 0}), nullptr);
    EXPECT_EQ(cache.find({"Alt", kStyle, 3}), nullptr);
    EXPECT_EQ(cache.find({"Alt ", kStyle, 2}), nullptr);
    EXPECT_EQ(cache.find({"Alt", {20, 2}, 2}), nullptr);
}

TEST(CoverageCache, SecondQuestionIsAskedAgain)
{
    imaging::CoverageCache cache;
    EXPECT_FALSE(cache.isAskedForAgain({"Alt", kStyle, 0}));
    EXPECT_FALSE(cache.isAskedForAgain({"Alt", kStyle, 1}));
    EXPECT_FALSE(cache.isAskedForAgain({"Alt", {21, 1}, 0}));
    EXPECT_TRUE(cache.isAskedForAgain({"Alt", kStyle, 0}));
    EXPECT_TRUE(cache.isAskedForAgain({"Alt", kStyle, 0}));
    cache.clear();
    EXPECT_FALSE(cache.isAskedForAgain({"Alt", kStyle, 0}));
}

TEST(CoverageCache, LargerThanTheWholeBoundIsGivenButNotKept)
{
    imaging::CoverageCache cache;
    auto const& large = cache.keep({"large", kStyle}, coverageOf(imaging::kLineCacheBytes));
    EXPECT_EQ(large.luma.size(), imaging::kLineCacheBytes);
    EXPECT_EQ(cache.bytes(), 0U);
    EXPECT_EQ(cache.find({"large", kStyle}), nullptr);
}

TEST(CoverageCache, StaysWithinItsBoundAndForgetsTheOldest)
{
    imaging::CoverageCache cache;
    constexpr std::size_t kEach = std::size_t{1} << 20;
    for (int i = 0; i < 40; ++i) {
        cache.keep({std::to_string(i), kStyle}, coverageOf(kEach));
        ASSERT_LE(cache.bytes(), imaging::kLineCacheBytes);
    }
    EXPECT_EQ(cache.find({"0", kStyle}), nullptr);
    EXPECT_NE(cache.find({"39", kStyle}), nullptr);
    EXPECT_GT(cache.bytes(), imaging::kLineCacheBytes - 2 * kEach);
}

}  // namespace
