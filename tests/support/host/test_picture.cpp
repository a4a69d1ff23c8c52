// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Lays two planes into one block of memory with guard bytes before, between and behind them.
#include "test_picture.h"

#include <algorithm>

namespace imaging_test {

TestPicture::TestPicture(int width, int height, std::uint8_t luma, std::uint8_t chroma, int padding, int shift)
{
    auto const size = [](int value) { return static_cast<std::size_t>(value); };
    int const yStride = width + padding;
    int const uvStride = (width + 1) / 2 * 2 + padding;
    std::size_t const lumaBytes = size(yStride) * size(height);
    std::size_t const chromaBytes = size(uvStride) * size((height + 1) / 2);
    memory_.assign(lumaBytes + chromaBytes + 3 * kGuard + 128, kGuardByte);
    auto const address = reinterpret_cast<std::uintptr_t>(memory_.data() + kGuard);
    auto* const y = memory_.data() + kGuard + (64 - address % 64) % 64 + size(shift);
    auto* const uv = y + lumaBytes + kGuard;
    planes_ = {y, uv, width, height, yStride, uvStride};
    for (int row = 0; row < height; ++row) {
        std::fill_n(y + at(row, yStride), width, luma);
    }
    for (int row = 0; row < chromaHeight(); ++row) {
        std::fill_n(uv + at(row, uvStride), 2 * chromaWidth(), chroma);
    }
}

void TestPicture::fillWithNoise(std::uint32_t seed)
{
    std::minstd_rand random(seed);
    auto const fill = [&](std::uint8_t* plane, int width, int height, int stride) {
        for (int row = 0; row < height; ++row) {
            std::generate_n(plane + at(row, stride), width, [&] { return static_cast<std::uint8_t>(random() >> 8); });
        }
    };
    fill(planes_.y, planes_.width, planes_.height, planes_.yStride);
    fill(planes_.uv, 2 * chromaWidth(), chromaHeight(), planes_.uvStride);
}

bool TestPicture::guardsAreWhole() const
{
    auto rest = memory_;
    auto const cover = [&](std::uint8_t const* plane, int width, int height, int stride) {
        for (int row = 0; row < height; ++row) {
            std::fill_n(rest.begin() + (plane - memory_.data()) + at(row, stride), width, kGuardByte);
        }
    };
    cover(planes_.y, planes_.width, planes_.height, planes_.yStride);
    cover(planes_.uv, 2 * chromaWidth(), chromaHeight(), planes_.uvStride);
    return std::all_of(rest.begin(), rest.end(), [](std::uint8_t byte) { return byte == kGuardByte; });
}

std::vector<std::uint8_t> TestPicture::pixels() const
{
    std::vector<std::uint8_t> all;
    for (int row = 0; row < planes_.height; ++row) {
        auto const* const from = planes_.y + at(row, planes_.yStride);
        all.insert(all.end(), from, from + planes_.width);
    }
    for (int row = 0; row < chromaHeight(); ++row) {
        auto const* const from = planes_.uv + at(row, planes_.uvStride);
        all.insert(all.end(), from, from + std::ptrdiff_t{2} * chromaWidth());
    }
    return all;
}

}  // namespace imaging_test
