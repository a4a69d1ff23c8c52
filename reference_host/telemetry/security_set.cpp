// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Items of ST 0102 to keys and back, and the marking line made of them.
#include "telemetry/security_set.h"

#include "telemetry/klv_bytes_writer.h"
#include "telemetry/klv_reader.h"
#include "telemetry/st0601_value.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace telemetry {
namespace {

using enum Rule;

constexpr std::string_view kLevelCodeKey = "security_classification_code";
constexpr std::string_view kLevelKey = "security_classification";
constexpr std::string_view kCountryKey = "security_country";
constexpr std::string_view kControlKey = "security_sci";
constexpr std::string_view kCaveatsKey = "security_caveats";
constexpr std::string_view kReleaseKey = "security_releasing";

/// Never the lowest level by guess.
constexpr std::string_view kUnknownLevel = "UNKNOWN";

// MISB ST 0102; the items that it no longer uses (15 to 21) are left out.
constexpr TableRow kTable[] = {
    {1, kLevelCodeKey, "security classification, code", Count, 1},
    {2, "security_country_method", "coding of the classifying and the releasing countries, code", Count, 1},
    {3, kCountryKey, "classifying country, with // in front as it is sent", Text},
    {4, kControlKey, "compartments and handling controls (SCI, SHI)", Text},
    {5, kCaveatsKey, "caveats", Text},
    {6, kReleaseKey, "countries to which it may be released", Text},
    {7, "security_classified_by", "who classified it", Text},
    {8, "security_derived_from", "from what the classification is derived", Text},
    {9, "security_reason", "reason of the classification", Text},
    {10, "security_declassification_date", "day of declassification, YYYYMMDD", Text},
    {11, "security_marking_system", "classification and marking system", Text},
    {12, "security_object_country_method", "coding of the object countries, code", Count, 1},
    {13, "security_object_country", "countries in the picture", WideText},
    {14, "security_comments", "comments on the classification", Text},
    {22, "security_version", "version of ST 0102 used", Count, 2},
    {23, "security_country_method_date", "version of the coding of security_country, YYYY-MM-DD", Text},
    {24, "security_object_country_method_date", "version of the coding of security_object_country, YYYY-MM-DD", Text},
};

constexpr std::string_view kLevels[] = {"", "UNCLASSIFIED", "RESTRICTED", "CONFIDENTIAL", "SECRET", "TOP SECRET"};

constexpr std::string_view kCountryMethods[] = {"",
                                                "ISO-3166 two letter",
                                                "ISO-3166 three letter",
                                                "FIPS 10-4 two letter",
                                                "FIPS 10-4 four letter",
                                                "ISO-3166 numeric",
                                                "STANAG 1059 two letter",
                                                "STANAG 1059 three letter",
                                                "",
                                                "",
                                                "FIPS 10-4 mixed",
                                                "ISO-3166 mixed",
                                                "STANAG 1059 mixed",
                                                "GENC two letter",
                                                "GENC three letter",
                                                "GENC numeric",
                                                "GENC mixed"};

/// Numbered otherwise than the methods of the other countries.
constexpr auto kObjectMethods = [] {
    std::array<std::string_view, 65> names{};
    constexpr std::string_view kFirst[] = {"",
                                           "ISO-3166 two letter",
                                           "ISO-3166 three letter",
                                           "ISO-3166 numeric",
                                           "FIPS 10-4 two letter",
                                           "FIPS 10-4 four letter",
                                           "STANAG 1059 two letter",
                                           "STANAG 1059 three letter"};
    std::copy(std::begin(kFirst), std::end(kFirst), names.begin());
    names[13] = "GENC two letter";
    names[14] = "GENC three letter";
    names[15] = "GENC numeric";
    names[64] = "GENC administrative subdivision";
    return names;
}();

constexpr CodeRow kCodes[] = {
    {kLevelCodeKey, kLevelKey, kLevels},
    {"security_country_method", "security_country_method_text", kCountryMethods},
    {"security_object_country_method", "security_object_country_method_text", kObjectMethods},
};

TableRow const* rowOf(std::uint32_t tag)
{
    auto const* const row =
        std::find_if(std::begin(kTable), std::end(kTable), [tag](TableRow const& each) { return each.tag == tag; });
    return row == std::end(kTable) ? nullptr : row;
}

void addNames(SwJsonObject& keys)
{
    for (CodeRow const& row : kCodes) {
        auto const code = std::as_const(keys).find(row.codeKey);
        if (code == std::as_const(keys).end()) {
            continue;
        }
        std::string_view name = nameOf(row, code->second.toInt());
        if (name.empty() && row.textKey == kLevelKey) {
            name = kUnknownLevel;
        }
        if (!name.empty()) {
            keys.insertOrAssign(row.textKey, SwJsonValue(name));
        }
    }
}

std::string_view trimmed(std::string_view text, std::string_view ends)
{
    std::size_t const first = text.find_first_not_of(ends);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(ends) - first + 1);
}

/// A group of the line: senders begin or end some with the slashes that part them.
std::string_view groupOf(SwJsonObject const& keys, std::string_view key)
{
    return trimmed(keys[key].stringRef(), " \t\r\n/");
}

bool isUnitedStates(std::string_view country)
{
    constexpr std::string_view kCodesOfIt[] = {"US", "USA", "840"};
    return std::find(std::begin(kCodesOfIt), std::end(kCodesOfIt), country) != std::end(kCodesOfIt);
}

/// "CAN USA" to "REL TO CAN, USA". Text that already speaks of the release is taken as it is.
std::string releaseGroup(std::string_view countries)
{
    if (countries.substr(0, 4) == "REL ") {
        return std::string(countries);
    }
    constexpr std::string_view kParting = " \t\r\n,;";
    std::string group;
    while (!(countries = trimmed(countries, kParting)).empty()) {
        std::size_t const end = std::min(countries.find_first_of(kParting), countries.size());
        group += (group.empty() ? "REL TO " : ", ") + std::string(countries.substr(0, end));
        countries.remove_prefix(end);
    }
    return group;
}

}  // namespace

std::span<TableRow const> securityTable()
{
    return kTable;
}

std::span<CodeRow const> securityCodes()
{
    return kCodes;
}

std::span<std::string_view const> objectCountryMethods()
{
    return kObjectMethods;
}

std::string markingLine(SwJsonObject const& keys)
{
    std::string_view const country = groupOf(keys, kCountryKey);
    std::string const& level = keys[kLevelKey].stringRef();
    std::string line = country.empty() || isUnitedStates(country) ? "" : "//" + std::string(country) + " ";
    line += level.empty() ? kUnknownLevel : std::string_view(level);
    std::string const release = releaseGroup(groupOf(keys, kReleaseKey));
    for (std::string_view const group :
         {groupOf(keys, kControlKey), groupOf(keys, kCaveatsKey), std::string_view(release)}) {
        if (!group.empty()) {
            line += "//" + std::string(group);
        }
    }
    return line;
}

SwJsonObject unreadableMarking()
{
    SwJsonObject keys{{kLevelKey, SwJsonValue(kUnknownLevel)}};
    keys.insertOrAssign(kSecurityLineKey, SwJsonValue(markingLine(keys)));
    return keys;
}

std::optional<SwJsonObject> readSecuritySet(std::span<std::uint8_t const> set)
{
    SwJsonObject keys;
    KlvItemReader items({KlvKind::Security, set, 0});
    while (auto const item = items.next()) {
        TableRow const* const row = rowOf(item->tag);
        if (row == nullptr) {
            continue;
        }
        SwJsonValue value = decodeValue(*row, item->data);
        if (!value.isNull()) {
            keys.insertOrAssign(row->key, std::move(value));
        }
    }
    if (items.damaged()) {
        return std::nullopt;
    }
    if (!keys.empty()) {
        addNames(keys);
        keys.insertOrAssign(kSecurityLineKey, SwJsonValue(markingLine(keys)));
    }
    return keys;
}

std::vector<std::uint8_t> writeSecuritySet(SwJsonObject const& payload)
{
    std::vector<std::uint8_t> set;
    for (TableRow const& row : kTable) {
        appendItem(set, row.tag, encodeValue(row, payload[row.key]));
    }
    return set;
}

}  // namespace telemetry
