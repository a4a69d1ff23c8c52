// Collects the medians of a benchmark run and writes them as ratios: times differ from machine to machine,
// ratios of one run much less.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

/// Prints as the console does and keeps each benchmark's median by name.
class MedianReporter : public benchmark::ConsoleReporter {
public:
    struct Median {
        double cpuNs = 0.0;
        std::map<std::string, double> counters;
    };

    void ReportRuns(std::vector<Run> const& runs) override;
    /// Null when no benchmark of that name has run.
    Median const* find(std::string const& name) const;

private:
    std::map<std::string, Median> medians_;
};

/// Takes --table=FILE, where the table shall go, out of the arguments; "" without one.
std::string takeTableOption(int& argc, char** argv);

/// What one line of the table compares.
struct RatioRow {
    std::string title;
    std::string ours;      ///< name of a benchmark
    std::string opponent;  ///< name of a benchmark
    double atLeast = 0.0;  ///< how many times faster than the opponent we want to be; 0: no target
};

/// A Markdown table: how many times faster than the opponent, the target, whether it is met, then both
/// times in microseconds. Rows whose benchmarks have not run are left out.
void writeRatios(std::ostream& out, MedianReporter const& medians, std::vector<RatioRow> const& rows);

/// How the cost grows with the size of the work.
struct GrowthRow {
    std::string title;
    std::string smaller;      ///< name of a benchmark
    std::string larger;       ///< name of a benchmark
    double sizeFactor = 1.0;  ///< how many times more work the larger one has
};

/// A Markdown table: how many times more work, and how many times more time it takes.
void writeGrowth(std::ostream& out, MedianReporter const& medians, std::vector<GrowthRow> const& rows);

/// A Markdown table of single benchmarks: time and allocations per run.
void writeTimes(std::ostream& out, MedianReporter const& medians, std::vector<std::string> const& names);
