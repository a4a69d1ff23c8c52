// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The summary of a burn: gathered while it runs, written at its end.
#include "cli/burn_summary.h"

#include "cli/messages.h"
#include "cli/output_check.h"
#include "cli/program_end.h"
#include "cli/standard_output.h"
#include "media/output_file.h"
#include "telemetry/json_line.h"

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <sys/resource.h>

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

/// Writes the members of an object, one a line.
class Members {
public:
    Members(std::string& text, int level) : text_(text), indent_(static_cast<std::size_t>(level) * 2, ' ')
    {
        text_ += "{\n";
    }

    void begin(char const* name)
    {
        text_ += separator_ + indent_ + "\"" + name + "\": ";
        separator_ = ",\n";
    }
    void add(char const* name, std::string const& value)
    {
        begin(name);
        telemetry::appendJsonString(text_, value);
    }
    void add(char const* name, std::uint64_t value)
    {
        begin(name);
        text_ += std::to_string(value);
    }
    void addRounded(char const* name, double value, double perUnit)
    {
        begin(name);
        telemetry::appendJsonNumber(text_, std::round(value * perUnit) / perUnit);
    }
    void end() { text_ += "\n" + indent_.substr(2) + "}"; }

private:
    std::string& text_;
    std::string indent_;
    std::string separator_;
};

void appendTelemetry(std::string& text, clip::TelemetryCounts const& counts)
{
    Members members(text, 2);
    members.add("streams", counts.streams);
    members.add("packets", counts.packets);
    members.add("badChecksums", counts.klv.badChecksums);
    members.add("droppedPackets", counts.klv.truncated);
    members.add("damagedSets", counts.klv.damagedSets);
    members.add("foreignPackets", counts.klv.foreignKeys);
    members.end();
}

void appendLive(std::string& text, clip::LiveCounts const& counts)
{
    Members members(text, 2);
    members.add("droppedPictures", counts.dropped);
    members.add("reopened", counts.reopened);
    members.end();
}

void appendWarnings(std::string& text, BurnReport const& report)
{
    text += '[';
    std::string separator = "\n";
    for (std::string const& warning : report.warnings) {
        text += separator + "    ";
        telemetry::appendJsonString(text, warning);
        separator = ",\n";
    }
    text += report.warnings.empty() ? "]" : "\n  ]";
}

double secondsOf(timeval const& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

UsedResources usedSince(Clock::time_point begin)
{
    constexpr double kKiBPerMiB = 1024.0;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return {secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
            std::chrono::duration<double>(Clock::now() - begin).count(),
            static_cast<double>(usage.ru_maxrss) / kKiBPerMiB};
}

/// Where the summary goes.
class SummaryPlace {
public:
    explicit SummaryPlace(BurnOptions const& options)
    {
        std::string const& path = options.summary;
        if (path.empty()) {
            return;
        }
        if (path != "-" && media::isAddress(path)) {
            throw WrongUsage("--summary " + path + ": give the name of a file, or - for standard output");
        }
        if (path == "-" && (options.output == "-" || options.output.rfind("pipe:", 0) == 0)) {
            throw WrongUsage("--summary -: standard output carries the video already; give the name of a file");
        }
        refuseToReplace(path, options.input, options.config, options.telemetry.file);
        refuseSameOutputs(path, options.output);
        file_.emplace(path);
    }

    void write(std::string const& text)
    {
        if (!file_) {
            return;
        }
        if (file_->path() == "-") {
            writeLine(text.substr(0, text.size() - 1));
            flushOutput();
            return;
        }
        writeFile_(text);
        file_->commit();
    }

private:
    void writeFile_(std::string const& text)
    {
        std::FILE* const file = std::fopen(file_->writePath().c_str(), "wb");
        bool written = file != nullptr && std::fwrite(text.data(), 1, text.size(), file) == text.size();
        int reason = errno;
        if (file != nullptr && std::fclose(file) != 0) {
            reason = written ? errno : reason;
            written = false;
        }
        if (!written) {
            throw std::runtime_error(media::writeFailure(file_->path(), std::strerror(reason), reason));
        }
    }

    std::optional<media::OutputFile> file_;
};

}  // namespace

void warnAll(BurnReport& report, std::vector<std::string> const& remarks)
{
    noteAll(remarks);
    for (std::string const& remark : remarks) {
        if (report.warnings.size() < BurnReport::kMostWarnings) {
            report.warnings.push_back(remark);
        } else {
            ++report.warningsLeftOut;
        }
    }
}

std::string summaryText(BurnOptions const& options, BurnReport const& report, UsedResources const& used)
{
    constexpr double kMicro = 1e6;
    constexpr double kMilli = 1e3;
    constexpr double kTenth = 1e1;
    std::string text;
    Members members(text, 1);
    members.add("input", options.input);
    members.add("output", options.output);
    members.add("exitCode", static_cast<std::uint64_t>(report.exitCode));
    members.add("error", report.error);
    members.add("frames", report.frames);
    members.addRounded("videoSeconds", report.videoSeconds, kMicro);
    members.addRounded("processorSeconds", used.processorSeconds, kMilli);
    members.addRounded("wallSeconds", used.wallSeconds, kMilli);
    members.addRounded("peakMemoryMiB", used.peakMemoryMiB, kTenth);
    members.begin("telemetry");
    appendTelemetry(text, report.telemetry);
    if (report.live) {
        members.begin("live");
        appendLive(text, *report.live);
    }
    members.begin("warnings");
    appendWarnings(text, report);
    members.add("warningsLeftOut", report.warningsLeftOut);
    members.end();
    return text + "\n";
}

int summarised(BurnOptions const& options, std::function<int(BurnReport&)> const& burn)
{
    Clock::time_point const begin = Clock::now();
    SummaryPlace place(options);
    BurnReport report;
    try {
        report.exitCode = burn(report);
    } catch (...) {
        Failure const failure = currentFailure();
        report.exitCode = failure.exitCode;
        report.error = failure.text;
        try {
            place.write(summaryText(options, report, usedSince(begin)));
        } catch (std::exception const& second) {
            note(second.what());  // the burn's own failure counts
        }
        throw;
    }
    place.write(summaryText(options, report, usedSince(begin)));
    return report.exitCode;
}

}  // namespace cli
