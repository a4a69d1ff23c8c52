// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Our painter as the render plugin uses it, and the lower limit that follows from its boxes.
#include "painter_scene.h"

#include "Painter.h"
#include "imaging/imaging_access.h"

#include <array>

namespace painter_bench {
namespace {

struct Box {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

Box measuredBox(Painter const& painter, Scene const& scene, int block, std::string const& text)
{
    Box box;
    painter.measureTextBBox(text, scene.left(block), scene.top(block), scene.textSize(), 0, 0, &box.left, &box.top,
                            &box.right, &box.bottom);
    int const margin = scene.margin();
    return {box.left - margin, box.top - margin, box.right + margin, box.bottom + margin};
}

class Ours : public Drawer {
public:
    explicit Ours(Scene const& scene) : scene_(scene)
    {
        imaging::openFonts(painter_);
        imaging::setOutline(painter_, scene.outline);
    }

    void draw(MappedNV12 const& planes, Texts const& texts) override
    {
        for (int block = 0; block < kBlocks; ++block) {
            auto const& text = texts[static_cast<std::size_t>(block)];
            painter_.setPenThickness(1);
            auto const box = measuredBox(painter_, scene_, block, text);
            painter_.setPenRGB(0, 0, 0);
            painter_.drawBackgroundMapped(planes, box.left, box.top, box.right, box.bottom, 0.5F, 4.0F,
                                          static_cast<float>(scene_.margin()));
            painter_.setPenRGB(255, 255, 255);
            painter_.drawTextMapped(planes, scene_.left(block), scene_.top(block), text, {scene_.textSize(), 0, 0});
        }
    }

private:
    Scene scene_;
    Painter painter_;
};

/// The compiler makes this a loop over vectors; which ones is chosen at run time.
__attribute__((target_clones("arch=skylake-avx512", "avx2", "default"), optimize("O3"))) void
touch(std::uint8_t* first, std::ptrdiff_t stride, int bytes, int rows)
{
    for (int row = 0; row < rows; ++row) {
        for (int i = 0; i < bytes; ++i) {
            first[i] = static_cast<std::uint8_t>(first[i] ^ 0x55);
        }
        first += stride;
    }
}

class LowerLimit : public Drawer {
public:
    explicit LowerLimit(Scene const& scene)
    {
        Painter painter;
        imaging::setOutline(painter, scene.outline);
        auto const texts = textsOf(scene, 0);
        for (int block = 0; block < kBlocks; ++block) {
            auto const i = static_cast<std::size_t>(block);
            boxes_[i] = measuredBox(painter, scene, block, texts[i]);
        }
    }

    void draw(MappedNV12 const& planes, Texts const& /*texts*/) override
    {
        for (auto const& box : boxes_) {
            touch(planes.y + std::ptrdiff_t{box.top} * planes.yStride + box.left, planes.yStride, box.right - box.left,
                  box.bottom - box.top);
            touch(planes.uv + std::ptrdiff_t{box.top / 2} * planes.uvStride + (box.left & ~1), planes.uvStride,
                  box.right - box.left, (box.bottom - box.top) / 2);
        }
    }

private:
    std::array<Box, kBlocks> boxes_;
};

}  // namespace

std::unique_ptr<Drawer> makeOurs(Scene const& scene)
{
    return std::make_unique<Ours>(scene);
}

std::unique_ptr<Drawer> makeLowerLimit(Scene const& scene)
{
    return std::make_unique<LowerLimit>(scene);
}

}  // namespace painter_bench
