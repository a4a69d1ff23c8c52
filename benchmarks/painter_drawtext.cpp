// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// FFmpeg's drawtext as an opponent: a filter for each block of the scene.
#include "painter_scene.h"

#include "drawtext_opponent.h"

namespace painter_bench {
namespace {

std::vector<DrawtextBlock> blocksOf(Scene const& scene)
{
    // A constant text is the filter's own; a changing one comes with each picture.
    Texts const texts = scene.isChanging ? Texts() : textsOf(scene, 0);
    std::vector<DrawtextBlock> blocks;
    blocks.reserve(kBlocks);
    for (int block = 0; block < kBlocks; ++block) {
        blocks.push_back({texts[static_cast<std::size_t>(block)], scene.left(block), scene.top(block), scene.textSize(),
                          scene.margin(), scene.outline});
    }
    return blocks;
}

class Drawtext : public Drawer {
public:
    explicit Drawtext(Scene const& scene) : opponent_(scene.width(), scene.height(), blocksOf(scene)) {}

    void draw(MappedNV12 const& planes, Texts const& texts) override { opponent_.draw(planes, texts); }

private:
    DrawtextOpponent opponent_;
};

}  // namespace

std::unique_ptr<Drawer> makeDrawtext(Scene const& scene)
{
    return std::make_unique<Drawtext>(scene);
}

}  // namespace painter_bench
