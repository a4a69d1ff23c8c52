// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The host's picture: NV12 planes in memory with padded rows, and the render target through which a backend
// reaches them.
#include "Picture.h"
#include "imaging/imaging_access.h"
#include "imaging/picture_impl.h"

#include <cstring>
#include <limits>
#include <stdexcept>

namespace {

constexpr int kBlackLuma = 16;
constexpr int kGreyChroma = 128;

std::size_t paddedRow(std::size_t bytes)
{
    return (bytes + imaging::kRowAlignment - 1) / imaging::kRowAlignment * imaging::kRowAlignment;
}

class PictureTarget : public IRenderTarget {
public:
    explicit PictureTarget(MappedNV12 const& planes) : planes_(planes) {}
    MappedNV12 const& planes() const { return planes_; }

private:
    MappedNV12 planes_;
};

}  // namespace

namespace zelvo {

ZelvoPicture::ZelvoPicture(unsigned width, unsigned height) : impl_(std::make_unique<Impl>())
{
    impl_->width = width;
    impl_->height = height;
    if (width == 0 || height == 0) {
        return;
    }
    constexpr unsigned kLargest = std::numeric_limits<int>::max() / 2;
    if (width > kLargest || height > kLargest) {
        throw std::length_error("ZelvoPicture: size out of range");
    }
    std::size_t const yStride = paddedRow(width);
    std::size_t const uvStride = paddedRow((std::size_t{width} + 1) / 2 * 2);
    std::size_t const lumaBytes = yStride * height;
    std::size_t const chromaBytes = uvStride * ((height + 1) / 2);
    impl_->byteCount = lumaBytes + chromaBytes;
    impl_->bytes = imaging::takePictureMemory(impl_->byteCount);
    auto* const bytes = impl_->bytes.get();
    std::memset(bytes, kBlackLuma, lumaBytes);
    std::memset(bytes + lumaBytes, kGreyChroma, chromaBytes);
    impl_->planes = MappedNV12{bytes,
                               bytes + lumaBytes,
                               static_cast<int>(width),
                               static_cast<int>(height),
                               static_cast<int>(yStride),
                               static_cast<int>(uvStride)};
}

ZelvoPicture::~ZelvoPicture() = default;

unsigned ZelvoPicture::width() const
{
    return impl_->width;
}

unsigned ZelvoPicture::height() const
{
    return impl_->height;
}

std::unique_ptr<IRenderTarget> ZelvoPicture::makeRenderTarget()
{
    if (impl_->planes.y == nullptr) {
        return nullptr;
    }
    return std::make_unique<PictureTarget>(impl_->planes);
}

}  // namespace zelvo

namespace imaging {

std::shared_ptr<zelvo::ZelvoPicture> wrapPlanes(MappedNV12 const& planes)
{
    auto picture = std::make_shared<zelvo::ZelvoPicture>(0U, 0U);
    picture->impl().width = static_cast<unsigned>(planes.width);
    picture->impl().height = static_cast<unsigned>(planes.height);
    picture->impl().planes = planes;
    return picture;
}

MappedNV12 planesOf(zelvo::ZelvoPicture& picture)
{
    return picture.impl().planes;
}

MappedNV12 planesOf(IRenderTarget& target)
{
    auto const* const ours = dynamic_cast<PictureTarget const*>(&target);
    return ours ? ours->planes() : MappedNV12{};
}

}  // namespace imaging
