// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Formats of single keys: each member by its own rule, the two bounds together, the conversions of dates.
#include "check/format_check.h"

#include "check/reading_rules.h"
#include "check/written_config.h"
#include "sw_number_text.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>

namespace check {
namespace {

void checkDecimals(Member const& decimals, Findings& findings)
{
    becomesNumber(decimals, integerHeld(decimals.read), std::numeric_limits<std::int32_t>::min(),
                  std::numeric_limits<std::int32_t>::max(), findings);
}

void checkDuration(Member const& duration, Findings& findings)
{
    becomesNumber(duration, millisecondsHeld(duration.read), 0, 600000, findings);
}

void checkUnit(Member const& unit, Findings& findings)
{
    becomesWord(unit, {"s", "ms", "us"}, "ms", findings);
}

void checkZone(Member const& zone, Findings& findings)
{
    becomesWord(zone, {"utc", "local"}, "utc", findings);
}

void checkDateFormat(Member const& pattern, Findings& findings)
{
    std::string const held = pattern.read.toString();
    if (!isQuoted(pattern.written) || literalText(pattern.written) != held) {
        findings.push_back({pattern.place, shown(pattern.written) + " becomes \"" + printable(held) + '"'});
    }
    for (std::string const& conversion : unknownConversions(held)) {
        findings.push_back(
            {pattern.place, '"' + printable(conversion) +
                                (conversion == "%" ? "\" at the end is not shown"
                                                   : "\" is no date conversion and is shown as it stands")});
    }
}

void checkInvalidValues(Member const& list, Findings& findings)
{
    if (!list.read.isArray()) {
        findings.push_back({list.place, shown(list.written) + " is no array and is ignored"});
        return;
    }
    for (std::size_t index = 0; index < list.read.toArray().size(); ++index) {
        Member const item = list.item(index);
        if (item.read.isObject() || item.read.isArray()) {
            findings.push_back({item.place, shown(item.written) + " is skipped"});
        } else {
            becomesOperandText(item, findings);
        }
    }
}

void checkBound(Member const& bound, Findings& findings)
{
    std::optional<double> const held = boundHeld(bound.read);
    if (!held) {
        std::string const text = literalText(bound.written);
        std::size_t const start = std::min(text.find_first_not_of(" \t\n\v\f\r+-"), text.size());
        bool const isOutOfRange = text.find_first_of("0123456789.", start) == start;
        findings.push_back({bound.place, shown(bound.written) + (isOutOfRange ? " is out of range" : " is no number") +
                                             " and is ignored: there is no bound"});
    } else if (literalNumber(bound.written) != held) {
        findings.push_back({bound.place, shown(bound.written) + " becomes " + sw_text::numberText(*held)});
    }
}

std::optional<double> boundOf(Member const& format, char const* name)
{
    return format.has(name) ? boundHeld(format.member(name).read) : std::nullopt;
}

void checkBounds(Member const& format, Findings& findings)
{
    std::optional<double> const least = boundOf(format, "minValue");
    std::optional<double> const most = boundOf(format, "maxValue");
    if (least && least == most) {
        findings.push_back({format.place, "\"minValue\" " + shown(format.member("minValue").written) +
                                              " and \"maxValue\" " + shown(format.member("maxValue").written) +
                                              " are equal: there is no bound at all"});
        return;
    }
    for (char const* const name : {"minValue", "maxValue"}) {
        if (format.has(name)) {
            checkBound(format.member(name), findings);
        }
    }
    if (least && most && *least > *most) {
        findings.push_back({format.place, "\"minValue\" " + sw_text::numberText(*least) + " is above \"maxValue\" " +
                                              sw_text::numberText(*most) + ": every value is out of range"});
    }
}

void checkFormat(Member const& format, Findings& findings)
{
    if (!format.read.isObject()) {
        findings.push_back({format.place, shown(format.written) + " is no object and is ignored"});
        return;
    }
    checkMembers(format,
                 {{"date", becomesSwitch},
                  {"decimals", checkDecimals},
                  {"trimTrailingZeros", becomesSwitch},
                  {"dateFormat", checkDateFormat},
                  {"timestampUnit", checkUnit},
                  {"timezone", checkZone},
                  {"missingPlaceholder", keepsDefaultText},
                  {"invalidValues", checkInvalidValues},
                  {"holdLastMs", checkDuration},
                  {"refreshEveryMs", checkDuration},
                  {"minValue", nullptr},
                  {"maxValue", nullptr}},
                 findings);
    checkBounds(format, findings);
}

/// What may follow a percent sign, after no modifier, after "E" and after "O".
bool isConversion(char modifier, char letter)
{
    constexpr std::string_view kPlain = "%ABCDFGHIMPRSTUVWXYZabcdeghjklmnprstuwxyz";
    constexpr std::string_view kAfterE = "%CPRTXYZcnprstuxyz";
    constexpr std::string_view kAfterO = "%BCGHIMPRSTUVWZbdeghjklmnprstuwyz";
    std::string_view const known = modifier == 'E' ? kAfterE : modifier == 'O' ? kAfterO : kPlain;
    return known.find(letter) != std::string_view::npos;
}

}  // namespace

std::vector<std::string> unknownConversions(std::string const& pattern)
{
    // A zero byte ends the pattern.
    std::string_view const text = std::string_view(pattern).substr(0, pattern.find('\0'));
    std::vector<std::string> unknown;
    for (std::size_t at = text.find('%'); at < text.size(); at = text.find('%', at)) {
        std::size_t const start = at++;
        char const modifier = at < text.size() && (text[at] == 'E' || text[at] == 'O') ? text[at++] : '\0';
        bool const isCutOff = at >= text.size();
        if (isCutOff || !isConversion(modifier, text[at++])) {
            std::string const conversion(isCutOff ? "%" : text.substr(start, at - start));
            if (std::find(unknown.begin(), unknown.end(), conversion) == unknown.end()) {
                unknown.push_back(conversion);
            }
        }
    }
    return unknown;
}

void checkFormats(Member const& formats, Findings& findings)
{
    if (!formats.read.isObject()) {
        findings.push_back({formats.place, shown(formats.written) + " is no object and is ignored"});
        return;
    }
    for (auto const& [key, format] : formats.read.toObject()) {
        checkFormat(formats.member(key), findings);
    }
}

}  // namespace check
