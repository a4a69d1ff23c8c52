// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// burn --live: draws the telemetry into live pictures as they come and sends them on, until it is told to stop or
// nothing comes any more.
#include "cli/address_check.h"
#include "cli/burn_summary.h"
#include "cli/commands.h"
#include "cli/config_file.h"
#include "cli/live_counters.h"
#include "cli/messages.h"
#include "cli/output_check.h"
#include "cli/service_notice.h"
#include "clip/live_clip.h"
#include "clip/live_writer.h"
#include "media/interrupt.h"
#include "media/live_input.h"
#include "media/muxer.h"
#include "media/waiting.h"

#include <chrono>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

/// How long nothing may happen until signals and reports are looked at.
constexpr auto kLookEvery = std::chrono::milliseconds(50);

void refuseWhatIsNotLive(BurnOptions const& options)
{
    if (options.input != "-" && options.input.find("://") == std::string::npos) {
        throw WrongUsage("--live: " + options.input +
                         " is no address; give one such as udp://127.0.0.1:5000, or no --live");
    }
    if (options.range.from || options.range.to) {
        throw WrongUsage("--live: live pictures have no range; leave out --from and --to");
    }
    if (options.sidecar) {
        throw WrongUsage("--live: telemetry goes with the pictures; leave out --sidecar, or send to a .ts");
    }
    if (!options.telemetry.file.empty()) {
        throw WrongUsage("--live: telemetry comes with the pictures; leave out --telemetry");
    }
}

/// Reports every ten seconds, and what has to be known at once.
class Reporter {
public:
    Reporter(std::string input, BurnReport& report, ServiceNotice& manager)
        : input_(std::move(input))
        , report_(report)
        , reports_(Clock::now())
        , manager_(manager)
    {
        manager_.ready();
    }

    void written(clip::LiveFrame const& frame, AVRational frameRate)
    {
        if (!frame.picture) {
            return;
        }
        Clock::time_point const now = Clock::now();
        manager_.alive(now);
        reports_.sent(std::chrono::duration<double>(now - frame.arrival).count());
        first_ = first_.value_or(frame.seconds);
        ++report_.frames;
        report_.videoSeconds = frame.seconds - *first_ + 1.0 / av_q2d(frameRate);
    }
    void look(clip::LiveClip& clip, clip::LiveWriter& writer)
    {
        report_.live = clip.counts();
        report_.telemetry = clip.telemetryCounts();
        warnAll(report_, clip.takeRemarks());
        warnAll(report_, writer.takeRemarks());
        if (reports_.isDue(Clock::now())) {
            say(clip);
        }
    }
    void say(clip::LiveClip const& clip)
    {
        std::string const line = reports_.take(clip.counts(), clip.telemetryAge());
        note(input_ + ": " + line);
        manager_.status(line);
    }
    /// No more pictures are read.
    void ending() { manager_.stopping(); }

private:
    std::string input_;
    BurnReport& report_;
    LiveReports reports_;
    ServiceNotice& manager_;
    std::optional<double> first_;  ///< when the first picture is shown
};

void burnUntilTheEnd(media::LiveInput& input, clip::LiveClip& clip, clip::LiveWriter& writer, Reporter& reporter)
{
    for (;;) {
        if (std::optional<clip::LiveFrame> const frame = clip.next(Clock::now() + kLookEvery)) {
            writer.addPicture(*frame, clip);
            reporter.written(*frame, clip.frameRate());
        } else if (input.queue().ended()) {
            return;  // a signal ends reading, what has been read is still drawn
        }
        reporter.look(clip, writer);
    }
}

/// Null when an interrupt comes before somebody who receives. A service that waits for him does its work: nobody shall
/// start it again.
std::unique_ptr<clip::LiveWriter> openOutput(BurnOptions const& options, BurnReport& report, ServiceNotice& manager)
{
    auto const waits = [&manager] {
        manager.ready();
        manager.alive(Clock::now());
    };
    try {
        return std::make_unique<clip::LiveWriter>(options.output, options.encoding, waits);
    } catch (media::EndedWhileOpening const& ended) {
        manager.stopping();
        warnAll(report, {ended.what()});
        return nullptr;
    }
}

bool isTransportStream(AVOutputFormat const& container)
{
    return std::strcmp(container.name, "mpegts") == 0;
}

}  // namespace

void runLiveBurn(BurnOptions const& options, BurnReport& report)
{
    report.live.emplace();
    refuseWhatIsNotLive(options);
    AVOutputFormat const& container = media::containerFor(options.output);
    media::requirePossible(options.encoding, container);
    refuseToReplace(options.output, options.input, options.config, "");
    refuseToFeedBack(options.output, options.input);
    ConfigFile const config = readConfig(options.config);
    ServiceNotice manager;
    std::unique_ptr<clip::LiveWriter> const opened = openOutput(options, report, manager);
    if (!opened) {
        return;
    }
    clip::LiveWriter& writer = *opened;
    media::setTellWaiting(nullptr);  // live inputs have lines of their own, which tell more
    media::LiveInput input({options.input, options.giveUpSeconds, !isTransportStream(container)});
    clip::LiveClip clip(input.queue(), {options.input, options.telemetry, options.telemetryWaitMs / 1e3, config.text,
                                        options.encoding.threads, options.look});
    clip.setSideObserver(
        [&writer](media::SideUnit& unit, media::LiveProgram const& program) { writer.addSide(unit, program); });
    Reporter reporter(options.input, report, manager);
    burnUntilTheEnd(input, clip, writer, reporter);
    reporter.ending();
    writer.finish();
    reporter.look(clip, writer);
    reporter.say(clip);
    if (!media::interrupted() && !input.queue().failure().empty()) {
        throw std::runtime_error(input.queue().failure());
    }
}

}  // namespace cli
