// burn: draws the telemetry into every picture of a clip and writes a new clip, with the telemetry
// streams and the sound copied beside it.
#include "annotated_clip.h"
#include "commands.h"
#include "config_file.h"
#include "messages.h"
#include "output_check.h"

#include "encoder.h"
#include "imaging_access.h"
#include "interrupt.h"
#include "muxer.h"
#include "progress.h"

#include <algorithm>
#include <cmath>

namespace cli {
namespace {

/// A packet beside the pictures that waits for its moment in the output.
struct WaitingUnit {
    media::PacketPtr packet;
    int outputStream;
    AVRational timeBase;
};

/// Writes the new clip: pictures as they come, telemetry and sound up to each picture's time in the order
/// of their times.
class ClipWriter {
public:
    ClipWriter(BurnOptions const& options, AnnotatedClip const& clip)
        : options_(options)
        , clip_(clip)
        , muxer_(options.output)
    {
    }

    void addSide(media::SideUnit& unit)
    {
        if (begun_ && outputs_.find(unit.stream) == outputs_.end()) {
            return;
        }
        side_.emplace(unit.seconds, std::move(unit));
        if (side_.size() > kMaxWaiting) {
            side_.erase(side_.begin());
        }
    }

    void addPicture(ClipFrame const& frame, zelvo::ZelvoPicture& picture)
    {
        if (!begun_) {
            begin_();
        }
        encoder_->encode(imaging::planesOf(picture), frame.ticks, [this](AVPacket& packet) { writeVideo_(packet); });
        writeSideUpTo_(frame.seconds);
    }

    /// `whole` says that the clip was read to its end: what is left belongs into the output.
    void finish(bool whole)
    {
        if (!begun_) {
            throw noPictures(options_.input);
        }
        encoder_->flush([this](AVPacket& packet) { writeVideo_(packet); });
        if (whole) {
            writeSideUpTo_(HUGE_VAL);
        }
        muxer_.finish();
    }

    /// What somebody should know of the output once it is written.
    std::vector<std::string> const& remarks() const { return remarks_; }

private:
    /// More than any real clip has within the second that is read ahead.
    static constexpr std::size_t kMaxWaiting = 65536;

    void begin_();
    void addSideStreams_();
    void writeSideUpTo_(double seconds);
    void writeVideo_(AVPacket& packet) { muxer_.write(packet, videoStream_, clip_.timeBase()); }

    BurnOptions const& options_;
    AnnotatedClip const& clip_;
    media::Muxer muxer_;
    std::unique_ptr<media::Encoder> encoder_;
    int videoStream_ = 0;
    std::map<int, int> outputs_;  ///< output stream by input stream
    std::multimap<double, media::SideUnit> side_;
    std::vector<std::string> remarks_;
    bool begun_ = false;
};

void ClipWriter::begin_()
{
    PictureTraits const& traits = clip_.traits();
    media::EncoderSettings settings;
    settings.codecName = options_.videoCodec;
    settings.bitRate = options_.bitRate;
    settings.crf = options_.crf;
    settings.width = traits.width;
    settings.height = traits.height;
    settings.frameRate = clip_.demuxer().frameRate();
    settings.timeBase = clip_.timeBase();
    settings.sampleAspect = traits.sampleAspect;
    settings.color = traits.color;
    settings.colorSpace = traits.colorSpace;
    settings.primaries = traits.primaries;
    settings.transfer = traits.transfer;
    settings.chromaLocation = traits.chromaLocation;
    settings.interlaced = traits.interlaced;
    settings.topFieldFirst = traits.topFieldFirst;
    encoder_ = std::make_unique<media::Encoder>(settings, muxer_.container());
    if (encoder_->extended()) {
        remarks_.push_back(options_.output + ": pictures of " + std::to_string(traits.width) + "x" +
                           std::to_string(traits.height) + " are stored as " +
                           std::to_string(encoder_->context().width) + "x" +
                           std::to_string(encoder_->context().height) + ", as the encoder takes even sizes only");
    }
    videoStream_ = muxer_.addVideo(encoder_->context(), clip_.timeBase());
    addSideStreams_();
    muxer_.begin();
    begun_ = true;
}

void ClipWriter::addSideStreams_()
{
    media::Demuxer const& demuxer = clip_.demuxer();
    std::string const container = muxer_.container().name;
    for (int const stream : demuxer.streamsOf(media::StreamKind::Klv)) {
        if (auto const output = muxer_.addKlv()) {
            outputs_[stream] = *output;
        } else {
            remarks_.push_back(options_.output + ": " + container +
                               " cannot carry KLV; the telemetry stream is left out (.ts carries it)");
        }
    }
    for (int const stream : demuxer.streamsOf(media::StreamKind::Audio)) {
        if (auto const output = muxer_.addCopy(demuxer.stream(stream))) {
            outputs_[stream] = *output;
        } else {
            remarks_.push_back(options_.output + ": " + container + " cannot carry " +
                               avcodec_get_name(demuxer.stream(stream).codecpar->codec_id) +
                               "; the sound is left out (.mkv carries it)");
        }
    }
}

void ClipWriter::writeSideUpTo_(double seconds)
{
    auto const end = side_.upper_bound(seconds);
    for (auto next = side_.begin(); next != end; ++next) {
        media::SideUnit& unit = next->second;
        auto const output = outputs_.find(unit.stream);
        if (output == outputs_.end()) {
            continue;
        }
        // Times on the clip's one axis: those of joined clips rise where the originals start anew.
        AVRational const timeBase = clip_.demuxer().stream(unit.stream).time_base;
        unit.packet->pts = std::llround(unit.seconds / av_q2d(timeBase));
        unit.packet->dts = unit.packet->pts;
        muxer_.write(*unit.packet, output->second, timeBase);
    }
    side_.erase(side_.begin(), end);
}

}  // namespace

void runBurn(BurnOptions const& options)
{
    media::containerFor(options.output);
    refuseToReplace(options.output, options.input, options.config, options.telemetry);
    ConfigFile const config = readConfig(options.config);
    AnnotatedClip clip(options.input, options.telemetry, config.text);
    ClipWriter writer(options, clip);
    clip.setSideObserver([&writer](media::SideUnit& unit) { writer.addSide(unit); });
    {
        media::Progress progress(!options.noProgress, clip.demuxer().durationSeconds());
        std::optional<double> first;
        while (std::optional<ClipFrame> const frame = clip.next()) {
            first = first.value_or(frame->seconds);
            writer.addPicture(*frame, *clip.annotate(*frame));
            progress.update(frame->number + 1, frame->seconds - *first);
        }
    }
    writer.finish(!media::interrupted());
    for (auto const& remarks : {writer.remarks(), clip.remarks()}) {
        std::for_each(remarks.begin(), remarks.end(), note);
    }
}

}  // namespace cli
