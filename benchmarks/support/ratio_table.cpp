// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The table that ends a benchmark run.
#include "ratio_table.h"

#include <cstdio>

namespace {

constexpr double kNsPerUs = 1000.0;

std::string digits(char const* format, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

}  // namespace

void LeastReporter::ReportRuns(std::vector<Run> const& runs)
{
    for (Run const& run : runs) {
        if (run.run_type == Run::RT_Iteration) {
            keep_(run);
        }
    }
    ConsoleReporter::ReportRuns(runs);
}

void LeastReporter::keep_(Run const& run)
{
    double const cpuNs = run.GetAdjustedCPUTime() * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
    auto const [found, isFirst] = times_.try_emplace(run.run_name.str());
    Least& least = found->second;
    if (!isFirst && least.cpuNs <= cpuNs) {
        return;
    }
    least.cpuNs = cpuNs;
    for (auto const& [name, counter] : run.counters) {
        least.counters[name] = counter.value;
    }
}

LeastReporter::Least const* LeastReporter::find(std::string const& name) const
{
    auto const found = times_.find(name);
    return found == times_.end() ? nullptr : &found->second;
}

std::string takeOption(int& argc, char** argv, std::string const& option)
{
    std::string value;
    int kept = 0;
    for (int i = 0; i < argc; ++i) {
        std::string const argument = argv[i];
        if (argument.compare(0, option.size(), option) == 0) {
            value = argument.substr(option.size());
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    return value;
}

void writeRatios(std::ostream& out, LeastReporter const& times, std::vector<RatioRow> const& rows)
{
    out << "| what | times faster | target | met | ours, us | opponent, us |\n"
           "| --- | ---: | ---: | --- | ---: | ---: |\n";
    for (RatioRow const& row : rows) {
        LeastReporter::Least const* const ours = times.find(row.ours);
        LeastReporter::Least const* const opponent = times.find(row.opponent);
        if (ours == nullptr || opponent == nullptr) {
            continue;
        }
        double const ratio = opponent->cpuNs / ours->cpuNs;
        out << "| " << row.title << " | " << digits("%.1f", ratio) << " | ";
        if (row.atLeast > 0.0) {
            out << digits("%g", row.atLeast) << " | " << (ratio >= row.atLeast ? "yes" : "no");
        } else {
            out << "- | -";
        }
        out << " | " << digits("%.3f", ours->cpuNs / kNsPerUs) << " | " << digits("%.3f", opponent->cpuNs / kNsPerUs)
            << " |\n";
    }
}

void writeGrowth(std::ostream& out, LeastReporter const& times, std::vector<GrowthRow> const& rows)
{
    out << "| growth of | times more work | times more time | linear at worst |\n| --- | ---: | ---: | --- |\n";
    for (GrowthRow const& row : rows) {
        LeastReporter::Least const* const smaller = times.find(row.smaller);
        LeastReporter::Least const* const larger = times.find(row.larger);
        if (smaller == nullptr || larger == nullptr) {
            continue;
        }
        double const factor = larger->cpuNs / smaller->cpuNs;
        out << "| " << row.title << " | " << digits("%g", row.sizeFactor) << " | " << digits("%.1f", factor) << " | "
            << (factor <= row.sizeFactor ? "yes" : "no") << " |\n";
    }
}

void writeTimes(std::ostream& out, LeastReporter const& times, std::vector<std::string> const& names)
{
    out << "| benchmark | us | allocations |\n| --- | ---: | ---: |\n";
    for (std::string const& name : names) {
        LeastReporter::Least const* const least = times.find(name);
        if (least == nullptr) {
            continue;
        }
        auto const allocations = least->counters.find("allocs");
        out << "| " << name << " | " << digits("%.3f", least->cpuNs / kNsPerUs) << " | "
            << (allocations == least->counters.end() ? "-" : digits("%.1f", allocations->second)) << " |\n";
    }
}
