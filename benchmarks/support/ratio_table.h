// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Collects the times of a benchmark run and writes them as ratios: times differ from machine to machine,
// ratios of one run much less. What else runs on the machine only ever adds, so the least of the repetitions counts.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

/// Prints as the console does and keeps the least repetition of each benchmark by name.
class LeastReporter : public benchmark::ConsoleReporter {
public:
    struct Least {
        double cpuNs = 0.0;
        std::map<std::string, double> counters;
    };

    void ReportRuns(std::vector<Run> const& runs) override;
    /// Null when no benchmark of that name has run.
    Least const* find(std::string const& name) const;

private:
    void keep_(Run const& run);

    std::map<std::string, Least> times_;
};

/// Takes an argument that begins with `option`, such as "--table=", out of the arguments and gives what follows; ""
/// without one.
std::string takeOption(int& argc, char** argv, std::string const& option);

/// What one line of the table compares.
struct RatioRow {
    std::string title;
    std::string ours;      ///< name of a benchmark
    std::string opponent;  ///< name of a benchmark
    double atLeast = 0.0;  ///< how many times faster than the opponent we want to be; 0: no target
};

/// A Markdown table: how many times faster than the opponent, the target, whether it is met, then both
/// times in microseconds. Rows whose benchmarks have not run are left out.
void writeRatios(std::ostream& out, LeastReporter const& times, std::vector<RatioRow> const& rows);

/// How the cost grows with the size of the work.
struct GrowthRow {
    std::string title;
    std::string smaller;      ///< name of a benchmark
    std::string larger;       ///< name of a benchmark
    double sizeFactor = 1.0;  ///< how many times more work the larger one has
};

/// A Markdown table: how many times more work, and how many times more time it takes.
void writeGrowth(std::ostream& out, LeastReporter const& times, std::vector<GrowthRow> const& rows);

/// A Markdown table of single benchmarks: time and allocations per run.
void writeTimes(std::ostream& out, LeastReporter const& times, std::vector<std::string> const& names);
