// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Builds the render context that a test describes; what the frame leaves behind stands in the journal.
#include "test_host.h"

#include <stdexcept>
#include <utility>

TestHost::TestHost(unsigned pictureWidth, unsigned pictureHeight) : width(pictureWidth), height(pictureHeight)
{
    recording::journal().clear();
    nextFrame(1);
}

void TestHost::deliver(SwAny payload)
{
    deliverBy([kept = std::move(payload)](std::uint64_t, std::string const&) { return kept; });
    inputs_.clear();
    addInput({"telemetry", "", 0, false});
}

void TestHost::deliver(char const* text)
{
    deliver(SwAny(jsonObject(text)));
}

void TestHost::deliverBy(std::function<SwAny(std::uint64_t, std::string const&)> answer)
{
    accessor_.callable = [answer = std::move(answer)](std::uint64_t frame, std::string const& key) {
        recording::journal().call("payload " + std::to_string(frame) + " " + key);
        return answer(frame, key);
    };
    context_->payloadAccessor = &accessor_;
}

void TestHost::addInput(RenderInput const& input)
{
    inputs_.push_back(input);
    context_->inputsByType["stanag.v1"].inputs = inputs_;
    context_->producerViews.clear();
}

void TestHost::declare(std::string const& name)
{
    ProducerRecord record;
    record.producerName = name;
    declared_.push_back(record);
    context_->declaredProducers["stanag.v1"] = declared_;
    context_->producerViews.clear();
}

RenderContext& TestHost::nextFrame(std::uint64_t frameIndex)
{
    context_ = std::make_unique<RenderContext>();
    context_->frameIndex = frameIndex;
    context_->payloadAccessor = accessor_.callable ? &accessor_ : nullptr;
    if (!inputs_.empty()) {
        context_->inputsByType["stanag.v1"].inputs = inputs_;
    }
    if (!declared_.empty()) {
        context_->declaredProducers["stanag.v1"] = declared_;
    }
    auto source = std::make_shared<zelvo::ZelvoPicture>(width, height);
    context_->picture.reset("/camera", frameIndex + 1000, std::move(source), pool, cloner);
    return *context_;
}

RenderContext& TestHost::sameContext(std::uint64_t frameIndex)
{
    context_->frameIndex = frameIndex;
    return *context_;
}

std::string hostRequests(IRenderPlugin& plugin, RenderContext& context, std::vector<std::string> const& prefixes)
{
    recording::journal().clear();
    plugin.render(context);
    return recording::journal().text(prefixes);
}

SwJsonObject jsonObject(std::string const& text)
{
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(text, SwString(), error);
    if (!error.isEmpty() || !document.isObject()) {
        throw std::invalid_argument("the test's payload is no JSON object: " + text);
    }
    return document.object();
}
