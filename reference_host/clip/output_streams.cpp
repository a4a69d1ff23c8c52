// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Telemetry, sound, subtitles and data beside the pictures; used when an output is begun.
#include "clip/output_streams.h"

#include "clip/stream_choice.h"

#include <optional>
#include <utility>

namespace clip {
namespace {

class Chooser {
public:
    Chooser(media::InputStreams const& input, media::Muxer& muxer, std::string const& output, SidecarUse sidecar)
        : input_(input)
        , muxer_(muxer)
        , output_(output)
        , sidecar_(sidecar)
    {
    }

    OutputStreams choose()
    {
        for (int const stream : input_.streamsOf(media::StreamKind::Klv)) {
            addKlv_(stream);
        }
        addCopies_(media::StreamKind::Audio, "the sound is", ".mkv carries it");
        addCopies_(media::StreamKind::Subtitle, "the subtitles are", "");
        addCopies_(media::StreamKind::Data, "", "");
        addAttachments_();
        for (int const stream : input_.streamsOf(media::StreamKind::Picture)) {
            remark_("the further " + std::string(nameOf_(stream)) + " stream " + streamName(input_.stream(stream)) +
                    " is left out; only one is drawn on");
        }
        keepIdentity_();
        return std::move(chosen_);
    }

private:
    char const* nameOf_(int stream) const { return avcodec_get_name(input_.stream(stream).codecpar->codec_id); }
    void remark_(std::string const& what) { chosen_.remarks.push_back(output_ + ": " + what); }
    std::string cannotCarry_(std::string const& what) const
    {
        return std::string(muxer_.container().name) + " cannot carry " + what + "; ";
    }

    void addKlv_(int stream)
    {
        if (std::optional<int> const own = muxer_.addKlv()) {
            chosen_.copied[stream] = *own;
        } else if (sidecar_ == SidecarUse::Wanted) {
            std::string const path = sidecarPath(output_, chosen_.sidecars.size());
            chosen_.sidecars[stream] = std::make_unique<KlvSidecar>(path);
            remark_(cannotCarry_("KLV") + "the telemetry stream is written to " + path);
        } else {
            bool const offered = sidecar_ == SidecarUse::Offered;
            remark_(cannotCarry_("KLV") + "the telemetry stream is left out (.ts carries it" +
                    (offered ? ", --sidecar writes it to a .klv file)" : ")"));
        }
    }

    /// Without a text for `subject` the stream's own name says what is left out, without a cure its own is given.
    void addCopies_(media::StreamKind kind, std::string const& subject, std::string const& cure)
    {
        for (int const stream : input_.streamsOf(kind)) {
            if (std::optional<int> const own = muxer_.addCopy(input_.stream(stream), input_.isTransportStream)) {
                chosen_.copied[stream] = *own;
            } else if (!subject.empty()) {
                remark_(cannotCarry_(nameOf_(stream)) + subject + " left out (" +
                        (cure.empty() ? carrierOf_(stream) : cure) + ")");
            } else {
                remark_(cannotCarry_("the data stream " + streamName(input_.stream(stream))) + "it is left out");
            }
        }
    }

    /// Which container takes these subtitles.
    std::string carrierOf_(int stream) const
    {
        AVCodecID const codec = input_.stream(stream).codecpar->codec_id;
        bool const onlyMp4 = codec == AV_CODEC_ID_MOV_TEXT;
        bool const onlyTransport = codec == AV_CODEC_ID_DVB_TELETEXT;
        return std::string(onlyMp4 ? ".mp4" : onlyTransport ? ".ts" : ".mkv") + " carries them";
    }

    void addAttachments_()
    {
        for (int const stream : input_.streamsOf(media::StreamKind::Attachment)) {
            AVDictionaryEntry const* const name = av_dict_get(input_.stream(stream).metadata, "filename", nullptr, 0);
            if (std::optional<int> const own = muxer_.addAttachment(input_.stream(stream))) {
                chosen_.copied[stream] = *own;
            } else {
                remark_(cannotCarry_("attachments") + (name == nullptr ? "one" : name->value) +
                        " is left out (.mkv carries it)");
            }
        }
    }

    void keepIdentity_()
    {
        for (int const pid : muxer_.keepIdentity(input_, chosen_.copied)) {
            remark_("a stream gets another PID than its " + pidText(pid) + ", which belongs to tables");
        }
    }

    media::InputStreams const& input_;
    media::Muxer& muxer_;
    std::string const& output_;
    SidecarUse sidecar_;
    OutputStreams chosen_;
};

}  // namespace

OutputStreams addOutputStreams(media::InputStreams const& input, media::Muxer& muxer, std::string const& output,
                               SidecarUse sidecar)
{
    return Chooser(input, muxer, output, sidecar).choose();
}

}  // namespace clip
