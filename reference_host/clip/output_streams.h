// Chooses which streams of a clip go into an output beside the pictures, and says what is left out.
#pragma once

#include "clip/klv_sidecar.h"
#include "media/demuxer.h"
#include "media/muxer.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace clip {

/// Where the packets of the clip's streams go.
struct OutputStreams {
    std::map<int, int> copied;                            ///< output stream by input stream
    std::map<int, std::unique_ptr<KlvSidecar>> sidecars;  ///< by input stream
    std::vector<std::string> remarks;                     ///< what is left out, a line each
};

/// Adds to `muxer` a stream for each one of the clip that its container takes. With `withSidecar`, telemetry that it
/// does not take gets a file beside `output`. Throws std::runtime_error when that cannot be made.
OutputStreams addOutputStreams(media::Demuxer const& clip, media::Muxer& muxer, std::string const& output,
                               bool withSidecar);

}  // namespace clip
