// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One frame through the plugin: context, telemetry as inputs, picture, painter.
#include "frame/frame_renderer.h"

#include "RenderContext.h"
#include "SwAny.h"
#include "imaging/imaging_access.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace frame {
namespace {

constexpr char const* kInputType = "stanag.v1";
constexpr char const* kPictureNamespace = "/stanag_overlay";

/// The payload of the choice that stands under this frame and key; empty when there is none.
SwAny payloadOf(std::vector<Choice> const& choices, std::uint64_t frame, std::string const& key)
{
    for (Choice const& choice : choices) {
        if (choice.producer == key && choice.payloadFrame == frame) {
            return SwAny(SwJsonObject(*choice.payload));
        }
    }
    return {};
}

void fillInputs(RenderContext& context, std::vector<std::string> const& producers, std::vector<Choice> const& choices)
{
    std::vector<ProducerRecord>& declared = context.declaredProducers[kInputType];
    for (std::string const& producer : producers) {
        ProducerRecord record;
        record.payloadKey = producer;
        record.payloadType = kInputType;
        declared.push_back(std::move(record));
    }
    std::vector<RenderInput>& inputs = context.inputsByType[kInputType].inputs;
    for (Choice const& choice : choices) {
        RenderInput input;
        input.payloadKey = choice.producer;
        input.payloadFrame = choice.payloadFrame;
        input.fromLookback = choice.fromLookback;
        inputs.push_back(std::move(input));
    }
}

/// Whether the context of an earlier frame lists these producers and inputs by name.
bool listsTheSame(RenderContext& context, std::vector<std::string> const& producers, std::vector<Choice> const& choices)
{
    std::vector<ProducerRecord> const& declared = context.declaredProducers[kInputType];
    std::vector<RenderInput> const& inputs = context.inputsByType[kInputType].inputs;
    return std::equal(
               declared.begin(), declared.end(), producers.begin(), producers.end(),
               [](ProducerRecord const& record, std::string const& name) { return record.payloadKey == name; }) &&
           std::equal(
               inputs.begin(), inputs.end(), choices.begin(), choices.end(),
               [](RenderInput const& input, Choice const& choice) { return input.payloadKey == choice.producer; });
}

/// As fillInputs for the context of an earlier frame.
void updateInputs(RenderContext& context, std::vector<std::string> const& producers, std::vector<Choice> const& choices)
{
    if (!listsTheSame(context, producers, choices)) {
        context.declaredProducers.clear();
        context.inputsByType.clear();
        context.producerViews.clear();
        fillInputs(context, producers, choices);
        return;
    }
    // The views point at these inputs.
    auto choice = choices.begin();
    for (RenderInput& input : context.inputsByType[kInputType].inputs) {
        input.payloadFrame = choice->payloadFrame;
        input.fromLookback = choice->fromLookback;
        ++choice;
    }
}

/// Where nobody else reads the original, it serves as its own copy.
void giveOriginal(LazyDetachedPicture& holder, std::uint64_t frameIndex,
                  std::shared_ptr<zelvo::ZelvoPicture> const& picture)
{
    holder.reset(kPictureNamespace, frameIndex, picture, nullptr,
                 [picture](std::string const&, std::uint64_t) { return picture; });
}

}  // namespace

int outlinePixels(Look const& look, unsigned pictureHeight)
{
    constexpr double kReferenceLines = 1080.0;
    return look.outline > 0.0
               ? static_cast<int>(std::max(1L, std::lround(look.outline * pictureHeight / kReferenceLines)))
               : 0;
}

FrameRenderer::FrameRenderer(Look look, std::vector<std::string> const& pluginFolders)
    : pool_(std::make_shared<zelvo::ZelvoPicturePool>())
    , plugin_(pluginFolders)
{
    setLook(std::move(look));
    if (!plugin_.get().init(RenderInit{&backend_, &painter_})) {
        throw std::runtime_error("the overlay plugin refuses to start; build it for this program");
    }
}

std::string FrameRenderer::schemaFor(SwJsonObject keys)
{
    Choice const choice{"schema", std::make_shared<SwJsonObject const>(std::move(keys)), 1, false};
    pass(1, {choice.producer}, {choice});
    return plugin_.get().getConfigList();
}

void FrameRenderer::setLook(Look look)
{
    imaging::openFonts(painter_, look.font);
    look_ = std::move(look);
}

std::shared_ptr<zelvo::ZelvoPicture> FrameRenderer::takePicture(unsigned width, unsigned height)
{
    auto picture = imaging::takePicture(*pool_, width, height);
    if (!picture) {
        throw std::runtime_error("no memory for a picture of " + std::to_string(width) + "x" + std::to_string(height) +
                                 "; use a smaller clip");
    }
    return picture;
}

std::shared_ptr<zelvo::ZelvoPicture> FrameRenderer::render(std::uint64_t frameIndex,
                                                           std::shared_ptr<zelvo::ZelvoPicture> const& source,
                                                           std::vector<std::string> const& producers,
                                                           std::vector<Choice> const& choices)
{
    RenderContext context;
    context.picture.reset(kPictureNamespace, frameIndex, source, pool_, nullptr);
    render_(context, frameIndex, *source, producers, choices);
    // Both the source and the copy were made by this host and are not const in truth.
    return std::const_pointer_cast<zelvo::ZelvoPicture>(context.picture.readablePicShared());
}

void FrameRenderer::renderOnto(std::uint64_t frameIndex, std::shared_ptr<zelvo::ZelvoPicture> const& picture,
                               std::vector<std::string> const& producers, std::vector<Choice> const& choices)
{
    RenderContext context;
    giveOriginal(context.picture, frameIndex, picture);
    render_(context, frameIndex, *picture, producers, choices);
}

void FrameRenderer::pass(std::uint64_t frameIndex, std::vector<std::string> const& producers,
                         std::vector<Choice> const& choices)
{
    if (!passing_) {
        // Texts on so small a picture have no height: the plugin makes them and nothing is drawn.
        constexpr unsigned kSide = 2;
        passing_ = std::make_unique<RenderContext>();
        giveOriginal(passing_->picture, frameIndex, takePicture(kSide, kSide));
    }
    render_(*passing_, frameIndex, *passing_->picture.readablePicShared(), producers, choices);
}

void FrameRenderer::render_(RenderContext& context, std::uint64_t frameIndex, zelvo::ZelvoPicture const& picture,
                            std::vector<std::string> const& producers, std::vector<Choice> const& choices)
{
    imaging::setOutline(painter_, outlinePixels(look_, picture.height()));
    PayloadAccessor const accessor{
        [&choices](std::uint64_t frame, std::string const& key) { return payloadOf(choices, frame, key); }};
    context.frameIndex = frameIndex;
    context.payloadAccessor = &accessor;
    updateInputs(context, producers, choices);
    plugin_.get().render(context);
}

}  // namespace frame
