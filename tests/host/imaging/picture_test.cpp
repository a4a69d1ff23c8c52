// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Pictures and their pool.
#include "imaging/imaging_access.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Size {
    unsigned width, height;
    int yStride, uvStride;
};

class Pictures : public testing::TestWithParam<Size> {};

TEST_P(Pictures, HavePaddedAlignedBlackPlanes)
{
    auto const& size = GetParam();
    zelvo::ZelvoPicture picture(size.width, size.height);
    auto const planes = imaging::planesOf(picture);
    EXPECT_EQ(picture.width(), size.width);
    EXPECT_EQ(picture.height(), size.height);
    EXPECT_EQ(planes.width, static_cast<int>(size.width));
    EXPECT_EQ(planes.height, static_cast<int>(size.height));
    EXPECT_EQ(planes.yStride, size.yStride);
    EXPECT_EQ(planes.uvStride, size.uvStride);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(planes.y) % 64, 0U);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(planes.uv) % 64, 0U);
    for (int row = 0; row < planes.height; ++row) {
        EXPECT_EQ(planes.y[std::ptrdiff_t{row} * planes.yStride + planes.width - 1], 16);
        EXPECT_EQ(planes.uv[std::ptrdiff_t{row / 2} * planes.uvStride + ((planes.width - 1) | 1)], 128);
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, Pictures,
                         testing::Values(Size{1, 1, 64, 64}, Size{64, 2, 64, 64}, Size{65, 3, 128, 128},
                                         Size{1919, 5, 1920, 1920}, Size{1921, 7, 1984, 1984},
                                         // From two megabytes on pictures stand in huge pages.
                                         Size{1920, 1080, 1920, 1920}, Size{1999, 1001, 2048, 2048}),
                         [](auto const& row) {
                             return std::to_string(row.param.width) + "x" + std::to_string(row.param.height);
                         });

std::size_t addressSpacePages()
{
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages;
}

TEST(Picture, GivesLargeMemoryBackWhole)
{
    std::size_t const before = addressSpacePages();
    constexpr int kPictures = 200;
    for (int i = 0; i < kPictures; ++i) {
        zelvo::ZelvoPicture const picture(1920, 1080);
    }
    // Ordinary pages have at least 4096 bytes; one picture has three megabytes.
    EXPECT_LT(addressSpacePages(), before + std::size_t{kPictures} * 3000000 / 4096 / 10);
}

TEST(Picture, WithoutPixelsHasNoPlanesAndNoTarget)
{
    zelvo::ZelvoPicture picture(0, 5);
    EXPECT_EQ(picture.width(), 0U);
    EXPECT_EQ(picture.height(), 5U);
    EXPECT_EQ(imaging::planesOf(picture).y, nullptr);
    EXPECT_EQ(picture.makeRenderTarget(), nullptr);
}

TEST(Picture, TargetLeadsToItsPlanes)
{
    zelvo::ZelvoPicture picture(16, 8);
    auto const target = picture.makeRenderTarget();
    EXPECT_EQ(imaging::planesOf(*target).y, imaging::planesOf(picture).y);
    EXPECT_EQ(imaging::planesOf(*target).uvStride, 64);
}

TEST(Picture, ForeignTargetHasNoPlanes)
{
    struct Foreign : IRenderTarget {
    } foreign;
    EXPECT_EQ(imaging::planesOf(foreign).y, nullptr);
    EXPECT_EQ(imaging::planesOf(foreign).width, 0);
}

TEST(PicturePool, ClonesEveryByteIntoMemoryOfItsOwn)
{
    zelvo::ZelvoPicturePool pool;
    zelvo::ZelvoPicture source(33, 5);
    auto const from = imaging::planesOf(source);
    for (int i = 0; i < 5 * from.yStride; ++i) {
        from.y[i] = static_cast<std::uint8_t>(i);
    }
    from.uv[2] = 77;
    auto const copy = pool.clone(source);
    auto const to = imaging::planesOf(*copy);
    EXPECT_NE(to.y, from.y);
    EXPECT_EQ(std::memcmp(to.y, from.y, static_cast<std::size_t>(5 * from.yStride)), 0);
    EXPECT_EQ(to.uv[2], 77);
}

TEST(PicturePool, ClonesAPictureWithoutPixels)
{
    zelvo::ZelvoPicturePool pool;
    zelvo::ZelvoPicture const source(0, 0);
    auto const copy = pool.clone(source);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->width(), 0U);
}

TEST(PicturePool, HandsOutMemoryAgainForTheSameSizeOnly)
{
    zelvo::ZelvoPicturePool pool;
    auto first = imaging::takePicture(pool, 64, 4);
    auto const* const memory = imaging::planesOf(*first).y;
    first.reset();
    EXPECT_NE(imaging::planesOf(*imaging::takePicture(pool, 64, 6)).y, memory);
    auto const again = imaging::takePicture(pool, 64, 4);
    EXPECT_EQ(imaging::planesOf(*again).y, memory);
}

TEST(PicturePool, NeverHandsOutAPictureThatIsInUse)
{
    zelvo::ZelvoPicturePool pool;
    auto const first = imaging::takePicture(pool, 64, 4);
    auto const second = imaging::takePicture(pool, 64, 4);
    EXPECT_NE(first.get(), second.get());
}

TEST(PicturePool, PicturesOutliveIt)
{
    std::shared_ptr<zelvo::ZelvoPicture> picture;
    {
        zelvo::ZelvoPicturePool pool;
        picture = imaging::takePicture(pool, 64, 4);
    }
    imaging::planesOf(*picture).y[0] = 1;
    EXPECT_EQ(imaging::planesOf(*picture).y[0], 1);
}

TEST(Picture, WrapsPlanesThatAreSomebodyElses)
{
    std::vector<std::uint8_t> bytes(200, 7);
    MappedNV12 const planes{bytes.data(), bytes.data() + 100, 5, 3, 20, 30};
    {
        auto const picture = imaging::wrapPlanes(planes);
        EXPECT_EQ(picture->width(), 5U);
        EXPECT_EQ(picture->height(), 3U);
        auto const target = picture->makeRenderTarget();
        ASSERT_NE(target, nullptr);
        EXPECT_EQ(imaging::planesOf(*target).uv, planes.uv);
        EXPECT_EQ(imaging::planesOf(*picture).uvStride, 30);
    }
    EXPECT_EQ(bytes, std::vector<std::uint8_t>(200, 7));
}

TEST(PicturePool, ClonesPlanesThatAreSomebodyElses)
{
    std::vector<std::uint8_t> bytes(200, 7);
    bytes[2 * 20 + 4] = 1;        // the last of the luma
    bytes[100 + 1 * 30 + 5] = 2;  // the last of the chroma
    zelvo::ZelvoPicturePool pool;
    auto const copy = pool.clone(*imaging::wrapPlanes({bytes.data(), bytes.data() + 100, 5, 3, 20, 30}));
    MappedNV12 const planes = imaging::planesOf(*copy);
    EXPECT_EQ(planes.y[0], 7);
    EXPECT_EQ(planes.y[2 * planes.yStride + 4], 1);
    EXPECT_EQ(planes.uv[0], 7);
    EXPECT_EQ(planes.uv[planes.uvStride + 5], 2);
}

TEST(PicturePool, ServesSeveralThreads)
{
    zelvo::ZelvoPicturePool pool;
    zelvo::ZelvoPicture const source(320, 20);
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                auto const copy = pool.clone(source);
                imaging::planesOf(*copy).y[0] = static_cast<std::uint8_t>(i);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(pool.clone(source)->width(), 320U);
}

}  // namespace
