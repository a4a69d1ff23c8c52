// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A host of one picture, one painter and one backend, for tests that render frames with a plugin.
#pragma once

#include "IRenderPlugin.h"
#include "RenderContext.h"
#include "SwAny.h"
#include "SwJson.h"
#include "recording_imaging.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Each instance starts with an empty journal and a picture of the given size; nothing is shared with
/// other instances but the journal.
class TestHost {
public:
    explicit TestHost(unsigned width = 1920, unsigned height = 1080);

    /// One undeclared producer "telemetry" that delivers `payload` for every frame.
    void deliver(SwAny payload);
    /// The same with a JSON object given as text.
    void deliver(char const* jsonObject);
    /// Every request for a payload is answered by `answer`.
    void deliverBy(std::function<SwAny(std::uint64_t, std::string const&)> answer);
    void addInput(RenderInput const& input);
    void declare(std::string const& name);

    RenderInit init() { return {&backend, &painter}; }
    RenderContext& context() { return *context_; }
    /// The same inputs in a new context with a new source picture.
    RenderContext& nextFrame(std::uint64_t frameIndex);
    /// The same context and mapping, only the frame number moves on.
    RenderContext& sameContext(std::uint64_t frameIndex);

    Painter painter;
    recording::Backend backend;
    std::shared_ptr<zelvo::ZelvoPicturePool> pool = std::make_shared<zelvo::ZelvoPicturePool>();
    /// Second way to a copy; none at first.
    LazyDetachedPicture::DetachedCloner cloner;
    unsigned width;
    unsigned height;

private:
    PayloadAccessor accessor_;
    std::vector<RenderInput> inputs_;
    std::vector<ProducerRecord> declared_;
    std::unique_ptr<RenderContext> context_;
};

/// Lets the plugin render `context` and gives what the host was asked for, a line each: those lines that start
/// with one of the prefixes.
std::string hostRequests(IRenderPlugin& plugin, RenderContext& context,
                         std::vector<std::string> const& prefixes = {""});

/// The simplest frame: a configuration of one block, telemetry for it, and what a host of 1920x1080 is asked
/// for in frame 1.
inline constexpr char const* kOneBlockConfig = R"({"overlay":[{"formatString":"v=%v"}]})";
inline constexpr char const* kOneBlockTelemetry = R"({"v":7})";
inline constexpr char const* kOneBlockFrame = R"(payload 1 telemetry
clone
makeRenderTarget
map recording 1
getPen
setPenThickness 1
measureText 10 10 16 0 0 "v=7"
setPenRGB 0 0 0
drawBackground 6 6 40 32 0.5 4 5 on 1920x1080
setPenRGB 255 255 255
drawText 10 10 16 0 0 "v=7" on 1920x1080
setPen 255 255 255 1
)";

/// The object that `text` spells; an invalid text is a mistake of the test and throws.
SwJsonObject jsonObject(std::string const& text);
