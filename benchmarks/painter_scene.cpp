// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Texts and pictures of the scenes.
#include "painter_scene.h"

#include "imaging/imaging_access.h"

#include <array>
#include <cstdio>

namespace painter_bench {
namespace {

std::string textOf(Scene const& scene, int block, int frame)
{
    int const t = scene.isChanging ? frame : 0;
    std::array<char, 400> text{};
    std::snprintf(text.data(), text.size(),
                  "Sensor %d  Lat %010.6f N  Lon %010.6f E  Alt %07.1f m\n"
                  "Hdg %06.2f  Pitch %06.2f  Roll %06.2f  HFOV %05.2f  Frm %05d\n"
                  "Target %010.6f N  %010.6f E  Slant range %08.1f m",
                  block + 1, 48.85837 + t * 1.3e-5 + block, 2.294481 + t * 2.1e-5 + block, 1250.5 + t * 0.7,
                  (t * 11 + block * 4000) % 36000 / 100.0, 10 + t % 700 / 100.0, 20 + t % 900 / 100.0,
                  30 + t % 500 / 100.0, t % 100000, 48.9 + t * 1.7e-5 + block, 2.31 + t * 1.1e-5 + block,
                  4200.0 + t % 9000 / 10.0);
    return text.data();
}

}  // namespace

Texts textsOf(Scene const& scene, int frame)
{
    Texts texts;
    for (int block = 0; block < kBlocks; ++block) {
        texts[static_cast<std::size_t>(block)] = textOf(scene, block, frame);
    }
    return texts;
}

PictureRing::PictureRing(Scene const& scene)
{
    for (std::size_t i = 0; i < scene.pictures; ++i) {
        pictures_.push_back(std::make_unique<zelvo::ZelvoPicture>(static_cast<unsigned>(scene.width()),
                                                                  static_cast<unsigned>(scene.height())));
        planes_.push_back(imaging::planesOf(*pictures_.back()));
    }
    fillGround();
}

std::size_t PictureRing::bytesOf(MappedNV12 const& planes)
{
    return static_cast<std::size_t>(planes.uv - planes.y) +
           static_cast<std::size_t>(planes.uvStride) * static_cast<std::size_t>((planes.height + 1) / 2);
}

void PictureRing::fillGround()
{
    for (auto const& planes : planes_) {
        for (int y = 0; y < planes.height; ++y) {
            for (int x = 0; x < planes.width; ++x) {
                planes.y[std::ptrdiff_t{y} * planes.yStride + x] = static_cast<std::uint8_t>(90 + (x / 3 + y / 2) % 80);
            }
        }
        for (int row = 0; row < planes.height / 2; ++row) {
            for (int x = 0; x < planes.width; ++x) {
                planes.uv[std::ptrdiff_t{row} * planes.uvStride + x] =
                    static_cast<std::uint8_t>(112 + (x / 16 + row / 8) % 32);
            }
        }
    }
}

}  // namespace painter_bench
