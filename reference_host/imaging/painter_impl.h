// What stands behind the opaque painter.
#pragma once

#include "Painter.h"
#include "imaging/imaging_access.h"
#include "imaging/rounded_box.h"
#include "imaging/text_renderer.h"

struct Painter::Impl {
    Pen pen;
    imaging::ColorMatrix matrix = imaging::ColorMatrix::Auto;
    bool fullRange = false;
    std::function<void(imaging::DrawnText const&)> observer;
    imaging::TextRenderer texts;
    imaging::BoxRenderer boxes;

    imaging::YCbCr colorOn(MappedNV12 const& target) const;
};
