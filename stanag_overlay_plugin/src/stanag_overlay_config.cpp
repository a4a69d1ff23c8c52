// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reads the configuration text into block records. It runs once per configuration and is forgiving by
// design: every odd piece is ignored, clamped or read as a neutral value, and nothing is reported.
#include "stanag_overlay_config.h"

#include "overlay_numbers.h"
#include "stanag_overlay_condition.h"

#include "SwJson.h"

#include <algorithm>
#include <cmath>
#include <ios>
#include <locale>
#include <sstream>
#include <string_view>
#include <utility>

namespace stanag_overlay {

namespace {

constexpr std::int32_t kMinDecimals = -1;
constexpr std::int32_t kMaxDecimals = 12;
constexpr std::int32_t kMinTextSize = 6;
constexpr std::int32_t kMaxTextSize = 256;
constexpr std::int32_t kMinThickness = 1;
constexpr std::int32_t kMaxThickness = 16;
constexpr std::int32_t kMinUpdateInterval = 1;
constexpr std::int32_t kMaxUpdateInterval = 120;
constexpr std::size_t kColorTextLength = 7;  // "#rrggbb"

// A member that is null counts as present.
bool has(SwJsonObject const& object, std::string_view key)
{
    return object.contains(key);
}

void asString(SwJsonObject const& object, std::string_view key, std::string& out)
{
    SwJsonValue const& value = object[key];
    if (value.isString()) {
        out = value.stringRef();
    }
}

// Texts never arrive here as numbers: the reader has already given "12" and "true" their kinds.
std::int32_t asInteger(SwJsonValue const& value)
{
    switch (value.type()) {
    case SwJsonValue::Int:
        return low32Signed(value.toInt());
    case SwJsonValue::Double:
        return isWhole(value.toDouble()) ? low32Signed(truncateToInt64(value.toDouble()))
                                         : truncateToInt32(value.toDouble());
    case SwJsonValue::Bool:
        return value.toBool() ? 1 : 0;
    default:
        return 0;
    }
}

void asIntClamp(SwJsonObject const& object, std::string_view key, std::int32_t& out, std::int32_t min, std::int32_t max)
{
    if (has(object, key)) {
        out = std::clamp(asInteger(object[key]), min, max);
    }
}

bool isTrue(SwJsonValue const& value)
{
    switch (value.type()) {
    case SwJsonValue::Bool:
        return value.toBool();
    case SwJsonValue::Int:
        return value.toInt() != 0;
    case SwJsonValue::Double:
        return value.toDouble() != 0.0;
    default:
        return false;
    }
}

void asTruth(SwJsonObject const& object, std::string_view key, bool& out)
{
    if (has(object, key)) {
        out = isTrue(object[key]);
    }
}

// Reads the digits as a stream in the "C" locale does: leading blanks, a sign and a "0x" prefix are
// taken, reading stops at the first other byte, and without a digit the colour is black.
void parseColor(std::string const& text, std::uint8_t& r, std::uint8_t& g, std::uint8_t& b)
{
    if (text.size() != kColorTextLength || text.front() != '#') {
        return;
    }
    std::istringstream digits(text.substr(1));
    digits.imbue(std::locale::classic());
    std::uint32_t rgb = 0;
    digits >> std::hex >> rgb;
    r = static_cast<std::uint8_t>((rgb >> 16U) & 0xFFU);
    g = static_cast<std::uint8_t>((rgb >> 8U) & 0xFFU);
    b = static_cast<std::uint8_t>(rgb & 0xFFU);
}

void readBound(SwJsonObject const& object, std::string_view key, double& out, bool& present)
{
    if (!has(object, key)) {
        return;
    }
    SwJsonValue const& value = object[key];
    switch (value.type()) {
    case SwJsonValue::String:
        if (!parseLeadingDouble(value.stringRef(), out)) {
            present = false;
            return;
        }
        break;
    case SwJsonValue::Int:
        out = low32Signed(value.toInt());
        break;
    case SwJsonValue::Double:
        out = isWhole(value.toDouble()) ? low32Signed(truncateToInt64(value.toDouble())) : value.toDouble();
        break;
    case SwJsonValue::Bool:
        out = value.toBool() ? 1.0 : 0.0;
        break;
    default:
        out = 0.0;
        break;
    }
    present = std::isfinite(out);
}

TimestampUnit timestampUnitNamed(std::string_view name)
{
    if (name == "s") {
        return TimestampUnit::Seconds;
    }
    if (name == "us") {
        return TimestampUnit::Microseconds;
    }
    return TimestampUnit::Milliseconds;
}

void readInvalidValues(SwJsonValue const& list, std::vector<std::string>& out)
{
    if (!list.isArray()) {
        return;
    }
    for (SwJsonValue const& item : list.toArray()) {
        if (!item.isObject() && !item.isArray()) {
            out.push_back(item.toString());
        }
    }
}

void parseFormatOverride(std::string const& name, SwJsonObject const& object, OverlayCfg& record)
{
    FormatSpec spec;
    asTruth(object, "date", spec.date);
    if (has(object, "decimals")) {
        spec.decimals = asInteger(object["decimals"]);
    }
    asTruth(object, "trimTrailingZeros", spec.trimTrailingZeros);
    if (has(object, "dateFormat")) {
        spec.dateFormat = object["dateFormat"].toString();
    }
    if (has(object, "timestampUnit")) {
        spec.timestampUnit = timestampUnitNamed(object["timestampUnit"].toString());
    }
    if (has(object, "timezone")) {
        spec.localTime = object["timezone"].toString() == "local";
    }
    asString(object, "missingPlaceholder", spec.missingPlaceholder);
    readInvalidValues(object["invalidValues"], spec.invalidValues);
    readDurationMs(object, "holdLastMs", spec.holdLastNs);
    readDurationMs(object, "refreshEveryMs", spec.refreshEveryNs);
    readBound(object, "minValue", spec.minValue, spec.hasMin);
    readBound(object, "maxValue", spec.maxValue, spec.hasMax);
    // Equal bounds are how a form says "no bounds"; they never mean "exactly this value".
    if (spec.hasMin && spec.hasMax && spec.minValue == spec.maxValue) {
        spec.hasMin = false;
        spec.hasMax = false;
    }
    record.formats.emplace(name, std::move(spec));
}

// A coordinate of an odd kind is 0, not the default: unlike the opacity below.
float asFraction(SwJsonValue const& value)
{
    switch (value.type()) {
    case SwJsonValue::Int:
        return std::clamp(static_cast<float>(value.toInt()), 0.0F, 1.0F);
    case SwJsonValue::Double:
        return std::clamp(static_cast<float>(value.toDouble()), 0.0F, 1.0F);
    case SwJsonValue::Bool:
        return value.toBool() ? 1.0F : 0.0F;
    default:
        return 0.0F;
    }
}

void readPosition(SwJsonObject const& item, OverlayCfg& record)
{
    if (!item["position"].isObject()) {
        return;
    }
    SwJsonObject const& position = item["position"].toObject();
    if (has(position, "x")) {
        record.posX = asFraction(position["x"]);
    }
    if (has(position, "y")) {
        record.posY = asFraction(position["y"]);
    }
}

void readOpacity(SwJsonValue const& value, float& out)
{
    if (value.isInt()) {
        out = static_cast<float>(std::clamp<std::int64_t>(value.toInt(), 0, 1));
    } else if (value.isDouble()) {
        out = static_cast<float>(std::clamp(value.toDouble(), 0.0, 1.0));
    }
}

void readUpdateInterval(SwJsonObject const& item, std::int32_t& out)
{
    if (!has(item, "updateEveryNFrames")) {
        return;
    }
    SwJsonValue const& value = item["updateEveryNFrames"];
    std::int64_t frames = kMinUpdateInterval;
    if (value.isInt()) {
        frames = low32Signed(value.toInt());
    } else if (value.isDouble()) {
        frames = truncateToInt64(value.toDouble());
    }
    out = static_cast<std::int32_t>(std::clamp<std::int64_t>(frames, kMinUpdateInterval, kMaxUpdateInterval));
}

void readFormats(SwJsonObject const& item, OverlayCfg& record)
{
    if (!item["formats"].isObject()) {
        return;
    }
    for (auto const& [name, format] : item["formats"].toObject()) {
        if (format.isObject()) {
            parseFormatOverride(name, format.toObject(), record);
        }
    }
}

OverlayCfg readOverlay(SwJsonObject const& item)
{
    OverlayCfg record;
    asString(item, "formatString", record.formatString);
    asIntClamp(item, "decimals", record.decimals, kMinDecimals, kMaxDecimals);
    asTruth(item, "trimTrailingZeros", record.trimTrailingZeros);
    asString(item, "missingPlaceholder", record.missingPlaceholder);
    OverlayConditionEvaluator().parse(item, record.condition);
    readFormats(item, record);

    std::string color;
    asString(item, "textColor", color);
    parseColor(color, record.textR, record.textG, record.textB);
    asIntClamp(item, "textSize", record.textSize, kMinTextSize, kMaxTextSize);
    asIntClamp(item, "thickness", record.thickness, kMinThickness, kMaxThickness);
    readPosition(item, record);

    color.clear();
    asString(item, "bgColor", color);
    parseColor(color, record.bgR, record.bgG, record.bgB);
    readOpacity(item["bgAlpha"], record.bgAlpha);
    readUpdateInterval(item, record.updateEveryNFrames);
    return record;
}

}  // namespace

std::vector<OverlayCfg> OverlayConfigParser::parse(std::string const& text) const
{
    std::vector<OverlayCfg> records;
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(SwString(text), SwString(), error);
    // After an error the root is null, so unreadable text ends here like any other root that is no object.
    if (!document.isObject()) {
        return records;
    }
    SwJsonValue const& overlay = document.object()["overlay"];
    if (!overlay.isArray()) {
        return records;
    }
    records.reserve(overlay.toArray().size());
    for (SwJsonValue const& item : overlay.toArray()) {
        if (item.isObject()) {
            records.push_back(readOverlay(item.toObject()));
        }
    }
    return records;
}

}  // namespace stanag_overlay
