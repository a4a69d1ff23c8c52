// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The smallest host: loads the plugin and lets it draw one frame of telemetry on a grey picture.
//   minimal_host PATH_OF_PLUGIN_LIBRARY
#include "IRenderPlugin.h"
#include "imaging/imaging_access.h"

#include <class_loader/class_loader.hpp>

#include <algorithm>
#include <iostream>

// How this host makes a picture's planes reachable: they lie in ordinary memory.
struct Backend : IRenderBackend {
    char const* name() const override { return "memory"; }
    Guard map(IRenderTarget& target) override { return {imaging::planesOf(target), nullptr}; }
};

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: minimal_host PATH_OF_PLUGIN_LIBRARY\n";
        return 2;
    }
    class_loader::ClassLoader loader(argv[1]);
    auto const plugin = loader.createUniqueInstance<IRenderPlugin>("StanagOverlayPlugin");
    Backend backend;
    Painter painter;
    plugin->init({&backend, &painter});
    plugin->setConfig(R"({"overlay": [{"formatString": "Heading %heading_deg", "decimals": 1, "textSize": 48}]})");

    auto const grey = std::make_shared<zelvo::ZelvoPicture>(1280U, 720U);
    MappedNV12 const source = imaging::planesOf(*grey);
    std::fill_n(source.y, source.yStride * source.height, std::uint8_t{128});
    std::fill_n(source.uv, source.uvStride * (source.height / 2), std::uint8_t{128});

    PayloadAccessor const telemetry{[](std::uint64_t, std::string const&) {
        return SwJsonObject{{"heading_deg", 271.5}};
    }};
    RenderContext frame;
    frame.frameIndex = 1;
    frame.payloadAccessor = &telemetry;
    frame.inputsByType["stanag.v1"].inputs = {{"nose_camera", "", 0, false}};
    frame.picture.reset("/camera", 1, grey, std::make_shared<zelvo::ZelvoPicturePool>(), {});
    plugin->render(frame);

    MappedNV12 const drawn = frame.mapping.guard.planes();
    auto const size = drawn.yStride * drawn.height;
    auto const changed = size - std::count(drawn.y, drawn.y + size, std::uint8_t{128});
    std::cout << plugin->getName() << " changed " << changed << " of " << drawn.width * drawn.height << " pixels\n";
    return changed > 0 ? 0 : 1;
}
