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

void MedianReporter::ReportRuns(std::vector<Run> const& runs)
{
    for (Run const& run : runs) {
        if (run.aggregate_name == "median") {
            Median& median = medians_[run.run_name.str()];
            median.cpuNs = run.GetAdjustedCPUTime() * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
            for (auto const& [name, counter] : run.counters) {
                median.counters[name] = counter.value;
            }
        }
    }
    ConsoleReporter::ReportRuns(runs);
}

MedianReporter::Median const* MedianReporter::find(std::string const& name) const
{
    auto const found = medians_.find(name);
    return found == medians_.end() ? nullptr : &found->second;
}

std::string takeTableOption(int& argc, char** argv)
{
    std::string const option = "--table=";
    std::string file;
    int kept = 0;
    for (int i = 0; i < argc; ++i) {
        std::string const argument = argv[i];
        if (argument.compare(0, option.size(), option) == 0) {
            file = argument.substr(option.size());
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    return file;
}

void writeRatios(std::ostream& out, MedianReporter const& medians, std::vector<RatioRow> const& rows)
{
    out << "| what | times faster | target | met | ours, us | opponent, us |\n"
           "| --- | ---: | ---: | --- | ---: | ---: |\n";
    for (RatioRow const& row : rows) {
        MedianReporter::Median const* const ours = medians.find(row.ours);
        MedianReporter::Median const* const opponent = medians.find(row.opponent);
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

void writeGrowth(std::ostream& out, MedianReporter const& medians, std::vector<GrowthRow> const& rows)
{
    out << "| growth of | times more work | times more time | linear at worst |\n| --- | ---: | ---: | --- |\n";
    for (GrowthRow const& row : rows) {
        MedianReporter::Median const* const smaller = medians.find(row.smaller);
        MedianReporter::Median const* const larger = medians.find(row.larger);
        if (smaller == nullptr || larger == nullptr) {
            continue;
        }
        double const factor = larger->cpuNs / smaller->cpuNs;
        out << "| " << row.title << " | " << digits("%g", row.sizeFactor) << " | " << digits("%.1f", factor) << " | "
            << (factor <= row.sizeFactor ? "yes" : "no") << " |\n";
    }
}

void writeTimes(std::ostream& out, MedianReporter const& medians, std::vector<std::string> const& names)
{
    out << "| benchmark | us | allocations |\n| --- | ---: | ---: |\n";
    for (std::string const& name : names) {
        MedianReporter::Median const* const median = medians.find(name);
        if (median == nullptr) {
            continue;
        }
        auto const allocations = median->counters.find("allocs");
        out << "| " << name << " | " << digits("%.3f", median->cpuNs / kNsPerUs) << " | "
            << (allocations == median->counters.end() ? "-" : digits("%.1f", allocations->second)) << " |\n";
    }
}
