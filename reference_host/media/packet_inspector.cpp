// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The units at the head of a packet: parameters and the first piece of the picture. What follows is not looked at, so
// that a packet costs about a microsecond, whatever its size.
#include "media/packet_inspector.h"

#include <algorithm>
#include <array>
#include <new>

namespace media {
namespace {

constexpr char const* kNoPicture = "a packet holds no readable picture";
constexpr char const* kField = "a packet holds a single field";
constexpr char const* kParameters = "the pictures' parameters change";

/// H.264 (ITU-T H.264, table 7-1) and HEVC (ITU-T H.265, table 7-1) units.
constexpr int kH264Slice = 1;
constexpr int kH264LastPartition = 4;
constexpr int kH264Idr = 5;
constexpr int kH264Sequence = 7;
constexpr int kH264Picture = 8;
constexpr int kHevcLastTrailing = 9;
constexpr int kHevcIdrWithLeading = 19;
constexpr int kHevcIdr = 20;
constexpr int kHevcOpenKey = 21;
constexpr int kHevcFirstParameter = 32;
constexpr int kHevcLastParameter = 34;

/// The library's parser reads at most 1000 bytes of a picture, but clears as much memory as it is given bytes.
constexpr std::ptrdiff_t kPictureHeaderBytes = 1024;

/// MPEG-2 (ITU-T H.262, table 6-1) start codes.
constexpr int kMpegPicture = 0x00;
constexpr int kMpegSequence = 0xB3;
constexpr int kMpegExtension = 0xB5;

/// Walks over the units of a packet.
class UnitWalk {
public:
    UnitWalk(AVPacket const& packet, int lengthBytes)
        : at_(packet.data)
        , end_(packet.data + packet.size)
        , lengthBytes_(lengthBytes)
    {
        if (lengthBytes_ == 0) {
            at_ = afterStartCode_(at_);
        }
    }

    /// Goes to the next unit; false when there is none.
    bool next() { return lengthBytes_ == 0 ? nextCoded_() : nextMeasured_(); }
    /// The unit's bytes from its type on. Those of a picture need not be searched for their end.
    std::uint8_t const* data() const { return unit_; }
    std::size_t bytesLeft() const { return static_cast<std::size_t>(end_ - unit_); }
    std::uint8_t head() const { return *unit_; }
    /// The whole unit without zero bytes at its end.
    std::string whole()
    {
        std::uint8_t const* end = unitEnd_();
        while (end > unit_ && end[-1] == 0) {
            --end;
        }
        return {unit_, end};
    }

private:
    std::uint8_t const* afterStartCode_(std::uint8_t const* from) const
    {
        static constexpr std::array<std::uint8_t, 3> kCode = {0, 0, 1};
        auto const* const found = std::search(from, end_, kCode.begin(), kCode.end());
        return found == end_ ? end_ : found + kCode.size();
    }
    bool nextCoded_()
    {
        if (unit_ != nullptr) {
            at_ = afterStartCode_(unit_);
        }
        unit_ = at_;
        return unit_ < end_;
    }
    bool nextMeasured_()
    {
        if (end_ - at_ <= lengthBytes_) {
            return false;
        }
        std::size_t length = 0;
        for (int i = 0; i < lengthBytes_; ++i) {
            length = length << 8U | *at_++;
        }
        unit_ = at_;
        if (length == 0 || length > static_cast<std::size_t>(end_ - at_)) {
            return false;
        }
        at_ += length;
        return true;
    }
    std::uint8_t const* unitEnd_() const
    {
        if (lengthBytes_ != 0) {
            return at_;
        }
        std::uint8_t const* const after = afterStartCode_(unit_);
        return after == end_ ? end_ : after - 3;
    }

    std::uint8_t const* at_;
    std::uint8_t const* end_;
    std::uint8_t const* unit_ = nullptr;
    int lengthBytes_;
};

/// Bytes of the length before each unit, from the codec's configuration record in containers like MP4; 0 when units
/// begin with start codes.
int lengthBytesOf(AVCodecParameters const& codec)
{
    std::size_t const place = codec.codec_id == AV_CODEC_ID_H264 ? 4 : 21;
    bool const record = codec.extradata != nullptr && codec.extradata_size > static_cast<int>(place) &&
                        codec.extradata[0] == 1 &&
                        (codec.codec_id == AV_CODEC_ID_H264 || codec.codec_id == AV_CODEC_ID_HEVC);
    return record ? (codec.extradata[place] & 3) + 1 : 0;
}

}  // namespace

PacketInspector::PacketInspector(AVStream const& video)
    : codec_(video.codecpar->codec_id)
    , lengthBytes_(lengthBytesOf(*video.codecpar))
{
    if (codec_ == AV_CODEC_ID_H264) {
        parser_.reset(av_parser_init(codec_));
        context_.reset(avcodec_alloc_context3(nullptr));
        if (!parser_ || !context_ || avcodec_parameters_to_context(context_.get(), video.codecpar) < 0) {
            throw std::bad_alloc();
        }
        parser_->flags |= PARSER_FLAG_COMPLETE_FRAMES;
    }
}

PacketInspector::Finding PacketInspector::inspect(AVPacket const& packet)
{
    Finding finding;
    switch (codec_) {
    case AV_CODEC_ID_H264:
        finding = inspectH264_(packet);
        break;
    case AV_CODEC_ID_HEVC:
        finding = inspectHevc_(packet);
        break;
    case AV_CODEC_ID_MPEG1VIDEO:
    case AV_CODEC_ID_MPEG2VIDEO:
        finding = inspectMpeg2_(packet);
        break;
    case AV_CODEC_ID_MJPEG:
    case AV_CODEC_ID_FFV1:
    case AV_CODEC_ID_RAWVIDEO:
        finding.cleanStart = (packet.flags & AV_PKT_FLAG_KEY) != 0;
        break;
    default:
        finding.doubt = std::string("packets of ") + avcodec_get_name(codec_) + " do not tell their pictures";
        break;
    }
    first_ = false;
    return finding;
}

std::string PacketInspector::parameterDoubt_(std::string const& unit)
{
    if (first_) {
        parameters_.insert(unit);
    }
    return parameters_.count(unit) == 0 ? kParameters : "";
}

int PacketInspector::parsedBytes_(AVPacket const& packet, std::uint8_t const* picture) const
{
    // Units with a length before them must be whole.
    auto const upToHeader = picture - packet.data + kPictureHeaderBytes;
    return lengthBytes_ == 0 && upToHeader < packet.size ? static_cast<int>(upToHeader) : packet.size;
}

PacketInspector::Finding PacketInspector::inspectH264_(AVPacket const& packet)
{
    for (UnitWalk walk(packet, lengthBytes_); walk.next();) {
        int const type = walk.head() & 0x1F;
        if ((walk.head() & 0x80) != 0 || (type > kH264Slice && type <= kH264LastPartition)) {
            break;
        }
        if (type == kH264Sequence || type == kH264Picture) {
            if (std::string doubt = parameterDoubt_(walk.whole()); !doubt.empty()) {
                return {false, std::move(doubt)};
            }
        }
        if (type != kH264Slice && type != kH264Idr) {
            continue;
        }
        // A picture begins with macroblock 0, whose number is a single set bit.
        if (walk.bytesLeft() < 2 || (walk.data()[1] & 0x80) == 0) {
            break;
        }
        std::uint8_t* unused = nullptr;
        int unusedSize = 0;
        av_parser_parse2(parser_.get(), context_.get(), &unused, &unusedSize, packet.data,
                         parsedBytes_(packet, walk.data()), packet.pts, packet.dts, packet.pos);
        if (parser_->picture_structure != AV_PICTURE_STRUCTURE_FRAME) {
            return {false, parser_->picture_structure == AV_PICTURE_STRUCTURE_UNKNOWN ? kNoPicture : kField};
        }
        return {type == kH264Idr, ""};
    }
    return {false, kNoPicture};
}

PacketInspector::Finding PacketInspector::inspectHevc_(AVPacket const& packet)
{
    for (UnitWalk walk(packet, lengthBytes_); walk.next();) {
        int const type = walk.head() >> 1U & 0x3F;
        if ((walk.head() & 0x80) != 0) {
            break;
        }
        if (type >= kHevcFirstParameter && type <= kHevcLastParameter) {
            if (std::string doubt = parameterDoubt_(walk.whole()); !doubt.empty()) {
                return {false, std::move(doubt)};
            }
        }
        if (type >= kHevcFirstParameter) {
            continue;
        }
        bool const idr = type == kHevcIdrWithLeading || type == kHevcIdr;
        // Key pictures of broken links drop the pictures that lead them.
        bool const understood = type <= kHevcLastTrailing || idr || type == kHevcOpenKey;
        // The first slice of a picture says so in its first bit.
        if (!understood || walk.bytesLeft() < 3 || (walk.data()[2] & 0x80) == 0) {
            break;
        }
        return {idr, ""};
    }
    return {false, kNoPicture};
}

PacketInspector::Finding PacketInspector::inspectMpeg2_(AVPacket const& packet)
{
    bool sequence = false;
    bool inSequence = false;
    for (UnitWalk walk(packet, 0); walk.next();) {
        int const code = walk.head();
        if (code == kMpegPicture) {
            constexpr int kIntra = 1;
            if (walk.bytesLeft() < 3) {
                break;
            }
            int const type = walk.data()[2] >> 3U & 7;
            return {sequence && type == kIntra, ""};
        }
        sequence = sequence || code == kMpegSequence;
        inSequence = code == kMpegSequence || (inSequence && code == kMpegExtension);
        if (inSequence) {
            if (std::string doubt = parameterDoubt_(walk.whole()); !doubt.empty()) {
                return {false, std::move(doubt)};
            }
        }
    }
    return {false, kNoPicture};
}

}  // namespace media
