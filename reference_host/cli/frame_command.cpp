// frame: one annotated picture of a clip as PNG.
#include "cli/commands.h"
#include "cli/config_file.h"
#include "cli/messages.h"
#include "cli/output_check.h"
#include "clip/annotated_clip.h"
#include "imaging/imaging_access.h"
#include "media/png_writer.h"

#include <array>
#include <cstdio>
#include <stdexcept>

namespace cli {
namespace {

std::string secondsText(double seconds)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.3f s", seconds);
    return text.data();
}

/// Finds the picture that is shown at the asked time: the last one at or before it, and not the last of
/// all when the clip is over by then.
class MomentSearch {
public:
    MomentSearch(FrameOptions const& options, clip::AnnotatedClip& clip) : options_(options), clip_(clip) {}

    clip::ClipFrame find()
    {
        // The pictures before are shown to the plugin too, for what it holds from one to the next; texts
        // that are only recorded cost nothing.
        imaging::recordTexts(clip_.painter(), [](imaging::DrawnText const&) {});
        std::optional<clip::ClipFrame> shown;
        double first = 0.0;
        while (std::optional<clip::ClipFrame> frame = clip_.next()) {
            if (!shown) {
                first = frame->seconds;
            } else if (frame->seconds - first > options_.atSeconds + frame::kSameMoment) {
                return std::move(*shown);
            } else {
                clip_.annotate(*shown);
            }
            shown = std::move(frame);
        }
        return atTheEnd_(std::move(shown), first);
    }

private:
    clip::ClipFrame atTheEnd_(std::optional<clip::ClipFrame> last, double first) const
    {
        if (!last) {
            throw clip::noPictures(options_.input);
        }
        double const end = last->seconds - first + 1.0 / av_q2d(clip_.demuxer().frameRate());
        if (options_.atSeconds >= end) {
            throw std::runtime_error(options_.input + ": has no picture at " + secondsText(options_.atSeconds) +
                                     ": it ends at " + secondsText(end) + "; give an earlier time");
        }
        return std::move(*last);
    }

    FrameOptions const& options_;
    clip::AnnotatedClip& clip_;
};

}  // namespace

void runFrame(FrameOptions const& options)
{
    refuseToReplace(options.output, options.input, options.config, options.telemetry.file);
    ConfigFile const config = readConfig(options.config);
    clip::AnnotatedClip clip(options.input, options.telemetry, config.text);
    clip::ClipFrame const frame = MomentSearch(options, clip).find();
    imaging::recordTexts(clip.painter(), nullptr);
    auto const picture = clip.annotate(frame);
    media::writePng(options.output, imaging::planesOf(*picture), clip.traits().color);
    noteAll(clip.remarks());
}

}  // namespace cli
