// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Any text at any size, pen thickness and anchor on any small picture: no byte outside the planes is touched, no
// pixel outside the measured box changes, and drawing again looks the same.
//
// Input: width, height and size of two bytes each, thickness and the width of a dark rim of one, anchor x and y of four
// bytes each (all little endian), one byte each for opacity and radius of a box, then the text. What makes a run slow
// is bounded without leaving a size out: pictures are small, large glyphs are rare and few.
#include "Painter.h"
#include "imaging/imaging_access.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr int kLargestSide = 96;
/// Larger glyphs and wider pens only take longer.
constexpr int kLargestSize = 512;
constexpr int kLargestThickness = 32;
constexpr int kLargestOutline = 8;
/// Neither the pen's luma nor that of the dark rim.
constexpr std::uint8_t kGround = 60;
/// Three out of four sizes are at most this.
constexpr int kOrdinarySize = 48;
constexpr int kLongestText = 120;

int sizeOf(std::uint32_t number)
{
    constexpr std::uint32_t kFirstLarge = 0xC000;
    return static_cast<int>(number < kFirstLarge ? number % (kOrdinarySize + 1) : number % (kLargestSize + 1));
}

/// Bytes of text that take about as long at this size and thickness as a long text at a small size; at least one
/// character. A glyph costs its area, a stroke also the area around its outline, which has some tens of segments.
int longestText(int size, int thickness)
{
    constexpr int kWork = 200000;
    constexpr int kLongestCharacter = 4;
    int const area = (size + thickness) * (size + thickness);
    int const around = 2 * thickness + size / 5;
    int const cost = thickness > 1 ? 8 * area + 50 * around * around : area;
    return std::min(kLongestCharacter + kWork / (cost + 1), kLongestText);
}

void require(bool condition, char const* what)
{
    if (!condition) {
        std::cerr << "violated: " << what << std::endl;
        std::abort();
    }
}

class Input {
public:
    Input(std::uint8_t const* data, std::size_t size) : data_(data), size_(size) {}

    std::uint32_t number(std::size_t bytes)
    {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < bytes && size_ > 0; ++i, ++data_, --size_) {
            value |= std::uint32_t{*data_} << (8 * i);
        }
        return value;
    }
    std::string rest(int longest) const
    {
        return {reinterpret_cast<char const*>(data_), std::min(size_, static_cast<std::size_t>(longest))};
    }

private:
    std::uint8_t const* data_;
    std::size_t size_;
};

/// Planes that end where their last pixel does.
struct Planes {
    std::vector<std::uint8_t> y;
    std::vector<std::uint8_t> uv;
    int width;
    int height;

    Planes(int w, int h)
        : y(static_cast<std::size_t>(w * h), kGround)
        , uv(static_cast<std::size_t>((w + 1) / 2 * 2 * ((h + 1) / 2)), 128)
        , width(w)
        , height(h)
    {
    }
    MappedNV12 mapped() { return {y.data(), uv.data(), width, height, 0, 0}; }
    friend bool operator==(Planes const& a, Planes const& b) { return a.y == b.y && a.uv == b.uv; }
};

}  // namespace

/// Reading its configuration, fontconfig loses 288 bytes once.
extern "C" char const* __lsan_default_suppressions()  // NOLINT(bugprone-reserved-identifier): the sanitizer's name
{
    return "leak:libfontconfig";
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static Painter painter;
    Input input(data, size);
    int const width = 1 + static_cast<int>(input.number(2) % kLargestSide);
    int const height = 1 + static_cast<int>(input.number(2) % kLargestSide);
    int const pixelSize = sizeOf(input.number(2));
    std::uint32_t const pen = input.number(2);
    int const thickness = static_cast<int>((pen & 0xFFU) % (kLargestThickness + 1));
    int const outline = static_cast<int>((pen >> 8U) % (kLargestOutline + 1));
    auto const x = static_cast<std::int32_t>(input.number(4));
    auto const y = static_cast<std::int32_t>(input.number(4));
    float const opacity = static_cast<float>(input.number(1)) / 200.0F;
    float const radius = static_cast<float>(input.number(1)) / 3.0F;
    std::string const text = input.rest(longestText(pixelSize, thickness + 2 * outline));

    painter.setPen({255, 40, 200, static_cast<std::uint8_t>(thickness)});
    imaging::setOutline(painter, outline);
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    bool const isMeasured = painter.measureTextBBox(text, x, y, pixelSize, 0, 0, &left, &top, &right, &bottom);
    require(isMeasured == (!text.empty() && pixelSize > 0), "a text with a size can be measured");
    require(left <= right && top <= bottom, "a box is not turned around");

    Planes const untouched(width, height);
    Planes first(width, height);
    painter.drawTextMapped(first.mapped(), x, y, text, {pixelSize, 0, 0});
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            bool const inside = isMeasured && column >= left && column < right && row >= top && row < bottom;
            bool const isInked = first.y.data()[std::ptrdiff_t{row} * width + column] != kGround;
            require(inside || !isInked, "no ink outside the measured box");
        }
    }
    for (int round = 0; round < 2; ++round) {
        Planes again(width, height);
        painter.drawTextMapped(again.mapped(), x, y, text, {pixelSize, 0, 0});
        require(again == first, "drawing again looks the same");
    }
    painter.drawBackgroundMapped(first.mapped(), left, top, right, bottom, opacity, radius, 0);
    painter.drawBackgroundMapped(first.mapped(), x, y, x / 2, y / 2, opacity, radius, 0);
    return 0;
}
