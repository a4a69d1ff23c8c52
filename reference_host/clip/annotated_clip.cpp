// The way of a picture through the host: reader, converter, telemetry, plugin.
#include "clip/annotated_clip.h"

#include "FrameTime.h"
#include "imaging/imaging_access.h"
#include "media/interrupt.h"

#include <stdexcept>
#include <utility>

namespace clip {
AnnotatedClip::AnnotatedClip(std::string const& input, TelemetryOptions const& telemetry, std::string const& config)
    : demuxer_(input)
    , telemetry_(demuxer_, telemetry)
    , reader_(demuxer_, telemetry_.aheadSeconds())
    , clock_(reader_.timeBase())
{
    renderer_.plugin().setConfig(config);
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
        telemetry_.begin(unit->seconds);
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
    frame.telemetry = telemetry_.choose(frame.seconds, frame.number);
    return frame;
}

std::shared_ptr<zelvo::ZelvoPicture> AnnotatedClip::annotate(ClipFrame const& frame)
{
    FrameTime const time(frame.timeNs);
    // The plugin takes frame number 0 for "none yet".
    return renderer_.render(frame.number + 1, frame.picture, telemetry_.producers(), frame.telemetry);
}

void AnnotatedClip::learnTraits_(AVFrame const& frame)
{
    traits_ = media::traitsOf(frame);
    imaging::setColor(renderer_.painter(),
                      traits_.color.bt709 ? imaging::ColorMatrix::Bt709 : imaging::ColorMatrix::Bt601,
                      traits_.color.fullRange);
}

void AnnotatedClip::takeSideUnits_()
{
    for (media::SideUnit& unit : reader_.takeSideUnits()) {
        telemetry_.add(unit);
        if (observer_) {
            observer_(unit);
        }
    }
}

std::vector<std::string> AnnotatedClip::remarks() const
{
    std::vector<std::string> remarks = telemetry_.remarks();
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
