// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reading of times for --at, --from and --to.
#include "cli/clip_time.h"

#include "sw_text.h"

#include "cli/messages.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

namespace cli {
namespace {

constexpr double kMost = 1e9;

/// The parts between colons.
std::vector<std::string> partsOf(std::string const& text)
{
    std::vector<std::string> parts(1);
    for (char const c : text) {
        if (c == ':') {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

std::optional<double> numberOf(std::string const& text)
{
    double number = 0.0;
    char const* const end = text.data() + text.size();
    auto const read = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

/// A part of a time with colons: digits, with a fraction only in the last part.
std::optional<double> partOf(std::string const& text, bool last)
{
    std::string const whole = text.substr(0, text.find('.'));
    if (whole.empty() || !std::all_of(whole.begin(), whole.end(), sw_detail::isDigit) || (!last && whole != text)) {
        return std::nullopt;
    }
    return numberOf(text);
}

/// The seconds of a time with colons; empty when it is none.
std::optional<double> clockOf(std::vector<std::string> const& parts)
{
    constexpr double kSixty = 60.0;
    double seconds = 0.0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        std::optional<double> const part = partOf(parts[i], i + 1 == parts.size());
        if (!part || (i > 0 && *part >= kSixty)) {
            return std::nullopt;
        }
        seconds = seconds * kSixty + *part;
    }
    return seconds;
}

}  // namespace

double parseClipTime(std::string const& option, std::string const& text)
{
    std::vector<std::string> const parts = partsOf(text);
    bool const isClock = parts.size() == 2 || parts.size() == 3;
    std::optional<double> const seconds = parts.size() == 1 ? numberOf(text) : isClock ? clockOf(parts) : std::nullopt;
    if (!seconds) {
        throw WrongUsage(option + " " + text + ": give seconds or [HH:]MM:SS[.fff], for example 90.5 or 00:01:30.5");
    }
    if (!(*seconds >= 0.0 && *seconds <= kMost)) {
        throw WrongUsage(option + ": give a number from 0 to 1000000000");
    }
    return *seconds;
}

}  // namespace cli
