// A host of one picture, one painter and one backend, for tests that render frames with a plugin.
#pragma once

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

/// The object that `text` spells; an invalid text is a mistake of the test and throws.
SwJsonObject jsonObject(std::string const& text);
