// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Writes live pictures as they come, with telemetry and sound beside them; last step of live work. The output's streams
// and, in a transport stream, their identity are those of the input as it was first: what comes back later takes the
// place of the same kind, in the same order.
#pragma once

#include "clip/live_clip.h"
#include "media/encoder.h"
#include "media/muxer.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace clip {

class LiveWriter {
public:
    /// Opens the output, which may wait as Muxer says; a file is under its name only after finish(). Throws
    /// std::runtime_error with one line, here and below: an output that is gone ends live work.
    LiveWriter(std::string output, media::EncoderChoice choice, std::function<void()> whileOpening = {});

    /// A packet of what goes beside the pictures, to be written with the picture that is shown at its time. The
    /// packet's owner is the writer from now on.
    void addSide(media::SideUnit& unit, media::LiveProgram const& program);
    /// The next picture of `clip`; the first one opens the encoder. A dropped picture lets go only what is beside it.
    void addPicture(LiveFrame const& frame, LiveClip const& clip);
    /// Ends the output; nothing happens when there was no picture.
    void finish();

    /// What somebody should know of the output; each is given once.
    std::vector<std::string> takeRemarks() { return std::exchange(remarks_, {}); }

private:
    /// A stream of the input.
    struct Input {
        std::uint64_t opening = 0;
        int stream = 0;
        media::StreamKind kind = media::StreamKind::Other;
        int numberAmongKind = 0;
        AVCodecID codec = AV_CODEC_ID_NONE;
    };
    struct Output {
        Input first;  ///< what it was made for
        int stream = 0;
        bool inCells = false;       ///< it is said to be telemetry in access unit cells
        std::uint8_t nextCell = 0;  ///< number of the next one that is made here
    };
    struct Side {
        media::SideUnit unit;
        Input input;
    };

    static Input inputOf(media::LiveProgram const& program, int stream);
    void begin_(LiveFrame const& first, LiveClip const& clip);
    void noteCaptions_(LiveClip const& clip);
    void addOutputs_(media::LiveProgram const& program);
    Output* outputFor_(Input const& input);
    void noteOtherCodec_(Input const& input);
    void writeSideUpTo_(double seconds);
    void writeSide_(Side& side, Output& output);
    static media::PacketPtr carried_(media::PacketPtr packet, Output& output);
    void writeVideo_(AVPacket& packet) { muxer_.write(packet, videoStream_, media::kLiveTimeBase); }

    std::string output_;
    media::EncoderChoice choice_;
    media::Muxer muxer_;
    std::unique_ptr<media::Encoder> encoder_;
    int videoStream_ = 0;
    std::int64_t zeroTicks_ = 0;     ///< of the clip, where the output begins
    std::uint64_t opening_ = 0;      ///< of the input as it was when the output began
    std::uint64_t toldOpening_ = 0;  ///< the last one of which another codec was told
    std::vector<Output> outputs_;
    std::multimap<double, Side> side_;  ///< by time, waiting for their picture
    std::vector<std::string> remarks_;
    bool captionsAreTold_ = false;
};

}  // namespace clip
