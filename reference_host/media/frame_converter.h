// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Converts pictures between pixel formats and sizes; colour range and matrix change only when asked to.
#pragma once

#include "Picture.h"
#include "media/ffmpeg_types.h"

namespace media {

/// How a picture's numbers stand for colours.
struct ColorFormat {
    bool fullRange = false;
    bool bt709 = false;  ///< matrix BT.709, else BT.601

    friend bool operator==(ColorFormat const&, ColorFormat const&) = default;
};

/// The colours that `frame` has once it is NV12. Unmarked YUV pictures count as limited range, with BT.709
/// from 720 lines on; RGB pictures become that as well. Unmarked grey pictures count as full range.
ColorFormat nv12ColorOf(AVFrame const& frame);

/// Keeps its scalers from call to call; a change of format or size midway is no matter.
class FrameConverter {
public:
    /// Writes `frame` into planes of any size, in the colours that the planes are to have. The rows' padding
    /// up to a multiple of 64 bytes may be overwritten. Throws std::runtime_error for pictures that no
    /// conversion exists for.
    void toNv12(AVFrame const& frame, MappedNV12 const& planes, ColorFormat color);
    /// Fills `target`, whose format, size and buffers are set, from a picture of any size.
    void fromNv12(MappedNV12 const& planes, AVFrame& target, ColorFormat color);

private:
    /// What a scaler is made for.
    struct Shape {
        int width = 0;
        int height = 0;
        int format = -1;
        ColorFormat color;

        friend bool operator==(Shape const&, Shape const&) = default;
    };

    /// A scaler with its purpose; made anew when that changes.
    struct Scaler {
        ScalerPtr context;
        Shape from;
        Shape to;

        SwsContext* prepare(Shape const& wantedFrom, Shape const& wantedTo);
    };

    AVFrame const& fullChroma_(AVFrame const& frame, ColorFormat own, ColorFormat color);

    Scaler scaler_;
    Scaler toFullChroma_;
    FramePtr full_;  ///< 4:4:4 picture on the way
};

}  // namespace media
