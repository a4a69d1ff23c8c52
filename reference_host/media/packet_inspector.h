// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Looks into a packet of compressed video as far as it takes to tell what a decoder will make of it. Used by
// PacketFrames.
#pragma once

#include "media/ffmpeg_types.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace media {

class PacketInspector {
public:
    struct Finding {
        bool cleanStart = false;  ///< nothing from here on refers to what stood before, and no parameter is missing
        std::string doubt;        ///< why this packet may not be one shown picture; empty when it is
    };

    /// Packets of a codec that is not understood are all doubted.
    explicit PacketInspector(AVStream const& video);

    /// Packets come in stream order, from the first one on.
    Finding inspect(AVPacket const& packet);

private:
    struct FreeParser {
        void operator()(AVCodecParserContext* parser) const { av_parser_close(parser); }
    };

    int parsedBytes_(AVPacket const& packet, std::uint8_t const* picture) const;
    Finding inspectH264_(AVPacket const& packet);
    Finding inspectHevc_(AVPacket const& packet);
    Finding inspectMpeg2_(AVPacket const& packet);
    std::string parameterDoubt_(std::string const& unit);

    AVCodecID codec_;
    int lengthBytes_ = 0;  ///< of the length before each unit; 0: units begin with start codes
    CodecPtr context_;     ///< for the parser; never opened
    std::unique_ptr<AVCodecParserContext, FreeParser> parser_;
    std::set<std::string> parameters_;  ///< those of the stream's first picture
    bool first_ = true;
};

}  // namespace media
