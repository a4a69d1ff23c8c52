// burn: draws the telemetry into every picture of a clip and writes a new clip, with the telemetry
// streams and the sound copied beside it.
#include "cli/commands.h"
#include "cli/config_file.h"
#include "cli/messages.h"
#include "cli/output_check.h"
#include "clip/annotated_clip.h"
#include "clip/clip_writer.h"
#include "media/interrupt.h"
#include "media/muxer.h"
#include "media/progress.h"

namespace cli {

void runBurn(BurnOptions const& options)
{
    media::containerFor(options.output);
    refuseToReplace(options.output, options.input, options.config, options.telemetry.file);
    ConfigFile const config = readConfig(options.config);
    clip::AnnotatedClip clip(options.input, options.telemetry, config.text);
    clip::ClipWriter writer(options.output, options.encoding, clip);
    clip.setSideObserver([&writer](media::SideUnit& unit) { writer.addSide(unit); });
    {
        media::Progress progress(!options.noProgress, clip.demuxer().durationSeconds());
        std::optional<double> first;
        while (std::optional<clip::ClipFrame> const frame = clip.next()) {
            first = first.value_or(frame->seconds);
            writer.addPicture(*frame, *clip.annotate(*frame));
            progress.update(frame->number + 1, frame->seconds - *first);
        }
    }
    writer.finish(!media::interrupted());
    noteAll(writer.remarks());
    noteAll(clip.remarks());
}

}  // namespace cli
