// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Chooses which streams of an input go into an output beside the pictures, and says what is left out.
#pragma once

#include "clip/klv_sidecar.h"
#include "media/demuxer.h"
#include "media/muxer.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace clip {

/// Whether telemetry that a container does not take goes into a file beside the output.
enum class SidecarUse {
    Wanted,
    Offered,  ///< it could, and who leaves telemetry out says so
    Never,
};

/// Where the packets of the input's streams go.
struct OutputStreams {
    std::map<int, int> copied;                            ///< output stream by input stream
    std::map<int, std::unique_ptr<KlvSidecar>> sidecars;  ///< by input stream
    std::vector<std::string> remarks;                     ///< what is left out or changed, a line each
};

/// Adds to `muxer`, which has its video, a stream for each other one of the input that its container takes; in a
/// transport stream made from one all keep their identity. Throws std::runtime_error when a file beside `output`
/// cannot be made.
OutputStreams addOutputStreams(media::InputStreams const& input, media::Muxer& muxer, std::string const& output,
                               SidecarUse sidecar);

}  // namespace clip
