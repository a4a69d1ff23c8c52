// The way of a picture through the host: reader, converter, telemetry, plugin.
#include "clip/annotated_clip.h"

#include "FrameTime.h"
#include "imaging/imaging_access.h"
#include "media/interrupt.h"

#include <array>
#include <cstdio>
#include <limits>
#include <stdexcept>
#include <utility>

namespace clip {
namespace {

/// Producers bear the number by which other tools name the stream.
std::string producerName(AVStream const& stream)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "klv-0x%x", static_cast<unsigned>(stream.id));
    return stream.id != 0 ? text.data() : "klv-" + std::to_string(stream.index);
}

}  // namespace

AnnotatedClip::AnnotatedClip(std::string const& input, std::string const& telemetryFile, std::string const& config)
    : telemetryFile_(telemetryFile)
    , demuxer_(input)
    , reader_(demuxer_)
    , clock_(reader_.timeBase())
    , timeline_(telemetryFile.empty() ? 4096 : std::numeric_limits<std::size_t>::max())
{
    if (telemetryFile_.empty()) {
        for (int const stream : demuxer_.streamsOf(media::StreamKind::Klv)) {
            producerOf_(stream);
        }
    } else {
        filePackets_ = telemetry::readTelemetryFile(telemetryFile_, summary_.counts);
        summary_.anyStream = true;
        summary_.fromFile = true;
    }
    renderer_.plugin().setConfig(config);
}

std::size_t AnnotatedClip::producerOf_(int stream)
{
    auto const known = producers_.find(stream);
    if (known != producers_.end()) {
        return known->second;
    }
    summary_.anyStream = true;
    return producers_[stream] = timeline_.addProducer(producerName(demuxer_.stream(stream)));
}

std::optional<ClipFrame> AnnotatedClip::next()
{
    std::optional<media::VideoUnit> unit = reader_.next();
    takeSideUnits_();
    if (!unit) {
        return std::nullopt;
    }
    AVFrame const& decoded = *unit->frame;
    if (frames_ == 0) {
        learnTraits_(decoded);
        readTelemetryFile_(unit->seconds);
    } else if (sizeChange_.empty() && (decoded.width != traits_.width || decoded.height != traits_.height)) {
        sizeChange_ = "pictures change from " + media::sizeText(traits_.width, traits_.height) + " to " +
                      media::sizeText(decoded.width, decoded.height) + " at frame " + std::to_string(unit->number) +
                      "; they were scaled to the first size";
    }
    ++frames_;
    ClipFrame frame;
    frame.number = unit->number;
    frame.seconds = unit->seconds;
    frame.ticks = unit->ticks;
    frame.timeNs = clock_.next(unit->ticks);
    frame.picture = renderer_.takePicture(static_cast<unsigned>(traits_.width), static_cast<unsigned>(traits_.height));
    converter_.toNv12(decoded, imaging::planesOf(*frame.picture), traits_.color);
    frame.telemetry = timeline_.choose(frame.seconds, frame.number + 1);
    return frame;
}

std::shared_ptr<zelvo::ZelvoPicture> AnnotatedClip::annotate(ClipFrame const& frame)
{
    FrameTime const time(frame.timeNs);
    // The plugin takes frame number 0 for "none yet".
    return renderer_.render(frame.number + 1, frame.picture, timeline_.producers(), frame.telemetry);
}

void AnnotatedClip::learnTraits_(AVFrame const& frame)
{
    traits_ = media::traitsOf(frame);
    imaging::setColor(renderer_.painter(),
                      traits_.color.bt709 ? imaging::ColorMatrix::Bt709 : imaging::ColorMatrix::Bt601,
                      traits_.color.fullRange);
}

void AnnotatedClip::readTelemetryFile_(double firstSeconds)
{
    if (telemetryFile_.empty()) {
        return;
    }
    std::size_t const producer = timeline_.addProducer(telemetryFile_);
    // Packets without time are spread over the clip, or one to a picture when its length is unknown.
    double const frameSeconds = 1.0 / av_q2d(demuxer_.frameRate());
    std::optional<double> const length = demuxer_.durationSeconds();
    double const step =
        length && !filePackets_.empty() ? *length / static_cast<double>(filePackets_.size()) : frameSeconds;
    double nth = 0.0;
    for (telemetry::Packet& packet : filePackets_) {
        double const seconds = firstSeconds + packet.timeSeconds.value_or(nth * step);
        nth += 1.0;
        summary_.usable += packet.payload.empty() ? 0U : 1U;
        timeline_.add(producer, seconds, std::move(packet.payload));
    }
    filePackets_.clear();
}

void AnnotatedClip::takeSideUnits_()
{
    for (media::SideUnit& unit : reader_.takeSideUnits()) {
        if (unit.kind == media::StreamKind::Klv && telemetryFile_.empty()) {
            addKlv_(unit);
        }
        if (observer_) {
            observer_(unit);
        }
    }
}

void AnnotatedClip::addKlv_(media::SideUnit const& unit)
{
    std::size_t const producer = producerOf_(unit.stream);
    for (telemetry::Packet& packet : klv_.decode(unit.stream, *unit.packet, unit.seconds)) {
        summary_.usable += packet.payload.empty() ? 0U : 1U;
        timeline_.add(producer, unit.seconds, std::move(packet.payload));
    }
}

std::vector<std::string> AnnotatedClip::remarks() const
{
    TelemetrySummary summary = summary_;
    if (telemetryFile_.empty()) {
        summary.counts = klv_.counts();
    }
    std::string const& source = telemetryFile_.empty() ? demuxer_.name() : telemetryFile_;
    std::vector<std::string> remarks = telemetryRemarks(source, summary);
    if (reader_.damaged() > 0) {
        remarks.push_back(demuxer_.name() + ": " + std::to_string(reader_.damaged()) +
                          " damaged video packets or pictures");
    }
    if (!demuxer_.readError().empty()) {
        remarks.push_back(demuxer_.name() + ": reading ended early: " + demuxer_.readError());
    }
    if (!sizeChange_.empty()) {
        remarks.push_back(demuxer_.name() + ": " + sizeChange_);
    }
    return remarks;
}

std::runtime_error noPictures(std::string const& input)
{
    return std::runtime_error(input + (media::interrupted()
                                           ? ": interrupted before the first picture; start again"
                                           : ": holds no picture that can be decoded; give a clip with video"));
}

}  // namespace clip
