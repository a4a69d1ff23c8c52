// Telemetry, sound, subtitles and data beside the pictures; used when an output is begun.
#include "clip/output_streams.h"

#include "clip/stream_choice.h"

#include <optional>
#include <utility>

namespace clip {
namespace {

class Chooser {
public:
    Chooser(media::Demuxer const& clip, media::Muxer& muxer, std::string const& output, bool withSidecar)
        : clip_(clip)
        , muxer_(muxer)
        , output_(output)
        , withSidecar_(withSidecar)
    {
    }

    OutputStreams choose()
    {
        for (int const stream : clip_.streamsOf(media::StreamKind::Klv)) {
            addKlv_(stream);
        }
        addCopies_(media::StreamKind::Audio, "the sound is", ".mkv carries it");
        addCopies_(media::StreamKind::Subtitle, "the subtitles are", "");
        addCopies_(media::StreamKind::Data, "", "");
        addAttachments_();
        for (int const stream : clip_.streamsOf(media::StreamKind::Picture)) {
            leaveOut_("the further " + std::string(nameOf_(stream)) + " stream " + streamName(clip_.stream(stream)) +
                      " is left out; only one is drawn on");
        }
        return std::move(chosen_);
    }

private:
    char const* nameOf_(int stream) const { return avcodec_get_name(clip_.stream(stream).codecpar->codec_id); }
    void leaveOut_(std::string const& what) { chosen_.remarks.push_back(output_ + ": " + what); }
    std::string cannotCarry_(std::string const& what) const
    {
        return std::string(muxer_.container().name) + " cannot carry " + what + "; ";
    }

    void addKlv_(int stream)
    {
        if (std::optional<int> const own = muxer_.addKlv()) {
            chosen_.copied[stream] = *own;
        } else if (withSidecar_) {
            std::string const path = sidecarPath(output_, chosen_.sidecars.size());
            chosen_.sidecars[stream] = std::make_unique<KlvSidecar>(path);
            leaveOut_(cannotCarry_("KLV") + "the telemetry stream is written to " + path);
        } else {
            leaveOut_(cannotCarry_("KLV") +
                      "the telemetry stream is left out (.ts carries it, --sidecar writes it to a .klv file)");
        }
    }

    /// Without a text for `subject` the stream's own name says what is left out, without a cure its own is given.
    void addCopies_(media::StreamKind kind, std::string const& subject, std::string const& cure)
    {
        for (int const stream : clip_.streamsOf(kind)) {
            if (std::optional<int> const own = muxer_.addCopy(clip_.stream(stream), clip_.isTransportStream())) {
                chosen_.copied[stream] = *own;
            } else if (!subject.empty()) {
                leaveOut_(cannotCarry_(nameOf_(stream)) + subject + " left out (" +
                          (cure.empty() ? carrierOf_(stream) : cure) + ")");
            } else {
                leaveOut_(cannotCarry_("the data stream " + streamName(clip_.stream(stream))) + "it is left out");
            }
        }
    }

    /// Which container takes these subtitles.
    std::string carrierOf_(int stream) const
    {
        AVCodecID const codec = clip_.stream(stream).codecpar->codec_id;
        bool const onlyMp4 = codec == AV_CODEC_ID_MOV_TEXT;
        bool const onlyTransport = codec == AV_CODEC_ID_DVB_TELETEXT;
        return std::string(onlyMp4 ? ".mp4" : onlyTransport ? ".ts" : ".mkv") + " carries them";
    }

    void addAttachments_()
    {
        for (int const stream : clip_.streamsOf(media::StreamKind::Attachment)) {
            AVDictionaryEntry const* const name = av_dict_get(clip_.stream(stream).metadata, "filename", nullptr, 0);
            if (std::optional<int> const own = muxer_.addAttachment(clip_.stream(stream))) {
                chosen_.copied[stream] = *own;
            } else {
                leaveOut_(cannotCarry_("attachments") + (name == nullptr ? "one" : name->value) +
                          " is left out (.mkv carries it)");
            }
        }
    }

    media::Demuxer const& clip_;
    media::Muxer& muxer_;
    std::string const& output_;
    bool withSidecar_;
    OutputStreams chosen_;
};

}  // namespace

OutputStreams addOutputStreams(media::Demuxer const& clip, media::Muxer& muxer, std::string const& output,
                               bool withSidecar)
{
    return Chooser(clip, muxer, output, withSidecar).choose();
}

}  // namespace clip
