// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The vector form of each pixel loop against its plain form: every width, every alignment, every instruction set
// of this processor, with guard bytes around both planes.
#include "imaging/nv12_blend.h"

#include "test_picture.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

using imaging::PlanePlace;
using imaging::Span;
using imaging_test::TestPicture;

constexpr int kWidest = 130;
constexpr std::size_t kCoverageBytes = 260;  // two of the widest
constexpr int kRows = 3;

std::vector<std::uint8_t> randomCoverage(std::size_t size, std::uint32_t seed)
{
    std::minstd_rand random(seed);
    std::vector<std::uint8_t> coverage(size);
    for (auto& c : coverage) {
        // Nothing and everything are as frequent as anything between.
        auto const kind = random() % 3;
        c = kind == 0 ? std::uint8_t{0} : kind == 1 ? std::uint8_t{255} : static_cast<std::uint8_t>(random() >> 8);
    }
    return coverage;
}

/// Runs `both(picture, plainForm)` on two equal pictures and expects equal results and whole guards.
void expectSame(int width, int shift, std::function<void(TestPicture&, bool)> const& run)
{
    TestPicture expected(2 * kWidest, kRows, 0, 0, 7, shift);
    expected.fillWithNoise(static_cast<std::uint32_t>(width * 131 + shift));
    TestPicture actual(2 * kWidest, kRows, 0, 0, 7, shift);
    actual.fillWithNoise(static_cast<std::uint32_t>(width * 131 + shift));
    run(expected, true);
    run(actual, false);
    ASSERT_EQ(expected.pixels(), actual.pixels()) << "width " << width << ", shift " << shift;
    ASSERT_TRUE(expected.guardsAreWhole() && actual.guardsAreWhole()) << "width " << width << ", shift " << shift;
}

/// All widths and alignments, once for each instruction set.
class EveryVectorForm : public testing::TestWithParam<std::int64_t> {
protected:
    void SetUp() override
    {
        hwy::SetSupportedTargetsForTest(GetParam());
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    }
    void TearDown() override
    {
        hwy::SetSupportedTargetsForTest(0);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    }

    template <class Run>
    void forAll(Run const& run)
    {
        for (int width = 1; width <= kWidest; ++width) {
            for (int shift = 0; shift < 64; ++shift) {
                expectSame(width, shift, [&](TestPicture& picture, bool plainForm) { run(picture, plainForm, width); });
                if (HasFatalFailure()) {
                    return;
                }
            }
        }
    }
};

std::vector<Span> spansOf(int length)
{
    return {{0, 0, length, 0}, {1, 1, length, 5}, {2, 2, length, 11}};
}

TEST_P(EveryVectorForm, LumaSpans)
{
    auto const coverage = randomCoverage(kCoverageBytes, 1);
    forAll([&](TestPicture& picture, bool plainForm, int width) {
        auto const spans = spansOf(width);
        PlanePlace const place{picture.planes().y, 0, picture.planes().yStride};
        auto const run = plainForm ? imaging::plain::blendLumaSpans : imaging::blendLumaSpans;
        run(place, spans.data(), spans.size(), coverage.data(), 200);
    });
}

TEST_P(EveryVectorForm, ChromaSpans)
{
    // Each byte twice, the first pair at an odd address.
    auto const pairs = randomCoverage(kCoverageBytes, 2);
    std::vector<std::uint8_t> coverage{0};
    for (auto const c : pairs) {
        coverage.insert(coverage.end(), {c, c});
    }
    forAll([&](TestPicture& picture, bool plainForm, int width) {
        // The second row begins one pair in, and ends with the row at the latest.
        std::vector<Span> const spans{{0, 0, 2 * width, 0}, {1, 2, 2 * std::min(width, kWidest - 1), 6}};
        PlanePlace const place{picture.planes().uv, 0, picture.planes().uvStride};
        auto const run = plainForm ? imaging::plain::blendChromaSpans : imaging::blendChromaSpans;
        run(place, spans.data(), spans.size(), coverage.data() + 1, 240, 16);
    });
}

TEST_P(EveryVectorForm, SpansPlacedByANegativeOrigin)
{
    auto const coverage = randomCoverage(kCoverageBytes, 3);
    forAll([&](TestPicture& picture, bool plainForm, int width) {
        Span const span{1, 100, width, 0};
        PlanePlace const place{picture.planes().y, -100 - std::ptrdiff_t{picture.planes().yStride},
                               picture.planes().yStride};
        (plainForm ? imaging::plain::blendLumaSpans : imaging::blendLumaSpans)(place, &span, 1, coverage.data(), 0);
    });
}

TEST_P(EveryVectorForm, LumaRect)
{
    forAll([&](TestPicture& picture, bool plainForm, int width) {
        auto const run = plainForm ? imaging::plain::blendLumaRect : imaging::blendLumaRect;
        int const weight = (width * 37) % 257;
        run(picture.planes().y + 1, picture.planes().yStride, static_cast<std::size_t>(width), kRows, 90, weight);
    });
}

TEST_P(EveryVectorForm, ChromaRect)
{
    forAll([&](TestPicture& picture, bool plainForm, int width) {
        auto const run = plainForm ? imaging::plain::blendChromaRect : imaging::blendChromaRect;
        int const weight = (width * 91) % 257;
        run(picture.planes().uv, picture.planes().uvStride, static_cast<std::size_t>(width), 2, 17, 222, weight);
    });
}

TEST_P(EveryVectorForm, RectsOfOneHalf)
{
    forAll([&](TestPicture& picture, bool plainForm, int width) {
        auto const& planes = picture.planes();
        auto const pixels = static_cast<std::size_t>(width);
        auto const luma = plainForm ? imaging::plain::blendLumaRect : imaging::blendLumaRect;
        luma(planes.y + 1, planes.yStride, pixels, kRows, 91, imaging::kFullWeight / 2);
        auto const chroma = plainForm ? imaging::plain::blendChromaRect : imaging::blendChromaRect;
        chroma(planes.uv, planes.uvStride, pixels, 2, 17, 222, imaging::kFullWeight / 2);
    });
}

TEST_P(EveryVectorForm, LayCoverage)
{
    auto const over = randomCoverage(kCoverageBytes * kRows, 4);
    forAll([&](TestPicture& picture, bool plainForm, int width) {
        auto const run = plainForm ? imaging::plain::layCoverage : imaging::layCoverage;
        run(picture.planes().y, picture.planes().yStride, over.data(), 2 * kWidest - 3, static_cast<std::size_t>(width),
            kRows);
    });
}

TEST_P(EveryVectorForm, HalveCoverage)
{
    auto const rows = randomCoverage(2 * kCoverageBytes + 64, 5);
    forAll([&](TestPicture& picture, bool plainForm, int width) {
        auto const run = plainForm ? imaging::plain::halveCoverage : imaging::halveCoverage;
        auto const* const upper = rows.data() + width % 64;
        run(upper, upper + kCoverageBytes, static_cast<std::size_t>(width), picture.planes().y);
    });
}

std::vector<std::int64_t> vectorForms()
{
    std::vector<std::int64_t> forms;
    for (std::int64_t left = hwy::SupportedTargets(); left != 0; left &= left - 1) {
        forms.push_back(left & -left);
    }
    return forms;
}

INSTANTIATE_TEST_SUITE_P(OfThisProcessor, EveryVectorForm, testing::ValuesIn(vectorForms()),
                         [](auto const& row) { return std::string(hwy::TargetName(row.param)); });

TEST(BlendLevel, EndsAndMiddleAreExact)
{
    for (int under = 0; under < 256; ++under) {
        for (int over = 0; over < 256; ++over) {
            auto const u = static_cast<std::uint8_t>(under);
            auto const o = static_cast<std::uint8_t>(over);
            ASSERT_EQ(imaging::blendLevel(u, o, 0), under);
            ASSERT_EQ(imaging::blendLevel(u, o, 256), over);
            ASSERT_EQ(imaging::blendLevel(u, o, 128), (under + over + 1) / 2);
        }
    }
}

TEST(BlendInk, IsTheNearestLevelForEveryCoverage)
{
    for (int under = 0; under < 256; ++under) {
        for (int over = 0; over < 256; ++over) {
            for (int coverage = 0; coverage < 256; ++coverage) {
                double const exact = under + (over - under) * coverage / 255.0;
                int const level = imaging::blendInk(static_cast<std::uint8_t>(under), static_cast<std::uint8_t>(over),
                                                    static_cast<std::uint8_t>(coverage));
                // Beyond half a level by no more than the weight's own rounding.
                ASSERT_LE(std::abs(level - exact), 0.51) << under << ", " << over << ", " << coverage;
            }
        }
    }
}

TEST(BlendInk, WhiteOnBlackIsTheCoverage)
{
    for (int coverage = 0; coverage < 256; ++coverage) {
        EXPECT_EQ(imaging::blendInk(0, 255, static_cast<std::uint8_t>(coverage)), coverage);
        EXPECT_EQ(imaging::blendInk(255, 0, static_cast<std::uint8_t>(coverage)), 255 - coverage);
    }
}

TEST(PartialWeight, FullCoverageKeepsTheWeight)
{
    for (int weight = 0; weight <= 256; ++weight) {
        EXPECT_EQ(imaging::partialWeight(255, weight), weight);
        EXPECT_EQ(imaging::partialWeight(0, weight), 0);
    }
}

TEST(BlendLevel, MeanOfFourRoundsHalvesUp)
{
    EXPECT_EQ(imaging::meanOfFour(255, 255, 255, 255), 255);
    EXPECT_EQ(imaging::meanOfFour(1, 0, 0, 0), 0);
    EXPECT_EQ(imaging::meanOfFour(1, 1, 0, 0), 1);
    EXPECT_EQ(imaging::meanOfFour(255, 255, 0, 0), 128);
}

}  // namespace
