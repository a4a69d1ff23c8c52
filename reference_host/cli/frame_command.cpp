// frame: one annotated picture of a clip as PNG.
#include "cli/commands.h"
#include "cli/config_file.h"
#include "cli/messages.h"
#include "cli/output_check.h"
#include "clip/clip_seek.h"
#include "imaging/imaging_access.h"
#include "media/interrupt.h"
#include "media/png_writer.h"

namespace cli {

void runFrame(FrameOptions const& options)
{
    refuseToReplace(options.output, options.input, options.config, options.telemetry.file);
    ConfigFile const config = readConfig(options.config);
    auto const clip =
        clip::openShownAt({options.input, options.telemetry, config.text, {}, options.look}, options.atSeconds);
    std::optional<clip::ClipFrame> const frame = clip->next();
    if (!frame) {
        throw clip::noPictures(options.input);
    }
    auto const picture = clip->annotate(*frame);
    media::settleInterrupts();
    refuseWhenTerminated(options.output);
    media::writePng(options.output, imaging::planesOf(*picture), clip->traits().color);
    noteAll(clip->remarks());
}

}  // namespace cli
