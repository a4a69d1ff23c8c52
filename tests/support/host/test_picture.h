// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// An NV12 picture for tests: any size, any row padding, planes at any address, guard bytes all around.
#pragma once

#include "Picture.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace imaging_test {

class TestPicture {
public:
    static constexpr std::size_t kGuard = 192;
    static constexpr std::uint8_t kGuardByte = 0xA5;

    /// Planes of `luma` and `chroma` levels. Rows are `padding` bytes longer than needed, and the planes begin
    /// `shift` bytes after an address that is a multiple of 64.
    TestPicture(int width, int height, std::uint8_t luma = 0, std::uint8_t chroma = 128, int padding = 0,
                int shift = 0);
    TestPicture(TestPicture const&) = delete;
    TestPicture& operator=(TestPicture const&) = delete;

    MappedNV12 const& planes() const { return planes_; }
    std::uint8_t y(int x, int row) const { return planes_.y[at(row, planes_.yStride) + x]; }
    std::uint8_t cb(int pair, int row) const
    {
        return planes_.uv[at(row, planes_.uvStride) + std::ptrdiff_t{2} * pair];
    }
    std::uint8_t cr(int pair, int row) const
    {
        return planes_.uv[at(row, planes_.uvStride) + std::ptrdiff_t{2} * pair + 1];
    }
    int chromaWidth() const { return (planes_.width + 1) / 2; }
    int chromaHeight() const { return (planes_.height + 1) / 2; }

    void fillWithNoise(std::uint32_t seed);
    /// True when no byte outside the planes' pixels was changed: guards and row padding.
    bool guardsAreWhole() const;
    /// All pixels of both planes, without padding.
    std::vector<std::uint8_t> pixels() const;

private:
    static std::ptrdiff_t at(int row, int stride) { return std::ptrdiff_t{row} * stride; }

    std::vector<std::uint8_t> memory_;
    MappedNV12 planes_;
};

}  // namespace imaging_test
