// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Writes the annotated clip: pictures as they come, telemetry and sound beside them in the order of their times.
#pragma once

#include "clip/annotated_clip.h"
#include "clip/output_streams.h"
#include "media/encoder.h"
#include "media/muxer.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace clip {

/// What of the clip the output holds.
struct OutputParts {
    bool sidecar = false;                ///< telemetry that the container does not take goes into a file beside it
    std::optional<double> endSeconds{};  ///< after the clip's first frame; empty: the clip's end
};

class ClipWriter {
public:
    /// Creates the output; nothing is under its name before finish(). `clip`, which must outlive the writer, gives
    /// the streams and the pictures' traits. Throws std::runtime_error with one line, here and below, and
    /// media::UnknownChoice when a choice does not exist.
    ClipWriter(std::string output, media::EncoderChoice choice, AnnotatedClip const& clip, OutputParts parts = {});

    /// A packet of what goes beside the pictures: it is written with the picture that is shown at its time. The
    /// packet's owner is the writer from now on.
    void addSide(media::SideUnit& unit);
    /// The next picture, which must stay as it is from now on; the first one opens the encoder.
    void addPicture(ClipFrame const& frame, std::shared_ptr<zelvo::ZelvoPicture> const& picture);
    /// Ends the output and gives it its name. `whole` says that the clip was read to its end: then what is left
    /// beside the pictures belongs into the output. Throws noPictures() when there was none.
    /// `lastLook` is called when all is written, before the output has its name; when it throws, nothing is left.
    void finish(bool whole, std::function<void()> const& lastLook = {});
    /// The same for a range that ends before `seconds`: of what is left, that before it belongs into the output.
    void finishBefore(double seconds, std::function<void()> const& lastLook = {});

    /// What somebody should know of the output once it is written.
    std::vector<std::string> const& remarks() const { return remarks_; }

private:
    /// More than any real clip has within the second that is read ahead.
    static constexpr std::size_t kMaxWaiting = 65536;

    void begin_();
    bool goesOut_(int stream) const;
    std::optional<double> rangeEnd_() const;
    void cutEvent_(media::SideUnit& unit, AVRational timeBase) const;
    void keepTags_();
    using SideUnits = std::multimap<double, media::SideUnit>;
    void writeSideUpTo_(SideUnits::iterator end);
    void end_(SideUnits::iterator sideEnd, std::function<void()> const& lastLook);
    void writeSide_(media::SideUnit& unit, double zeroSeconds);
    void leaveOut_(media::SideUnit const& unit);
    std::int64_t zeroTicks_() const;
    bool beginsNearZero_() const;
    void finishRemarks_();
    void writeVideo_(AVPacket& packet) { muxer_.write(packet, videoStream_, clip_.timeBase()); }

    std::string output_;
    media::EncoderChoice choice_;
    AnnotatedClip const& clip_;
    OutputParts parts_;
    media::Muxer muxer_;
    std::unique_ptr<media::Encoder> encoder_;
    int videoStream_ = 0;
    OutputStreams streams_;
    SideUnits side_;                ///< by time, waiting for their picture
    double soundBeforeZero_ = 0.0;  ///< seconds that the container could not take
    std::vector<std::string> remarks_;
    bool begun_ = false;
};

}  // namespace clip
