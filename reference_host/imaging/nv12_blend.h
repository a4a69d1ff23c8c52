// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The pixel loops: blending one colour into NV12 planes by coverage, and the arithmetic on coverage itself.
// Each loop exists twice with the same result to the bit: here chosen at run time for the processor's vector
// unit, and in `plain` as the few lines that define it.
//
// Coverage is a byte, 0 nothing to 255 all of the pixel. Ink of coverage c moves a level by inkWeight(c) / 32768 of
// the way, a box by weight / 256; both are rounded to the nearest level, and both leave it at the one end and
// replace it at the other. Two scales, because each is the faster one for its loop.
#pragma once

#include <cstddef>
#include <cstdint>

namespace imaging {

/// 0 to 32767, which is near enough to 32768 to replace any level.
constexpr int inkWeight(std::uint8_t coverage)
{
    return coverage * 257 >> 1;
}

constexpr std::uint8_t blendInk(std::uint8_t under, std::uint8_t over, std::uint8_t coverage)
{
    return static_cast<std::uint8_t>(under + (((over - under) * inkWeight(coverage) + (1 << 14)) >> 15));
}

inline constexpr int kFullWeight = 256;

/// `weight` is 0 to kFullWeight.
constexpr std::uint8_t blendLevel(std::uint8_t under, std::uint8_t over, int weight)
{
    return static_cast<std::uint8_t>((under * (kFullWeight - weight) + over * weight + kFullWeight / 2) >> 8);
}

/// The weight of a pixel that a box of `weight` covers in part.
constexpr int partialWeight(int coverage, int weight)
{
    return (coverage * weight + 127) / 255;
}

/// Mean of a 2x2 block's coverage, halves up.
constexpr std::uint8_t meanOfFour(int a, int b, int c, int d)
{
    return static_cast<std::uint8_t>((a + b + c + d + 2) >> 2);
}

/// Consecutive bytes of one row, each with coverage of its own. In chroma both bytes of a pair have the same, and
/// columns and lengths are even.
struct Span {
    std::int32_t row = 0;      ///< relative to the place where the coverage is drawn
    std::int32_t column = 0;   ///< likewise, in bytes
    std::int32_t length = 0;   ///< in bytes, at least 1
    std::uint32_t offset = 0;  ///< of the first coverage byte
};

/// One plane and the place in it, in bytes from its start, that a span's row 0 and column 0 mean. The place
/// may lie outside the plane as long as every span lies inside.
struct PlanePlace {
    std::uint8_t* plane = nullptr;
    std::ptrdiff_t origin = 0;
    std::ptrdiff_t stride = 0;
};

/// Blends `level` into luma by the spans' coverage.
void blendLumaSpans(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                    std::uint8_t level);
/// Blends a colour into interleaved chroma.
void blendChromaSpans(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                      std::uint8_t cb, std::uint8_t cr);
/// Blends `level` into a rectangle of luma, every pixel by the same weight.
void blendLumaRect(std::uint8_t* first, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t level,
                   int weight);
/// Blends a colour into a rectangle of interleaved chroma, `pairs` wide.
void blendChromaRect(std::uint8_t* first, std::ptrdiff_t stride, std::size_t pairs, std::size_t rows, std::uint8_t cb,
                     std::uint8_t cr, int weight);
/// Lays one coverage picture over another: each byte of `to` becomes the larger of the two.
void layCoverage(std::uint8_t* to, std::ptrdiff_t toStride, std::uint8_t const* from, std::ptrdiff_t fromStride,
                 std::size_t width, std::size_t rows);
/// Chroma coverage of two luma rows: the mean of each two by two pixels, twice. All have `2 * pairs` bytes.
void halveCoverage(std::uint8_t const* upper, std::uint8_t const* lower, std::size_t pairs, std::uint8_t* to);

namespace plain {

void blendLumaSpans(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                    std::uint8_t level);
void blendChromaSpans(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                      std::uint8_t cb, std::uint8_t cr);
void blendLumaRect(std::uint8_t* first, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t level,
                   int weight);
void blendChromaRect(std::uint8_t* first, std::ptrdiff_t stride, std::size_t pairs, std::size_t rows, std::uint8_t cb,
                     std::uint8_t cr, int weight);
void layCoverage(std::uint8_t* to, std::ptrdiff_t toStride, std::uint8_t const* from, std::ptrdiff_t fromStride,
                 std::size_t width, std::size_t rows);
void halveCoverage(std::uint8_t const* upper, std::uint8_t const* lower, std::size_t pairs, std::uint8_t* to);

}  // namespace plain
}  // namespace imaging
