// See test_picture.h.
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
    for (auto& byte : memory_) {
        if (isPixel(&byte)) {
            byte = static_cast<std::uint8_t>(random() >> 8);
        }
    }
}

bool TestPicture::isPixel(std::uint8_t const* byte) const
{
    auto const inPlane = [&](std::uint8_t const* plane, int width, int height, int stride) {
        std::ptrdiff_t const offset = byte - plane;
        return offset >= 0 && offset < at(height, stride) && offset % stride < width;
    };
    return inPlane(planes_.y, planes_.width, planes_.height, planes_.yStride) ||
           inPlane(planes_.uv, 2 * chromaWidth(), chromaHeight(), planes_.uvStride);
}

bool TestPicture::guardsAreWhole() const
{
    return std::all_of(memory_.begin(), memory_.end(),
                       [&](std::uint8_t const& byte) { return byte == kGuardByte || isPixel(&byte); });
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
        all.insert(all.end(), from, from + 2 * chromaWidth());
    }
    return all;
}

}  // namespace imaging_test
