// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// burn: draws the telemetry into every picture of a clip and writes a new clip, with the telemetry
// streams and the sound copied beside it.
#include "cli/address_check.h"
#include "cli/burn_summary.h"
#include "cli/commands.h"
#include "cli/config_file.h"
#include "cli/messages.h"
#include "cli/output_check.h"
#include "clip/clip_seek.h"
#include "clip/clip_writer.h"
#include "media/interrupt.h"
#include "media/muxer.h"
#include "media/progress.h"

#include <cstdint>
#include <optional>

namespace cli {

namespace {

/// Draws and writes every picture of the range; gives the place of the last one.
media::FramePlace burnPictures(BurnOptions const& options, clip::AnnotatedClip& clip, clip::ClipWriter& writer,
                               BurnReport& report)
{
    double const shownSeconds = 1.0 / av_q2d(clip.demuxer().frameRate());
    media::Progress progress(!options.noProgress, clip::secondsOf(options.range, clip));
    media::FramePlace last;
    std::optional<double> first;
    while (std::optional<clip::ClipFrame> const frame = clip::nextOf(clip, options.range)) {
        writer.addPicture(*frame, clip.annotate(*frame));
        first = first.value_or(frame->seconds);
        last = *frame;
        report.videoSeconds = frame->seconds - *first + shownSeconds;
        report.telemetry = clip.telemetryCounts();
        progress.update(++report.frames, frame->seconds - *first);
    }
    return last;
}

/// Telemetry and sound go as far as the range or the clip; after an interrupt, no further than they were written
/// beside the pictures.
void finish(BurnOptions const& options, clip::AnnotatedClip& clip, clip::ClipWriter& writer)
{
    bool const isWhole = !media::interrupted();
    std::optional<media::FramePlace> const behind = options.range.to ? clip.peek() : std::nullopt;
    // Ending the encoder takes a while, in which a termination may still come.
    auto const lastLook = [&options, &clip] {
        media::settleInterrupts();
        if (!clip.demuxer().isLive()) {
            refuseWhenTerminated(options.output);
        }
    };
    if (behind && isWhole) {
        writer.finishBefore(behind->seconds, lastLook);
    } else {
        writer.finish(isWhole, lastLook);
    }
}

/// What goes beside the output must not replace an input either.
void refuseSidecars(BurnOptions const& options, media::Demuxer const& demuxer)
{
    std::size_t const most = options.sidecar ? demuxer.streamsOf(media::StreamKind::Klv).size() : 0;
    for (std::size_t number = 0; number < most; ++number) {
        refuseToReplace(clip::sidecarPath(options.output, number), options.input, options.config,
                        options.telemetry.file);
    }
}

}  // namespace

void runBurn(BurnOptions const& options, BurnReport& report)
{
    media::requirePossible(options.encoding, media::containerFor(options.output));
    refuseToReplace(options.output, options.input, options.config, options.telemetry.file);
    refuseToFeedBack(options.output, options.input);
    ConfigFile const config = readConfig(options.config);
    auto const clip = clip::openRange(
        {options.input, options.telemetry, config.text, {options.encoding.threads}, options.look}, options.range);
    clip::ClipWriter writer(options.output, options.encoding, *clip, {options.sidecar, options.range.to});
    refuseSidecars(options, clip->demuxer());
    clip->setSideObserver([&writer](media::SideUnit& unit) { writer.addSide(unit); });
    media::FramePlace const last = burnPictures(options, *clip, writer, report);
    if (!clip->demuxer().isLive()) {
        refuseWhenTerminated(options.output);
    }
    finish(options, *clip, writer);
    warnAll(report, interruptRemark(options.output, clip->sinceFirst(last)));
    warnAll(report, writer.remarks());
    warnAll(report, clip->remarks());
}

}  // namespace cli
