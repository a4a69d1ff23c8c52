// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a host keeps around a plugin, for benchmarks: one picture and its mapping, inputs, payloads, frames
// that follow each other. And the telemetry and configuration that the benchmarks of a frame share.
#pragma once

#include "RenderContext.h"
#include "SwAny.h"
#include "SwJson.h"
#include "null_imaging.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// How a payload reaches the plugin.
enum class PayloadKind : std::uint8_t { Object, Text };

/// The telemetry of one moment under the 46 names that hosts use, in flight: every value differs from one
/// moment to the next as it does in the air. `extraKeys` more keys follow that no block names.
SwJsonObject telemetryAt(std::size_t moment, std::size_t extraKeys = 0);

/// The same as text, numbers with all their digits.
std::string telemetryTextAt(std::size_t moment, std::size_t extraKeys = 0);

SwAny payloadAt(PayloadKind kind, std::size_t moment, std::size_t extraKeys = 0);

/// A configuration of that many blocks with eight placeholders each, by turns the same six: a format for
/// most keys (digits, ranges, invalid values, a date, hold and refresh times) and a condition on each block.
std::string blocksConfig(std::size_t blocks, int updateEveryNFrames = 1);

/// A host that keeps context, picture and mapping from frame to frame.
class FrameHost {
public:
    /// As many producers as `payloadOf` is asked for; it gets the producer and the frame.
    using PayloadOf = std::function<SwAny(std::size_t producer, std::uint64_t frame)>;
    FrameHost(std::size_t producers, PayloadOf payloadOf);

    RenderInit init() { return {&backend_, &painter_}; }
    /// The next frame, with the same inputs.
    RenderContext& next();

private:
    null_imaging::Backend backend_;
    Painter painter_;
    PayloadAccessor accessor_;
    RenderContext context_;
};

/// The payloads of `kMoments` moments, copied to whoever asks: what a host does that keeps its payloads.
inline constexpr std::size_t kMoments = 16;
FrameHost::PayloadOf copiesOf(PayloadKind kind, std::size_t extraKeys = 0);
