// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plain formatter: correct by looking at it, slow without regret.
#include "plain_overlay_format.h"

#include "plain_overlay_number.h"

#include "sw_extended.h"

#include <cmath>
#include <ctime>
#include <iomanip>
#include <sstream>

namespace stanag_overlay::plain {

namespace {

std::string formatNumber(SwJsonValue const& value, int decimals, bool trim)
{
    long double number = 0.0L;
    if (!parseNumber(value, number)) {
        return value.toString();
    }
    std::ostringstream stream;
    stream << std::fixed << std::setprecision(decimals) << static_cast<double>(number);
    std::string text = stream.str();
    if (trim && text.find('.') != std::string::npos) {
        while (text.back() == '0') {
            text.pop_back();
        }
        if (text.back() == '.') {
            text.pop_back();
        }
    }
    return text;
}

std::string formatDate(long double number, FormatSpec const& spec)
{
    long double const scale = spec.timestampUnit == TimestampUnit::Seconds        ? 1000000.0L
                              : spec.timestampUnit == TimestampUnit::Milliseconds ? 1000.0L
                                                                                  : 1.0L;
    long double const limit = 9223372036854775807.0L;
    long double microseconds = sw_detail::extended(number * scale);
    if (std::isnan(microseconds)) {
        microseconds = 0.0L;
    }
    microseconds = microseconds > limit ? limit : microseconds < -limit ? -limit : microseconds;
    long long nanoseconds = 0;
    // The overflow's result is the wrapped product.
    static_cast<void>(__builtin_mul_overflow(std::llroundl(microseconds), 1000LL, &nanoseconds));
    std::time_t const seconds = nanoseconds / 1000000000;
    std::tm time{};
    if (spec.localTime) {
        localtime_r(&seconds, &time);
    } else {
        gmtime_r(&seconds, &time);
    }
    std::ostringstream stream;
    stream << std::put_time(&time, spec.dateFormat.c_str());
    return stream.str();
}

bool isInvalid(SwJsonValue const& value, FormatSpec const& spec)
{
    for (std::string const& invalid : spec.invalidValues) {
        long double number = 0.0L;
        long double other = 0.0L;
        if (parseNumber(value, number) && parseWhole(invalid, other)) {
            if (static_cast<double>(std::fabs(sw_detail::extended(number - other))) < 1e-9) {
                return true;
            }
        } else if (value.toString() == invalid) {
            return true;
        }
    }
    return false;
}

bool isOutside(SwJsonValue const& value, FormatSpec const& spec)
{
    long double number = 0.0L;
    if (!spec.hasMin && !spec.hasMax) {
        return false;
    }
    if (!parseNumber(value, number)) {
        return true;
    }
    return (spec.hasMin && static_cast<long double>(spec.minValue) > number) ||
           (spec.hasMax && static_cast<long double>(spec.maxValue) < number);
}

std::string heldOrMissing(FormatSpec const& spec, std::string const& key, OverlayRuntime const& runtime,
                          std::uint64_t nowNs)
{
    if (spec.holdLastNs != 0 && runtime.heldValues.count(key) != 0) {
        TimedText const& held = runtime.heldValues.at(key);
        if (held.timeNs != 0 && nowNs - held.timeNs <= spec.holdLastNs) {
            return held.text;
        }
    }
    return spec.missingPlaceholder;
}

std::string remembered(FormatSpec const& spec, std::string const& key, std::string text, OverlayRuntime& runtime,
                       std::uint64_t nowNs)
{
    if (spec.refreshEveryNs != 0) {
        bool const waits = runtime.refreshValues.count(key) != 0 && runtime.refreshValues.at(key).timeNs != 0 &&
                           nowNs - runtime.refreshValues.at(key).timeNs < spec.refreshEveryNs;
        if (waits) {
            text = runtime.refreshValues.at(key).text;
        } else {
            runtime.refreshValues[key] = TimedText{text, nowNs};
        }
    }
    if (spec.holdLastNs != 0) {
        runtime.heldValues[key] = TimedText{text, nowNs};
    }
    return text;
}

bool endsName(char byte)
{
    return std::string("\t\n\r \"'(),/:;<>[\\]{}").find(byte) != std::string::npos;
}

}  // namespace

std::string lookupFormatted(SwJsonObject const* root, std::string const& key, OverlayCfg const& cfg,
                            OverlayRuntime& runtime, std::uint64_t nowNs)
{
    bool const present = root != nullptr && root->contains(key);
    if (cfg.formats.count(key) == 0) {
        if (!present) {
            return cfg.missingPlaceholder;
        }
        SwJsonValue const& value = (*root)[key];
        return cfg.decimals >= 0 ? formatNumber(value, cfg.decimals, cfg.trimTrailingZeros) : value.toString();
    }
    FormatSpec const& spec = cfg.formats.at(key);
    if (!present || isInvalid((*root)[key], spec) || isOutside((*root)[key], spec)) {
        return heldOrMissing(spec, key, runtime, nowNs);
    }
    SwJsonValue const& value = (*root)[key];
    if (spec.date) {
        long double number = 0.0L;
        if (!parseNumber(value, number)) {
            return value.toString();
        }
        return remembered(spec, key, formatDate(number, spec), runtime, nowNs);
    }
    std::string const text =
        spec.decimals < 0 ? value.toString() : formatNumber(value, spec.decimals, spec.trimTrailingZeros);
    return remembered(spec, key, text, runtime, nowNs);
}

std::string expandTemplate(std::string const& tmpl, SwJsonObject const* root, OverlayCfg const& cfg,
                           OverlayRuntime& runtime, std::uint64_t nowNs, std::vector<std::string> const& availableKeys)
{
    std::ostringstream out;
    if (tmpl.empty()) {
        for (std::size_t i = 0; root != nullptr && root->size() != 0 && i < availableKeys.size(); ++i) {
            out << (i == 0 ? "" : "\n") << availableKeys[i] << ": "
                << lookupFormatted(root, availableKeys[i], cfg, runtime, nowNs);
        }
        return out.str();
    }
    std::size_t const n = tmpl.size();
    std::size_t i = 0;
    while (i < n) {
        if (tmpl[i] != '%') {
            out << tmpl[i++];
        } else if (i + 1 == n) {
            out << '%';
            break;
        } else if (tmpl[i + 1] == '%') {
            out << '%';
            i += 2;
        } else if (tmpl[i + 1] == '{') {
            std::size_t j = i + 2;
            while (j < n && tmpl[j] != '}') {
                ++j;
            }
            if (j == n) {
                out << tmpl.substr(i);
                break;
            }
            out << lookupFormatted(root, tmpl.substr(i + 2, j - i - 2), cfg, runtime, nowNs);
            i = j + 1;
        } else {
            std::size_t j = i + 1;
            while (j < n && !endsName(tmpl[j])) {
                ++j;
            }
            if (j == i + 1) {
                out << '%';
            } else {
                out << lookupFormatted(root, tmpl.substr(i + 1, j - i - 1), cfg, runtime, nowNs);
            }
            i = j;
        }
    }
    return out.str();
}

}  // namespace stanag_overlay::plain
