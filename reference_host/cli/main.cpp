// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The program: reads the command line, runs one command, turns what went wrong into one line and an exit
// code (0 done, 1 input or configuration unusable or something to be found by check, 2 wrong usage, 129 when the
// terminal has gone, 130 after Ctrl-C, 143 after SIGTERM).
#include "SwAny.h"
#include "check/suggestion.h"
#include "cli/address_check.h"
#include "cli/burn_summary.h"
#include "cli/clip_time.h"
#include "cli/commands.h"
#include "cli/messages.h"
#include "cli/program_end.h"
#include "cli/silent_cerr.h"
#include "media/encoder_choice.h"
#include "media/ffmpeg_types.h"
#include "media/interrupt.h"
#include "media/waiting.h"
#include "sw_number_text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace cli {
namespace {

/// What the chosen command will do; gives the exit code.
using Action = std::function<int()>;

/// An action that is done when it returns.
template <typename Run>
Action doneAfter(Run run)
{
    return [run] {
        run();
        return codeAfter(kDone);
    };
}

/// "2500000", "2500k" or "2.5M" in bits per second.
std::int64_t parseBitRate(std::string const& text)
{
    double number = 0.0;
    auto const [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    std::string const unit(end, text.data() + text.size());
    double const factor = unit.empty() ? 1.0 : unit == "k" ? 1e3 : unit == "M" ? 1e6 : 0.0;
    double const bits = number * factor;
    if (failure != std::errc() || !(bits >= 1000.0 && bits <= 1e10)) {
        throw WrongUsage("--bitrate " + text +
                         ": give bits per second from 1000 to 10000000000, for example 2500k or 4M");
    }
    return static_cast<std::int64_t>(bits);
}

void requireWithin(char const* option, double value, double least, double most)
{
    if (!(value >= least && value <= most)) {
        throw WrongUsage(std::string(option) + ": give a number from " + sw_text::numberText(least) + " to " +
                         sw_text::numberText(most));
    }
}

void parseSize(std::string const& text, SampleOptions& options)
{
    char const* const end = text.data() + text.size();
    auto const width = std::from_chars(text.data(), end, options.width);
    bool const crossed = width.ptr != end && *width.ptr == 'x';
    auto const height = std::from_chars(crossed ? width.ptr + 1 : end, end, options.height);
    constexpr int kMax = 16384;
    bool const read = width.ec == std::errc() && crossed && height.ec == std::errc() && height.ptr == end;
    if (!read || options.width < 1 || options.height < 1 || options.width > kMax || options.height > kMax) {
        throw WrongUsage("--size " + text + ": give width and height, for example 1280x720");
    }
}

/// The positional INPUT or the option -o.
CLI::Option* addPlace(CLI::App& command, char const* name, std::string& place, char const* description)
{
    return command.add_option(name, place, description)->check(CLI::Validator(addressFault, ""));
}

void addConfig(CLI::App& command, std::string& config)
{
    command.add_option("-c,--config", config, "configuration, a JSON file")->required()->type_name("CONFIG.json");
}

constexpr double kMaxSeconds = 1e9;

/// Takes numbers of this kind within these bounds; the library's own check lets not-a-number pass.
template <typename Number>
CLI::Validator within(Number least, Number most)
{
    auto const fault = [least, most](std::string const& text) {
        Number value{};
        bool const inside = CLI::detail::lexical_cast(text, value) && value >= least && value <= most;
        return inside ? "" : "give a number from " + sw_text::numberText(least) + " to " + sw_text::numberText(most);
    };
    return {fault, ""};
}

void addTelemetry(CLI::App& command, clip::TelemetryOptions& options)
{
    command
        .add_option(
            "--telemetry", options.file,
            "telemetry from a file instead of the clip's own: JSON Lines, the output of keys, raw KLV, or a clip "
            "with KLV")
        ->type_name("FILE");
    command
        .add_option("--telemetry-offset", options.offsetSeconds,
                    "show the telemetry this much later; negative: earlier")
        ->type_name("SECONDS")
        ->check(within(-kMaxSeconds, kMaxSeconds));
    command
        .add_option("--max-age", options.maxAgeSeconds,
                    "telemetry older than this counts as gone (default: 5, without limit for JSON Lines; 0: without "
                    "limit)")
        ->type_name("SECONDS")
        ->check(within(0.0, kMaxSeconds));
    command.add_option("--klv", options.stream, "which KLV stream: a PID such as 0x1f1, or the stream's number")
        ->type_name("STREAM");
}

void addLook(CLI::App& command, frame::Look& look)
{
    command
        .add_option("--font", look.font, "font of the texts, a family as fontconfig knows it (default: DejaVu Sans)")
        ->type_name("FAMILY");
    command
        .add_option("--outline", look.outline,
                    "dark rim around the texts, 0 to 32 pixels on 1080 lines and scaled like them (default: 0, none)")
        ->type_name("PX")
        ->check(within(0.0, frame::kWidestOutline));
}

/// --from and --to as they were written.
struct RangeTexts {
    std::optional<std::string> from;
    std::optional<std::string> to;
};

std::shared_ptr<RangeTexts> addRange(CLI::App& command)
{
    auto texts = std::make_shared<RangeTexts>();
    command.add_option("--from", texts->from, "start here: seconds or [HH:]MM:SS[.fff] after the first picture")
        ->type_name("TIME");
    command.add_option("--to", texts->to, "end before the picture that is shown then")->type_name("TIME");
    return texts;
}

clip::ClipRange rangeOf(RangeTexts const& texts)
{
    clip::ClipRange range;
    if (texts.from) {
        range.from = parseClipTime("--from", *texts.from);
    }
    if (texts.to) {
        range.to = parseClipTime("--to", *texts.to);
    }
    if (range.to && *range.to <= range.from.value_or(0.0)) {
        throw WrongUsage("--to " + *texts.to + ": give a time after that of --from, which is 0 without it");
    }
    return range;
}

void addEncoding(CLI::App& command, media::EncoderChoice& encoding, std::optional<std::string>& bitRate)
{
    constexpr double kMostCrf = 63.0;
    constexpr int kMostThreads = 256;
    command
        .add_option(
            "--video-codec", encoding.codecName,
            "encoder by its FFmpeg name: libx264 (default), libvpx-vp9 (default of .webm), libx265, ffv1, h264_nvenc, "
            "h264_vaapi, h264_qsv, ...")
        ->type_name("NAME");
    command
        .add_option("--preset", encoding.preset,
                    "speed against size, as the encoder names it (default for libx264 and libx265: veryfast)")
        ->type_name("NAME");
    auto* const rate = command.add_option("--bitrate", bitRate, "bits per second, for example 4M")->type_name("N");
    command.add_option("--crf", encoding.crf, "constant quality, lower is better (default: 20)")
        ->type_name("N")
        ->check(within(0.0, kMostCrf))
        ->excludes(rate);
    command
        .add_option("--threads", encoding.threads,
                    "threads of the decoder and of the encoder each (default: as many as there are processors)")
        ->type_name("N")
        ->check(within(1, kMostThreads));
}

void addLive(CLI::App& command, BurnOptions& options)
{
    constexpr double kMostWaitMs = 2000.0;
    auto* const live =
        command.add_flag("--live", options.live,
                         "INPUT is live: no waiting, opened again whenever it is lost, a line of counters "
                         "every ten seconds; SIGINT, SIGTERM and SIGHUP end it with exit code 0");
    command
        .add_option("--telemetry-wait", options.telemetryWaitMs,
                    "milliseconds that a live picture waits for its telemetry at most (default: 100)")
        ->type_name("MS")
        ->check(within(0.0, kMostWaitMs))
        ->needs(live);
    command
        .add_option("--give-up", options.giveUpSeconds,
                    "end with exit code 1 when no live picture has come for so long (default: 60; 0: never)")
        ->type_name("SECONDS")
        ->check(within(0.0, kMaxSeconds))
        ->needs(live);
}

void addBurn(CLI::App& app, Action& action)
{
    auto const options = std::make_shared<BurnOptions>();
    auto const bitRate = std::make_shared<std::optional<std::string>>();
    CLI::App* const command = app.add_subcommand("burn", "draw the telemetry into a clip");
    addPlace(*command, "INPUT", options->input, "clip or address; - is standard input")->required();
    addConfig(*command, options->config);
    addPlace(*command, "-o,--output", options->output, "new clip or address; the ending chooses the container")
        ->required()
        ->type_name("OUTPUT");
    addTelemetry(*command, options->telemetry);
    addLook(*command, options->look);
    addEncoding(*command, options->encoding, *bitRate);
    command->add_flag("--sidecar", options->sidecar,
                      "write telemetry that OUTPUT cannot carry to a .klv file beside it");
    command
        ->add_option("--summary", options->summary,
                     "write what was done, or why not, as JSON to a file; - is standard output")
        ->type_name("FILE.json");
    command->add_flag("--no-progress", options->noProgress, "no progress line on the terminal");
    auto const range = addRange(*command);
    addLive(*command, *options);
    command->callback([&action, options, bitRate, range] {
        action = [options, bitRate, range] {
            return summarised(*options, [options, bitRate, range](BurnReport& report) {
                options->range = rangeOf(*range);
                if (*bitRate) {
                    options->encoding.bitRate = parseBitRate(**bitRate);
                }
                if (options->live) {
                    runLiveBurn(*options, report);
                    return kDone;  // a signal is how live work ends
                }
                runBurn(*options, report);
                return codeAfter(kDone);
            });
        };
    });
}

void addFrame(CLI::App& app, Action& action)
{
    auto const options = std::make_shared<FrameOptions>();
    CLI::App* const command = app.add_subcommand("frame", "make one annotated picture");
    addPlace(*command, "INPUT", options->input, "clip or address; - is standard input")->required();
    addConfig(*command, options->config);
    auto const at = std::make_shared<std::string>();
    command->add_option("--at", *at, "seconds or [HH:]MM:SS[.fff] after the first picture")
        ->required()
        ->type_name("TIME");
    command->add_option("-o,--output", options->output, "the picture")->required()->type_name("OUT.png");
    addTelemetry(*command, options->telemetry);
    addLook(*command, options->look);
    command->callback([&action, options, at] {
        action = doneAfter([options, at] {
            options->atSeconds = parseClipTime("--at", *at);
            runFrame(*options);
        });
    });
}

void addKeys(CLI::App& app, Action& action)
{
    auto const options = std::make_shared<KeysOptions>();
    CLI::App* const command = app.add_subcommand("keys", "list the telemetry, one JSON line per packet");
    addPlace(*command, "INPUT", options->input, "clip, address, raw KLV; - is standard input")->required();
    command->add_flag("--derived", options->derived, "also the keys that are made only for those who name them");
    command->add_flag("--csv", options->csv, "a table, one row per packet and one column per key");
    addTelemetry(*command, options->telemetry);
    command->callback([&action, options] { action = doneAfter([options] { runKeys(*options); }); });
}

void addText(CLI::App& app, Action& action)
{
    auto const options = std::make_shared<TextOptions>();
    CLI::App* const command = app.add_subcommand("text", "list what would be drawn, one JSON line per frame");
    addPlace(*command, "INPUT", options->input, "clip or address; - is standard input")->required();
    addConfig(*command, options->config);
    addTelemetry(*command, options->telemetry);
    addLook(*command, options->look);
    auto const range = addRange(*command);
    command->callback([&action, options, range] {
        action = doneAfter([options, range] {
            options->range = rangeOf(*range);
            runText(*options);
        });
    });
}

void addSchema(CLI::App& app, Action& action)
{
    auto const options = std::make_shared<SchemaOptions>();
    CLI::App* const command = app.add_subcommand("schema", "print the JSON Schema of the configuration");
    addPlace(*command, "INPUT", options->input, "clip whose telemetry keys are listed in it");
    addTelemetry(*command, options->telemetry);
    command->callback([&action, options] { action = doneAfter([options] { runSchema(*options); }); });
}

void addCheck(CLI::App& app, Action& action)
{
    auto const options = std::make_shared<CheckOptions>();
    CLI::App* const command = app.add_subcommand("check", "tell what of a configuration would silently be changed");
    command->add_option("CONFIG", options->config, "configuration, a JSON file")->required();
    addPlace(*command, "INPUT", options->input, "clip that must deliver the keys, and on which blocks are placed");
    auto const at = std::make_shared<std::optional<std::string>>();
    command
        ->add_option(
            "--at", *at,
            "the picture on which blocks are placed: seconds or [HH:]MM:SS[.fff] after the first one (default: "
            "the first with any block)")
        ->type_name("TIME");
    addTelemetry(*command, options->telemetry);
    addLook(*command, options->look);
    command->footer("Exit code: 0 when everything is taken as it stands, 1 when something is found or CONFIG cannot be "
                    "used, 2 for wrong usage.");
    command->callback([&action, options, at] {
        action = [options, at] {
            if (*at) {
                options->atSeconds = parseClipTime("--at", **at);
            }
            return codeAfter(runCheck(*options) ? kDone : kFound);
        };
    });
}

void addEdit(CLI::App& app, Action& action)
{
    constexpr unsigned short kLastPort = 65535;
    auto const options = std::make_shared<EditOptions>();
    CLI::App* const command = app.add_subcommand("edit", "edit a configuration in the browser, with a preview");
    addPlace(*command, "INPUT", options->input, "clip in a file")->required();
    command->add_option("-c,--config", options->config, "configuration, a JSON file; a new one is made on saving")
        ->required()
        ->type_name("CONFIG.json");
    command->add_option("--port", options->port, "port on 127.0.0.1 (default: any free one)")
        ->type_name("N")
        ->check(within<unsigned short>(0, kLastPort));
    auto const noBrowser = std::make_shared<bool>(false);
    command->add_flag("--no-browser", *noBrowser, "only print the address");
    addTelemetry(*command, options->telemetry);
    addLook(*command, options->look);
    command->footer(
        "The address is for you alone: who has it can read the clip and write CONFIG.json. Ctrl-C (SIGINT) and "
        "SIGTERM end the editor with exit code 0.");
    command->callback([&action, options, noBrowser] {
        action = [options, noBrowser] {
            options->opensBrowser = !*noBrowser;
            runEdit(*options);
            return kDone;  // a signal is how it ends
        };
    });
}

void addSample(CLI::App& app, Action& action)
{
    auto const options = std::make_shared<SampleOptions>();
    auto const size = std::make_shared<std::string>("1280x720");
    CLI::App* const command = app.add_subcommand("sample", "make a short flight with telemetry");
    command->add_option("OUTPUT", options->output, "new clip, a .ts file")->required();
    command->add_option("--seconds", options->seconds, "length")->capture_default_str();
    command->add_option("--size", *size, "width and height")->capture_default_str()->type_name("WxH");
    command->add_option("--fps", options->framesPerSecond, "frames per second")->capture_default_str();
    command->add_option("--video-codec", options->videoCodec, "encoder")->type_name("NAME");
    command->callback([&action, options, size] {
        action = doneAfter([options, size] {
            parseSize(*size, *options);
            requireWithin("--seconds", options->seconds, 0.01, 86400.0);
            requireWithin("--fps", options->framesPerSecond, 0.1, 240.0);
            runSample(*options);
        });
    });
}

void prepareProcess()
{
    // A reader that closes its end shows as a failed write, not as a signal.
    std::signal(SIGPIPE, SIG_IGN);
    // So does a file that grows beyond the limit of this process.
    std::signal(SIGXFSZ, SIG_IGN);
    media::catchInterrupts();
    media::quietLibraries();
    media::setTellWaiting(noteWaiting);
    // The type registry announces itself on its first use; nobody at a terminal needs that.
    SilentCerr const silent;
    SwAny::registerAllType();
}

bool isOption(std::string const& word)
{
    return word.size() > 1 && word.front() == '-';
}

/// "there is no option --form; did you mean "--from"?"
std::string noSuchOption(CLI::App const& command, std::string const& word)
{
    std::string const name = word.substr(0, word.find('='));
    std::vector<std::string> known;
    for (CLI::Option const* const option : command.get_options()) {
        known.push_back(option->get_name());
    }
    return "there is no option " + name + check::didYouMean(name, known);
}

/// What the parser refuses, in words that name what was written.
std::string faultText(CLI::App const& command, CLI::ParseError const& failure)
{
    std::string const text = failure.what();
    if (dynamic_cast<CLI::ExtrasError const*>(&failure) != nullptr) {
        std::vector<std::string> const extras = command.remaining(true);
        auto const option = std::find_if(extras.begin(), extras.end(), isOption);
        if (option != extras.end()) {
            return noSuchOption(command, *option);
        }
        return extras.empty() ? text : extras.front() + ": nothing is expected here";
    }
    // "--crf: 1 required N missing"
    if (dynamic_cast<CLI::ArgumentMismatch const*>(&failure) != nullptr) {
        return text.substr(0, text.find(':')) + ": give a value";
    }
    return text;
}

/// One line for what the parser refuses, with the way to more.
std::string usageLine(CLI::App const& app, CLI::ParseError const& failure)
{
    std::vector<CLI::App*> const chosen = app.get_subcommands();
    if (chosen.empty()) {
        return std::string(failure.what()) + "; see stanag-overlay --help";
    }
    std::string const command = chosen.front()->get_name();
    return command + ": " + faultText(*chosen.front(), failure) + "; see stanag-overlay " + command + " --help";
}

/// Throws WrongUsage when the first word is neither a command nor an option of the program itself.
void requireCommand(CLI::App const& app, std::string const& word)
{
    std::string const more = "; stanag-overlay --help lists them";
    if (word.empty()) {
        throw WrongUsage("give a command" + more);
    }
    auto const isNamed = [&word](CLI::App const* command) { return command->check_name(word); };
    if (!isOption(word) && app.get_subcommands(isNamed).empty()) {
        throw WrongUsage(word + ": no such command" + more);
    }
    bool const isKnown = app.get_option_no_throw(word) != nullptr;
    if (isOption(word) && !isKnown) {
        throw WrongUsage(noSuchOption(app, word) + more);
    }
}

int run(int argc, char** argv)
{
    CLI::App app("Burns telemetry text into video.", "stanag-overlay");
    app.require_subcommand(1);
    app.set_version_flag("--version", "stanag-overlay " OVERLAY_VERSION);
    Action action;
    addBurn(app, action);
    addFrame(app, action);
    addKeys(app, action);
    addText(app, action);
    addSchema(app, action);
    addCheck(app, action);
    addEdit(app, action);
    addSample(app, action);
    requireCommand(app, argc > 1 ? argv[1] : "");
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& failure) {
        if (failure.get_exit_code() == 0) {
            return app.exit(failure);  // help or version
        }
        throw WrongUsage(usageLine(app, failure));
    }
    return action();
}

}  // namespace
}  // namespace cli

int main(int argc, char** argv)
{
    try {
        cli::prepareProcess();
        return cli::run(argc, argv);
    } catch (...) {
        cli::Failure const failure = cli::currentFailure();
        if (!failure.text.empty()) {
            cli::note(failure.text);
        }
        return failure.exitCode;
    }
}
