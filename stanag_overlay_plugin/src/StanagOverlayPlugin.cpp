// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plugin's entry points and the way of a frame: telemetry, picture, blocks. What a block shows is
// decided in stanag_overlay_condition and written by stanag_overlay_format; here it is measured and drawn.
#include "StanagOverlayPlugin.h"

#include "FrameTime.h"
#include "overlay_geometry.h"
#include "overlay_numbers.h"
#include "render_payload.h"
#include "steady_time.h"

#include <class_loader/class_loader.hpp>

#include <cstdint>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using stanag_overlay::OverlayCfg;
using stanag_overlay::OverlayRuntime;
using stanag_overlay::Visibility;

namespace {

constexpr char const* kInputType = "stanag.v1";

/// The time that the host gives the frame, else the steady clock's.
std::uint64_t frameNowNs()
{
    std::uint64_t const given = FrameTime::given();
    return given != 0 ? given : stanag_overlay::steadyNowNs();
}

/// The payload of one input; empty when the host has no way to it.
SwJsonObject payloadOf(RenderContext const& context, RenderInput const& input)
{
    if (context.payloadAccessor == nullptr || !context.payloadAccessor->callable || input.payloadKey.empty()) {
        return {};
    }
    std::uint64_t const frame = input.payloadFrame != 0 ? input.payloadFrame : context.frameIndex;
    return render_payload::anyToJsonObject(context.payloadAccessor->callable(frame, input.payloadKey));
}

/// The last payload with any value among a producer's inputs. Payloads of one producer are not merged.
SwJsonObject lastPayload(RenderContext const& context, std::vector<RenderInput const*> const& inputs)
{
    SwJsonObject chosen;
    for (RenderInput const* input : inputs) {
        if (input == nullptr) {
            continue;
        }
        SwJsonObject payload = payloadOf(context, *input);
        if (!payload.isEmpty()) {
            chosen = std::move(payload);
        }
    }
    return chosen;
}

bool anyFromLookback(std::vector<RenderInput const*> const& inputs)
{
    for (RenderInput const* input : inputs) {
        if (input != nullptr && input->fromLookback) {
            return true;
        }
    }
    return false;
}

/// Moves into `root` what it does not have yet.
void mergeMissing(SwJsonObject& root, SwJsonObject&& addition)
{
    addition.erase("");
    if (root.isEmpty()) {
        root = std::move(addition);
    } else {
        root.addMissing(std::move(addition));
    }
}

std::shared_ptr<zelvo::ZelvoPicture const> readablePicture(LazyDetachedPicture const& holder)
{
    auto picture = holder.readablePicShared();
    if (!picture) {
        throw std::runtime_error("LazyDetachedPicture has no readable picture");
    }
    return picture;
}

bool isUsable(MappedNV12 const& planes)
{
    return planes.y != nullptr && planes.uv != nullptr && planes.width > 0 && planes.height > 0;
}

bool keepsText(OverlayCfg const& block, OverlayRuntime const& runtime, std::uint64_t frameIndex)
{
    return block.updateEveryNFrames > 1 && runtime.lastUpdateFrame != 0 &&
           frameIndex - runtime.lastUpdateFrame < static_cast<std::uint64_t>(block.updateEveryNFrames);
}

/// Box and text of one block; nothing when the text cannot be measured.
void drawText(Painter& painter, MappedNV12 const& target, zelvo::ZelvoPicture const& picture, OverlayCfg const& block,
              std::string const& text)
{
    using namespace stanag_overlay;
    auto const width = static_cast<float>(picture.width());
    auto const height = static_cast<float>(picture.height());
    float const scale = height / kReferenceLines;
    // The painter takes eight bits: a thickness beyond them keeps its low ones.
    painter.setPenThickness(static_cast<unsigned char>(penThicknessPx(scale, block.thickness)));
    TextStyle const style{truncateToInt(scale * static_cast<float>(block.textSize)), 0, 0};
    int const x = anchorPx(width, block.posX);
    int const y = anchorPx(height, block.posY);
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    if (!painter.measureTextBBox(text, x, y, style.pixelSize, style.reserved1, style.reserved2, &left, &top, &right,
                                 &bottom)) {
        return;
    }
    float const margin = scale * kMarginPx;
    int const pad = roundHalfAway(margin);
    left = makeEven(addWrapping(left, -pad));
    top = makeEven(addWrapping(top, -pad));
    right = makeEven(addWrapping(right, pad));
    bottom = makeEven(addWrapping(bottom, pad));
    painter.setPenRGB(block.bgR, block.bgG, block.bgB);
    painter.drawBackgroundMapped(target, left, top, right, bottom, block.bgAlpha, kCornerRadiusPx, margin);
    painter.setPenRGB(block.textR, block.textG, block.textB);
    painter.drawTextMapped(target, x, y, text, style);
}

}  // namespace

char const* StanagOverlayPlugin::getName() const
{
    return "StanagOverlayPlugin";
}

std::string StanagOverlayPlugin::getUuid() const
{
    if (uuid_.empty()) {
        uuid_ = "stanagoverlay-" + std::to_string(reinterpret_cast<std::uintptr_t>(this));
    }
    return uuid_;
}

std::vector<std::string> StanagOverlayPlugin::input_types() const
{
    return {kInputType};
}

void StanagOverlayPlugin::enableDebug(bool on)
{
    debug_ = on;
}

bool StanagOverlayPlugin::init(RenderInit const& init)
{
    backend_ = init.backend;
    painter_ = init.painter;
    return true;
}

std::string StanagOverlayPlugin::getConfigList()
{
    return schemaBuilder_.build(availableKeys_);
}

void StanagOverlayPlugin::setConfig(std::string config)
{
    // Both are made before either is taken: when memory runs out, the old blocks stay with their own memory.
    std::vector<OverlayCfg> overlays = parser_.parse(config);
    std::vector<OverlayRuntime> runtimes(overlays.size());
    overlays_ = std::move(overlays);
    runtimes_ = std::move(runtimes);
}

void StanagOverlayPlugin::render(RenderContext& context)
{
    if (painter_ == nullptr || backend_ == nullptr || !context.picture.hasSource()) {
        return;
    }
    std::uint64_t const nowNs = frameNowNs();
    SwJsonObject root;
    unsigned long providersMissing = 0;
    unsigned long providersUsingLookback = 0;
    if (!selectStanagRoot_(context, root, providersMissing, providersUsingLookback)) {
        countMiss_(context.frameIndex, nowNs, providersMissing, providersUsingLookback);
        return;
    }
    missCount_ = 0;
    updateAvailableKeys_(root);
    auto const picture = readablePicture(context.picture);
    if (!mapPicture_(context)) {
        return;
    }
    Pen const hostPen = painter_->getPen();
    if (runtimes_.size() != overlays_.size()) {
        runtimes_ = std::vector<OverlayRuntime>(overlays_.size());
    }
    drawBlocks_(context, *picture, root, nowNs);
    painter_->setPen(hostPen);
}

bool StanagOverlayPlugin::selectStanagRoot_(RenderContext const& context, SwJsonObject& root,
                                            unsigned long& providersMissing, unsigned long& providersUsingLookback)
{
    root.clear();
    providersMissing = 0;
    providersUsingLookback = 0;
    ProducerView const& view = producerTypeView(context, kInputType);
    for (std::string const& name : view.producers) {
        if (name.empty()) {
            continue;
        }
        auto const found = view.inputsByProducer.find(name);
        if (found == view.inputsByProducer.end() || found->second.empty()) {
            ++providersMissing;
            continue;
        }
        // Asked first: what the host says of its inputs counts as it was before it fetches them.
        bool const fromLookback = anyFromLookback(found->second);
        SwJsonObject chosen = lastPayload(context, found->second);
        if (chosen.isEmpty()) {
            continue;  // it delivered, only nothing of use: neither missing nor lookback
        }
        providersUsingLookback += fromLookback ? 1U : 0U;
        mergeMissing(root, std::move(chosen));
    }
    return !root.isEmpty();
}

void StanagOverlayPlugin::countMiss_(std::uint64_t frameIndex, std::uint64_t nowNs, unsigned long providersMissing,
                                     unsigned long providersUsingLookback)
{
    ++missCount_;
    if (!debug_) {
        return;
    }
    bool const everyNth = fallbackLogEveryN_ != 0 && missCount_ % fallbackLogEveryN_ == 0;
    if (missCount_ != 1 && !everyNth && nowNs < nextFallbackLogNs_) {
        return;
    }
    nextFallbackLogNs_ = nowNs + fallbackLogIntervalMs_ * stanag_overlay::kNsPerMs;
    // One piece of text: lines of several threads do not mix, and the stream's number format has no say.
    std::cerr << "[StanagOverlay][Fallback] frame=" + std::to_string(frameIndex) +
                     " decision=skip miss_count=" + std::to_string(missCount_) +
                     " providers_missing=" + std::to_string(providersMissing) +
                     " providers_using_lookback=" + std::to_string(providersUsingLookback)
              << std::endl;
}

void StanagOverlayPlugin::updateAvailableKeys_(SwJsonObject const& root)
{
    // In place: from frame to frame the keys are mostly the same, and then nothing is allocated. An object
    // has its keys in order and once each.
    std::size_t count = 0;
    for (auto const& [key, value] : root) {
        if (key.empty()) {
            continue;
        }
        if (count == availableKeys_.size()) {
            availableKeys_.push_back(key);
        } else if (availableKeys_[count] != key) {
            availableKeys_[count] = key;
        }
        ++count;
    }
    availableKeys_.resize(count);
}

bool StanagOverlayPlugin::mapPicture_(RenderContext& context)
{
    RenderMapping& mapping = context.mapping;
    if (mapping.mapped && isUsable(mapping.guard.planes())) {
        if (mapping.backend == backend_) {
            return true;
        }
        mapping.mapped = false;
        mapping.guard.release();
        mapping.target.reset();
        mapping.backend = nullptr;
    }
    auto const writable = context.picture.ensureWritablePicShared();
    mapping.target = writable ? writable->makeRenderTarget() : nullptr;
    if (!mapping.target) {
        return false;
    }
    IRenderBackend::Guard guard = backend_->map(*mapping.target);
    if (!isUsable(guard.planes())) {
        mapping.target.reset();
        mapping.backend = nullptr;
        return false;
    }
    mapping.backend = backend_;
    mapping.guard = std::move(guard);  // ends the one that was there
    mapping.mapped = true;
    return true;
}

void StanagOverlayPlugin::drawBlocks_(RenderContext const& context, zelvo::ZelvoPicture const& picture,
                                      SwJsonObject const& root, std::uint64_t nowNs)
{
    for (std::size_t i = 0; i < overlays_.size(); ++i) {
        OverlayCfg const& block = overlays_[i];
        OverlayRuntime& runtime = runtimes_[i];
        Visibility const visibility = evaluator_.visibility(block, runtime, &root, nowNs);
        if (visibility == Visibility::Hidden) {
            continue;
        }
        if (visibility == Visibility::Refresh && !keepsText(block, runtime, context.frameIndex)) {
            runtime.text = formatter_.expandTemplate(block.formatString, &root, block, runtime, nowNs, availableKeys_);
            runtime.lastUpdateFrame = context.frameIndex;
        }
        if (!runtime.text.empty()) {
            drawText(*painter_, context.mapping.guard.planes(), picture, block, runtime.text);
        }
    }
}

CLASS_LOADER_REGISTER_CLASS(StanagOverlayPlugin, IRenderPlugin)
