// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Outputs that would replace an input, whatever the names by which both are given.
#include "cli/output_check.h"

#include "media/output_file.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace cli {
namespace {

void refuseSame(std::string const& output, std::string const& source, char const* role)
{
    std::error_code notThere;
    if (std::filesystem::equivalent(source, output, notThere)) {
        throw std::runtime_error(output + ": is the " + role + " itself; give another name for the output");
    }
}

}  // namespace

void refuseToReplace(std::string const& output, std::string const& input, std::string const& config,
                     std::string const& telemetry)
{
    if (media::isAddress(output)) {
        return;
    }
    refuseSame(output, input, "input");
    refuseSame(output, config, "configuration");
    refuseSame(output, telemetry, "telemetry file");
}

void refuseSameOutputs(std::string const& summary, std::string const& output)
{
    if (media::isAddress(summary) || media::isAddress(output)) {
        return;
    }
    refuseSame(summary, output, "output");
    std::error_code ignored;
    auto const name = std::filesystem::weakly_canonical(summary, ignored);
    if (!name.empty() && name == std::filesystem::weakly_canonical(output, ignored)) {
        throw std::runtime_error(summary + ": is the output itself; give another name for the summary");
    }
}

}  // namespace cli
