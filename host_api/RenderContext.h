// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Everything a host hands to a plugin for one frame.
#pragma once

#include "LazyDetachedPicture.h"
#include "Painter.h"
#include "RenderBackend.h"
#include "RenderInput.h"

#include "SwAny.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

/// Fetches the payload of an input.
struct PayloadAccessor {
    /// (frame number, payload key) to payload; may be empty.
    std::function<SwAny(std::uint64_t, std::string const&)> callable;
};

/// The picture's mapping, kept from plugin to plugin and, if the host keeps the context, from frame to
/// frame. Destroyed in reverse order: the guard ends before its target.
struct RenderMapping {
    std::unique_ptr<IRenderTarget> target;
    IRenderBackend::Guard guard;
    bool mapped = false;
    IRenderBackend* backend = nullptr;  ///< for which the mapping was made; not owned
};

struct RenderContext {
    std::uint64_t frameIndex = 0;
    PayloadAccessor const* payloadAccessor = nullptr;                                ///< not owned; may be null
    std::unordered_map<std::string, std::vector<ProducerRecord>> declaredProducers;  ///< by input type
    std::unordered_map<std::string, RenderInputGroup> inputsByType;
    mutable std::unordered_map<std::string, ProducerView>
        producerViews;  ///< cache; cleared by the host when inputs change
    LazyDetachedPicture picture;
    RenderMapping mapping;
};

/// What a plugin gets once. Both stay owned by the host and must outlive the plugin's frames.
struct RenderInit {
    IRenderBackend* backend = nullptr;
    Painter* painter = nullptr;
};
