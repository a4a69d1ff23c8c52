// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Painter, picture and pool that do nothing. Not inlined into the plugin, as little as the real ones are.
#include "null_imaging.h"

#include "Painter.h"

struct Painter::Impl {};
Painter::Painter() = default;
Painter::~Painter() = default;

Pen Painter::getPen() const
{
    return {};
}

void Painter::setPen(Pen const& /*pen*/) {}

void Painter::setPenThickness(unsigned char /*thickness*/) {}

void Painter::setPenRGB(unsigned char /*r*/, unsigned char /*g*/, unsigned char /*b*/) {}

bool Painter::measureTextBBox(std::string const& /*text*/, int x, int y, int pixelSize, int /*reserved1*/,
                              int /*reserved2*/, int* left, int* top, int* right, int* bottom) const
{
    *left = x;
    *top = y;
    *right = x + pixelSize;
    *bottom = y + pixelSize;
    return true;
}

void Painter::drawBackgroundMapped(MappedNV12 const& /*target*/, int /*left*/, int /*top*/, int /*right*/,
                                   int /*bottom*/, float /*opacity*/, float /*cornerRadius*/, float /*margin*/)
{
}

void Painter::drawTextMapped(MappedNV12 const& /*target*/, int /*x*/, int /*y*/, std::string const& /*text*/,
                             TextStyle const& /*style*/)
{
}

namespace zelvo {

struct ZelvoPicture::Impl {
    unsigned width;
    unsigned height;
};

ZelvoPicture::ZelvoPicture(unsigned width, unsigned height) : impl_(new Impl{width, height}) {}
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
    return std::make_unique<IRenderTarget>();
}

struct ZelvoPicturePool::Impl {};
ZelvoPicturePool::ZelvoPicturePool() = default;
ZelvoPicturePool::~ZelvoPicturePool() = default;

std::shared_ptr<ZelvoPicture> ZelvoPicturePool::clone(ZelvoPicture const& source)
{
    return std::make_shared<ZelvoPicture>(source.width(), source.height());
}

}  // namespace zelvo

namespace null_imaging {

IRenderBackend::Guard Backend::map(IRenderTarget& /*target*/)
{
    static std::uint8_t plane = 0;
    return {MappedNV12{&plane, &plane, 1920, 1080, 0, 0}, [] {}};
}

}  // namespace null_imaging
