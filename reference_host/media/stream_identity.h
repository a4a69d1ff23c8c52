// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The identity of a transport stream, on its way from an input to an output that is made from it: PIDs, programs,
// names, and what only the tables themselves say. Used by the muxer.
#pragma once

#include "media/demuxer.h"
#include "media/program_table_patch.h"

#include <map>
#include <vector>

namespace media {

struct StreamIdentity {
    KeptTables kept;
    int firstMapPid = 0;        ///< where the muxer may put its program maps without meeting a stream
    std::vector<int> lostPids;  ///< PIDs that belong to tables, which the muxer gives no stream
};

/// Gives the streams of `output` the PIDs of those of `source` and puts them into the same programs. `streams` gives
/// the output's stream for each copied one of the source; the output's other stream is the shown video.
StreamIdentity takeIdentity(InputStreams const& source, AVFormatContext& output, std::map<int, int> const& streams);

}  // namespace media
