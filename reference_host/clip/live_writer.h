// Writes live pictures as they come, with telemetry and sound beside them; last step of live work. The output's streams
// are those of the input as it was first: what comes back later takes the place of the same kind, in the same order.
#pragma once

#include "clip/live_clip.h"
#include "media/encoder.h"
#include "media/muxer.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace clip {

class LiveWriter {
public:
    /// Opens the output; a file is under its name only after finish(). Throws std::runtime_error with one line, here
    /// and below: an output that is gone ends live work.
    LiveWriter(std::string output, media::EncoderChoice choice);

    /// A packet of telemetry or sound, to be written with the picture that is shown at its time. The packet's owner is
    /// the writer from now on.
    void addSide(media::SideUnit& unit, media::LiveProgram const& program);
    /// The next picture of `clip`; the first one opens the encoder. A dropped picture lets go only what is beside it.
    void addPicture(LiveFrame const& frame, LiveClip const& clip);
    /// Ends the output; nothing happens when there was no picture.
    void finish();

    /// What somebody should know of the output; each is given once.
    std::vector<std::string> takeRemarks() { return std::exchange(remarks_, {}); }

private:
    void begin_(LiveClip const& clip);
    void addSideStreams_(media::LiveProgram const& program);
    void writeSideUpTo_(double seconds);
    void writeVideo_(AVPacket& packet) { muxer_.write(packet, videoStream_, media::kLiveTimeBase); }

    using StreamRole = std::pair<media::StreamKind, int>;  ///< and its number among those of the kind
    struct Side {
        media::PacketPtr packet;
        AVCodecID codec;
        StreamRole role;
    };

    std::string output_;
    media::EncoderChoice choice_;
    media::Muxer muxer_;
    std::unique_ptr<media::Encoder> encoder_;
    int videoStream_ = 0;
    struct Output {
        int stream;
        AVCodecID codec;
    };
    std::map<StreamRole, Output> outputs_;
    std::multimap<double, Side> side_;  ///< by time, waiting for their picture
    std::vector<std::string> remarks_;
};

}  // namespace clip
