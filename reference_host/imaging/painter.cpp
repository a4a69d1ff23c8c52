// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The painter as plugins and hosts see it: the pen, checks on what comes in, and the way to the renderers.
#include "Painter.h"

#include "imaging/color.h"
#include "imaging/imaging_access.h"
#include "imaging/painter_impl.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

/// The target with its strides filled in; nothing when it cannot be drawn on.
std::optional<MappedNV12> drawable(MappedNV12 target)
{
    if (target.y == nullptr || target.uv == nullptr || target.width < 1 || target.height < 1) {
        return std::nullopt;
    }
    if (target.yStride == 0) {
        target.yStride = target.width;
    }
    if (target.uvStride == 0) {
        target.uvStride = (target.width - 1) / 2 * 2 + 2;
    }
    return target;
}

}  // namespace

imaging::YCbCr Painter::Impl::colorOn(MappedNV12 const& target) const
{
    return imaging::toYCbCr(pen.r, pen.g, pen.b, matrix, fullRange, target.height);
}

imaging::YCbCr Painter::Impl::rimColorOn(MappedNV12 const& target) const
{
    return imaging::toYCbCr(0, 0, 0, matrix, fullRange, target.height);
}

Painter::Painter() : impl_(std::make_unique<Impl>()) {}

Painter::~Painter() = default;

Pen Painter::getPen() const
{
    return impl_->pen;
}

void Painter::setPen(Pen const& pen)
{
    impl_->pen = pen;
}

void Painter::setPenThickness(unsigned char thickness)
{
    impl_->pen.thickness = thickness;
}

void Painter::setPenRGB(unsigned char r, unsigned char g, unsigned char b)
{
    impl_->pen.r = r;
    impl_->pen.g = g;
    impl_->pen.b = b;
}

bool Painter::measureTextBBox(std::string const& text, int x, int y, int pixelSize, int /*reserved1*/,
                              int /*reserved2*/, int* left, int* top, int* right, int* bottom) const
{
    auto const box = impl_->texts.measure(text, x, y, impl_->rimStyle(pixelSize));
    if (!box) {
        return false;
    }
    *left = imaging::saturateToInt(box->left);
    *top = imaging::saturateToInt(box->top);
    *right = imaging::saturateToInt(box->right);
    *bottom = imaging::saturateToInt(box->bottom);
    return true;
}

void Painter::drawBackgroundMapped(MappedNV12 const& target, int left, int top, int right, int bottom, float opacity,
                                   float cornerRadius, float /*margin*/)
{
    auto const planes = drawable(target);
    if (!planes) {
        return;
    }
    if (impl_->observer) {
        impl_->observed.left = left;
        impl_->observed.top = top;
        impl_->observed.right = right;
        impl_->observed.bottom = bottom;
        if (impl_->recorded == imaging::RecordedTexts::Left) {
            return;
        }
    }
    impl_->boxes.draw(*planes, {left, top, right, bottom}, opacity, cornerRadius, impl_->colorOn(*planes));
}

void Painter::drawTextMapped(MappedNV12 const& target, int x, int y, std::string const& text, TextStyle const& style)
{
    if (impl_->observer) {
        imaging::DrawnText& observed = impl_->observed;
        observed.text = text;
        observed.x = x;
        observed.y = y;
        observed.pixelSize = style.pixelSize;
        observed.pen = impl_->pen;
        impl_->observer(observed);
        if (impl_->recorded == imaging::RecordedTexts::Left) {
            return;
        }
    }
    auto const planes = drawable(target);
    if (!planes) {
        return;
    }
    if (impl_->outline > 0) {
        impl_->texts.draw(*planes, text, x, y, impl_->rimStyle(style.pixelSize), impl_->rimColorOn(*planes));
    }
    impl_->texts.draw(*planes, text, x, y, impl_->textStyle(style.pixelSize), impl_->colorOn(*planes));
}

namespace imaging {

void setColor(Painter& painter, ColorMatrix matrix, bool fullRange)
{
    painter.impl().matrix = matrix;
    painter.impl().fullRange = fullRange;
}

void setOutline(Painter& painter, int pixels)
{
    painter.impl().outline = std::clamp(pixels, 0, kLargestOutline);
}

void recordTexts(Painter& painter, std::function<void(DrawnText const&)> observer, RecordedTexts texts)
{
    painter.impl().observer = std::move(observer);
    painter.impl().recorded = texts;
}

void openFonts(Painter& painter, std::string const& family)
{
    painter.impl().texts.openFonts(family);
}

}  // namespace imaging
