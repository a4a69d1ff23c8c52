// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plain pass: the steps of a frame in their order, nothing saved from one to the next.
#include "plain_overlay_pass.h"

#include "plain_overlay_condition.h"
#include "plain_overlay_format.h"
#include "steady_time.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <utility>

namespace stanag_overlay::plain {

namespace {

/// A frame's inputs by producer.
struct Producers {
    std::vector<std::string> names;
    std::map<std::string, std::vector<RenderInput const*>> inputs;
};

bool knows(std::vector<std::string> const& names, std::string const& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

Producers producersOf(RenderContext const& context)
{
    Producers result;
    if (context.declaredProducers.count("stanag.v1") != 0) {
        for (ProducerRecord const& record : context.declaredProducers.at("stanag.v1")) {
            std::string const name = record.producerName.empty() ? record.payloadKey : record.producerName;
            if (!name.empty() && !knows(result.names, name)) {
                result.names.push_back(name);
            }
        }
    }
    std::vector<std::string> added;
    if (context.inputsByType.count("stanag.v1") != 0) {
        for (RenderInput const& input : context.inputsByType.at("stanag.v1").inputs) {
            std::string const name = input.producerName.empty() ? input.payloadKey : input.producerName;
            if (name.empty()) {
                continue;
            }
            result.inputs[name].push_back(&input);
            if (!knows(result.names, name) && !knows(added, name)) {
                added.push_back(name);
            }
        }
    }
    std::sort(added.begin(), added.end());
    result.names.insert(result.names.end(), added.begin(), added.end());
    return result;
}

SwJsonObject objectOf(SwAny const& payload)
{
    try {
        if (payload.typeName() == SwAny::nameOf<SwJsonObject>()) {
            return payload.get<SwJsonObject>();
        }
        if (payload.canConvert(SwAny::nameOf<SwJsonObject>())) {
            SwAny const converted = payload.convert<SwJsonObject>();
            if (!converted.get<SwJsonObject>().isEmpty()) {
                return converted.get<SwJsonObject>();
            }
        }
        SwString const text = payload.toString();
        if (text.isEmpty()) {
            return {};
        }
        SwString error;
        SwJsonDocument const document = SwJsonDocument::fromJson(text, SwString(), error);
        if (!error.isEmpty()) {
            return {};
        }
        if (!document.isObject()) {
            std::cerr << "Root is not a JSON object." << std::endl;
            return {};
        }
        return document.object();
    } catch (...) {
        return {};
    }
}

SwAny payloadOf(RenderContext const& context, RenderInput const& input)
{
    if (context.payloadAccessor == nullptr || !context.payloadAccessor->callable || input.payloadKey.empty()) {
        return {};
    }
    std::uint64_t const frame = input.payloadFrame != 0 ? input.payloadFrame : context.frameIndex;
    return context.payloadAccessor->callable(frame, input.payloadKey);
}

SwJsonObject rootOf(RenderContext const& context, unsigned long& missing, unsigned long& lookback)
{
    SwJsonObject root;
    Producers const producers = producersOf(context);
    for (std::string const& name : producers.names) {
        if (producers.inputs.count(name) == 0) {
            ++missing;
            continue;
        }
        bool fromLookback = false;
        SwJsonObject chosen;
        for (RenderInput const* input : producers.inputs.at(name)) {
            fromLookback = fromLookback || input->fromLookback;
            SwAny const payload = payloadOf(context, *input);
            SwJsonObject const object = objectOf(payload);
            if (!object.isEmpty()) {
                chosen = object;
            }
        }
        if (chosen.isEmpty()) {
            continue;
        }
        lookback += fromLookback ? 1 : 0;
        for (std::string const& key : chosen.keys()) {
            if (!key.empty() && !root.contains(key)) {
                root[key] = std::as_const(chosen)[key];
            }
        }
    }
    return root;
}

bool usable(MappedNV12 const& planes)
{
    return planes.y != nullptr && planes.uv != nullptr && planes.width > 0 && planes.height > 0;
}

int even(int value)
{
    return (value + 1) & ~1;
}

}  // namespace

void OverlayPass::init(RenderInit const& init)
{
    backend_ = init.backend;
    painter_ = init.painter;
}

void OverlayPass::render(RenderContext& context)
{
    if (painter_ == nullptr || backend_ == nullptr || !context.picture.hasSource()) {
        return;
    }
    std::uint64_t const nowNs = steadyNowNs();
    unsigned long missing = 0;
    unsigned long lookback = 0;
    SwJsonObject const root = rootOf(context, missing, lookback);
    if (root.isEmpty()) {
        countMiss(context, nowNs, missing, lookback);
        return;
    }
    missCount = 0;
    availableKeys = root.keys();
    std::shared_ptr<zelvo::ZelvoPicture const> const picture = context.picture.readablePicShared();
    if (!picture) {
        throw std::runtime_error("LazyDetachedPicture has no readable picture");
    }
    if (!map(context)) {
        return;
    }
    Pen const pen = painter_->getPen();
    if (runtimes.size() != overlays.size()) {
        runtimes = std::vector<OverlayRuntime>(overlays.size());
    }
    for (std::size_t i = 0; i < overlays.size(); ++i) {
        OverlayCfg const& block = overlays[i];
        OverlayRuntime& runtime = runtimes[i];
        Visibility const shown = visibility(block, runtime, &root, nowNs);
        if (shown == Visibility::Hidden) {
            continue;
        }
        std::uint64_t const since = context.frameIndex - runtime.lastUpdateFrame;
        bool const waits = block.updateEveryNFrames > 1 && runtime.lastUpdateFrame != 0 &&
                           since < static_cast<std::uint64_t>(block.updateEveryNFrames);
        if (!waits && shown == Visibility::Refresh) {
            runtime.text = expandTemplate(block.formatString, &root, block, runtime, nowNs, availableKeys);
            runtime.lastUpdateFrame = context.frameIndex;
        }
        if (!runtime.text.empty()) {
            draw(context, block, runtime.text, static_cast<float>(picture->width()),
                 static_cast<float>(picture->height()));
        }
    }
    painter_->setPen(pen);
}

void OverlayPass::countMiss(RenderContext const& context, std::uint64_t nowNs, unsigned long missing,
                            unsigned long lookback)
{
    ++missCount;
    if (debug && (missCount == 1 || missCount % 60 == 0 || nowNs >= nextFallbackLogNs)) {
        nextFallbackLogNs = nowNs + 2000000000U;
        std::cerr << "[StanagOverlay][Fallback] frame=" << context.frameIndex << " decision=skip"
                  << " miss_count=" << missCount << " providers_missing=" << missing
                  << " providers_using_lookback=" << lookback << std::endl;
    }
}

bool OverlayPass::map(RenderContext& context)
{
    RenderMapping& mapping = context.mapping;
    bool const valid = mapping.mapped && usable(mapping.guard.planes());
    if (valid && mapping.backend == backend_) {
        return true;
    }
    if (valid) {
        mapping.mapped = false;
        mapping.guard.release();
        mapping.target.reset();
        mapping.backend = nullptr;
    }
    std::shared_ptr<zelvo::ZelvoPicture> const writable = context.picture.ensureWritablePicShared();
    mapping.target = writable ? writable->makeRenderTarget() : nullptr;
    if (!mapping.target) {
        return false;
    }
    IRenderBackend::Guard guard = backend_->map(*mapping.target);
    if (!usable(guard.planes())) {
        mapping.target.reset();
        mapping.backend = nullptr;
        return false;
    }
    mapping.backend = backend_;
    mapping.guard = std::move(guard);
    mapping.mapped = true;
    return true;
}

void OverlayPass::draw(RenderContext const& context, OverlayCfg const& block, std::string const& text, float width,
                       float height)
{
    float const scale = height / 1080.0F;
    int const thickness = static_cast<int>(std::round(scale * static_cast<float>(block.thickness)));
    painter_->setPenThickness(static_cast<unsigned char>(thickness <= 0 ? 1 : thickness));
    TextStyle const style{static_cast<int>(scale * static_cast<float>(block.textSize)), 0, 0};
    int const x = even(static_cast<int>(width * block.posX));
    int const y = even(static_cast<int>(height * block.posY));
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    if (!painter_->measureTextBBox(text, x, y, style.pixelSize, 0, 0, &left, &top, &right, &bottom)) {
        return;
    }
    float const margin = scale * 5.0F;
    int const pad = static_cast<int>(std::lround(margin));
    MappedNV12 const& planes = context.mapping.guard.planes();
    painter_->setPenRGB(block.bgR, block.bgG, block.bgB);
    painter_->drawBackgroundMapped(planes, even(left - pad), even(top - pad), even(right + pad), even(bottom + pad),
                                   block.bgAlpha, 4.0F, margin);
    painter_->setPenRGB(block.textR, block.textG, block.textB);
    painter_->drawTextMapped(planes, x, y, text, style);
}

}  // namespace stanag_overlay::plain
