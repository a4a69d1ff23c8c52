// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Payload to JSON object. Called by the selection in StanagOverlayPlugin.cpp once per input and frame; the
// conversions themselves are registered with SwAny by whoever owns the payload's type. No value is put into an
// SwAny here: the registry would keep this library's operations for its type after the library is unloaded.
#include "render_payload.h"

#include <iostream>
#include <string>
#include <utility>

namespace render_payload {

namespace {

SwJsonObject parseObject(SwString const& text)
{
    SwString error;
    SwJsonDocument document = SwJsonDocument::fromJson(text, SwString(), error);
    if (!error.isEmpty()) {
        return {};
    }
    SwJsonValue root = document.takeRoot();
    if (!root.isObject()) {
        std::cerr << "Root is not a JSON object." << std::endl;
        return {};
    }
    SwJsonObject* const object = root.editObject();
    return object == nullptr ? SwJsonObject() : std::move(*object);
}

/// For a payload of another type than SwJsonObject.
SwJsonObject convertOrParse(SwAny const& payload)
{
    if (payload.canConvert(SwAny::nameOf<SwJsonObject>())) {
        SwAny converted = payload.convert<SwJsonObject>();
        if (converted.holds<SwJsonObject>() && !converted.get<SwJsonObject>().isEmpty()) {
            return std::move(converted.get<SwJsonObject>());
        }
    }
    SwString const text = payload.toString();
    return text.isEmpty() ? SwJsonObject() : parseObject(text);
}

}  // namespace

// Both catch everything: conversions are the host's code, and one bad payload must not cost the frame.

SwJsonObject anyToJsonObject(SwAny const& payload)
{
    try {
        return payload.holds<SwJsonObject>() ? payload.get<SwJsonObject>() : convertOrParse(payload);
    } catch (...) {
        return {};
    }
}

SwJsonObject anyToJsonObject(SwAny&& payload)
{
    try {
        return payload.holds<SwJsonObject>() ? std::move(payload.get<SwJsonObject>()) : convertOrParse(payload);
    } catch (...) {
        return {};
    }
}

}  // namespace render_payload
