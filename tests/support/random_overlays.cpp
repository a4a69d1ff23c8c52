// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Numbers and texts come from lists of known troubles as often as from chance.
#include "random_overlays.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>
#include <set>

namespace stanag_overlay {

void RandomOverlays::chooseKeys()
{
    keys_ = usualKeys();
    std::size_t const wanted = oneIn(2) ? 0 : below(oneIn(3) ? 300 : 40);
    std::set<std::string> known(keys_.begin(), keys_.end());
    for (std::size_t i = 0; i < wanted; ++i) {
        std::string const another = name();
        if (known.insert(another).second) {
            keys_.push_back(another);
        }
    }
    shown_ = keys_;
}

// Objects compare eight bytes at once: names that share them, begin each other, or differ by zero bytes only.
std::string RandomOverlays::name()
{
    std::string number = std::to_string(below(400));
    switch (below(6)) {
    case 0:
        return number;
    case 1:
        return "telemetry_" + number;
    case 2:
        return "a_rather_long_name_of_a_sensor_value_" + number;
    case 3:
        return "sensor" + std::string(below(4), '\0') + (oneIn(2) ? "" : number);
    case 4: {
        std::string const other = oneOf(keys_);
        return oneIn(2) ? other.substr(0, below(other.size() + 1)) : other + static_cast<char>(below(256));
    }
    default: {
        std::string bytes;
        for (std::size_t i = below(12); i > 0; --i) {
            bytes += oneOf<char>({'\0', 'a', '\x7F', '\x80', '\xFF'});
        }
        return bytes;
    }
    }
}

double RandomOverlays::number()
{
    switch (below(6)) {
    case 0:
        return oneOf<double>({0.0, -0.0, 0.5, 2.5, 0.05, 100.0, 1e-9, 999.9995, 1e22, 5e-324, 1.7976931348623157e308,
                              std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN()});
    case 1: {
        std::uint64_t const bits = random_();
        double any = 0.0;
        std::memcpy(&any, &bits, sizeof any);
        return any;
    }
    case 2:
        return static_cast<double>(below(4000)) / 8.0 - 250.0;
    case 3:
        return static_cast<double>(below(2000000000)) * oneOf<double>({1.0, 1.0e3, 1.0e6}) + 0.25;
    default:
        return std::uniform_real_distribution<double>(-1000.0, 1000.0)(random_);
    }
}

std::string RandomOverlays::text()
{
    return oneOf<std::string>({"",       "abc",  "12",   " 12", "12 ",           "1.50",
                               "-0.0",   "nan",  "-nan", "inf", "0x1A",          "1e400",
                               "1e5000", "true", "null", "{}",  "1700000000123", "9007199254740993",
                               "1,5",    "%a"});
}

SwJsonValue RandomOverlays::value()
{
    switch (below(10)) {
    case 0:
        return nullptr;
    case 1:
        return oneIn(2);
    case 2:
        return static_cast<std::int64_t>(random_());
    case 3:
        return static_cast<std::int64_t>(below(200)) - 100;
    case 4:
        return text();
    case 5:
        return oneIn(2) ? SwJsonValue(SwJsonObject{{"a", 1}}) : SwJsonValue(SwJsonArray{1});
    default:
        return number();
    }
}

SwJsonObject RandomOverlays::payload()
{
    SwJsonObject object;
    std::vector<std::string> names = keys_;
    std::shuffle(names.begin(), names.end(), random_);
    std::size_t const quarters = 1 + below(4);
    for (std::string const& key : names) {
        if (below(4) < quarters) {
            object[key] = value();
        }
    }
    return object;
}

std::string RandomOverlays::datePattern()
{
    std::string pattern;
    for (std::size_t parts = below(6); parts > 0; --parts) {
        switch (below(4)) {
        case 0:
            pattern += oneOf<std::string>({"%H", "%M", "%S", "%d", "%m", "%Y"});
            break;
        case 1:
            pattern += std::string("%") + oneOf<std::string>({"E", "O"}) +
                       oneOf<char>({'c', 'C', 'd', 'e', 'H', 'I', 'm', 'M', 'S', 'u', 'V', 'x', 'X', 'y', 'Y', 'Z'});
            break;
        case 2:
            pattern += oneOf<std::string>({"%a", "%A", "%b", "%B", "%c", "%C", "%D", "%e", "%F", "%g", "%G",
                                           "%h", "%I", "%j", "%n", "%p", "%r", "%R", "%s", "%t", "%T", "%u",
                                           "%U", "%V", "%w", "%W", "%x", "%X", "%y", "%z", "%Z", "%%"});
            break;
        default:
            pattern +=
                oneOf<std::string>({" ", ":", "-", "T", "\xC3\xA9", "%", "%Q", "%E", "plain", std::string(1, '\0')});
            break;
        }
    }
    return pattern;
}

FormatSpec RandomOverlays::format()
{
    FormatSpec result;
    result.date = oneIn(3);
    result.decimals = oneIn(3) ? -1 : static_cast<int>(oneIn(10) ? below(400) : below(8));
    result.trimTrailingZeros = oneIn(2);
    if (oneIn(2)) {
        result.dateFormat = oneIn(3) ? "%Y-%m-%dT%H:%M:%SZ" : datePattern();
    }
    result.timestampUnit = static_cast<TimestampUnit>(below(3));
    result.localTime = oneIn(2);
    result.missingPlaceholder = oneOf<std::string>({"--", "", "?"});
    result.hasMin = oneIn(4);
    result.hasMax = oneIn(4);
    result.minValue = number();
    result.maxValue = number();
    while (oneIn(2)) {
        result.invalidValues.push_back(oneIn(2) ? text() : SwJsonValue(number()).toString());
    }
    result.holdLastNs = duration();
    result.refreshEveryNs = duration();
    return result;
}

ConditionCfg RandomOverlays::condition()
{
    ConditionCfg result;
    result.enabled = !oneIn(3);
    result.key = key();
    result.op = static_cast<ConditionOp>(below(7));
    result.value =
        oneIn(2) ? text() : oneOf<std::string>({"0", "1", "-1", "2", "0x10", "017", "1e3", ".5", "1.500000"});
    result.hasBitmask = oneIn(3);
    result.bitmask = oneIn(2) ? random_() : below(16);
    result.showAfterNs = duration();
    result.keepAfterNs = duration();
    return result;
}

std::string RandomOverlays::templateText()
{
    std::string result;
    for (std::size_t parts = below(oneIn(4) ? 160 : 9); parts > 0; --parts) {
        switch (below(6)) {
        case 0:
            result += oneOf<std::string>({" ", ":", "\n", "m/s", "%%", "%", "{", "}", "%{", "\xC3\xA9", "(", ","});
            break;
        case 1:
            result += "%" + key();
            break;
        case 2:
            result += "%{" + key() + "}";
            break;
        default:
            result += "%" + key() + " ";
            break;
        }
    }
    return result;
}

OverlayCfg RandomOverlays::block()
{
    shown_.clear();
    std::sample(keys_.begin(), keys_.end(), std::back_inserter(shown_), 7 + below(34), random_);
    bool const remembersMuch = oneIn(3);
    OverlayCfg cfg;
    cfg.decimals = static_cast<int>(below(14)) - 1;
    cfg.trimTrailingZeros = oneIn(2);
    cfg.missingPlaceholder = oneOf<std::string>({"--", "n/a"});
    cfg.formatString = templateText();
    for (std::string const& key : shown_) {
        if (oneIn(remembersMuch ? 10 : 3)) {
            continue;
        }
        FormatSpec& spec = cfg.formats[key];
        spec = format();
        if (remembersMuch) {
            spec.holdLastNs = 50;
            spec.refreshEveryNs = 20;
        }
    }
    cfg.condition = condition();
    cfg.updateEveryNFrames = static_cast<int>(below(5)) - 1;
    cfg.thickness = static_cast<int>(below(400)) - 2;
    cfg.textSize = static_cast<int>(below(260));
    cfg.posX = static_cast<float>(below(1001)) / 1000.0F;
    cfg.posY = static_cast<float>(below(1001)) / 1000.0F;
    cfg.bgAlpha = static_cast<float>(below(101)) / 100.0F;
    for (std::uint8_t* const part : {&cfg.textR, &cfg.textG, &cfg.textB, &cfg.bgR, &cfg.bgG, &cfg.bgB}) {
        *part = static_cast<std::uint8_t>(below(256));
    }
    return cfg;
}

namespace {

template <typename Integer>
SwJsonValue whole(Integer number)
{
    return static_cast<std::int64_t>(number);
}

// As text, which the reader takes for the number: it is the same under every locale.
std::string fraction(double number)
{
    std::array<char, 32> digits{};
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return {digits.data(), end.ptr};
}

std::string colorText(std::uint8_t r, std::uint8_t g, std::uint8_t b)
{
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "#%02x%02x%02x", unsigned{r}, unsigned{g}, unsigned{b});
    return text.data();
}

SwJsonObject formatObject(FormatSpec const& spec)
{
    SwJsonObject object{{"date", spec.date},
                        {"decimals", whole(spec.decimals)},
                        {"trimTrailingZeros", spec.trimTrailingZeros},
                        {"dateFormat", spec.dateFormat},
                        {"timestampUnit", spec.timestampUnit == TimestampUnit::Seconds        ? "s"
                                          : spec.timestampUnit == TimestampUnit::Milliseconds ? "ms"
                                                                                              : "us"},
                        {"timezone", spec.localTime ? "local" : "utc"},
                        {"missingPlaceholder", spec.missingPlaceholder},
                        {"holdLastMs", whole(spec.holdLastNs)},
                        {"refreshEveryMs", whole(spec.refreshEveryNs)}};
    // What is not finite has no text in JSON.
    if (spec.hasMin && std::isfinite(spec.minValue)) {
        object["minValue"] = fraction(spec.minValue);
    }
    if (spec.hasMax && std::isfinite(spec.maxValue)) {
        object["maxValue"] = fraction(spec.maxValue);
    }
    SwJsonArray invalid;
    for (std::string const& value : spec.invalidValues) {
        invalid.append(value);
    }
    object["invalidValues"] = invalid;
    return object;
}

SwJsonObject conditionObject(ConditionCfg const& condition)
{
    static std::array<char const*, 7> const kWords{"exists", "equals", "ne", ">", "gte", "lt", "<="};
    SwJsonObject object{{"key", condition.key},
                        {"operator", kWords[static_cast<std::size_t>(condition.op)]},
                        {"value", condition.value},
                        {"showAfterMs", whole(condition.showAfterNs)},
                        {"keepAfterMs", whole(condition.keepAfterNs)}};
    if (condition.hasBitmask) {
        object["bitmask"] = std::to_string(condition.bitmask);
    }
    return object;
}

SwJsonObject blockObject(OverlayCfg const& cfg)
{
    SwJsonObject formats;
    for (auto const& [key, spec] : cfg.formats) {
        formats[key] = formatObject(spec);
    }
    SwJsonObject object{{"formatString", cfg.formatString},
                        {"decimals", whole(cfg.decimals)},
                        {"trimTrailingZeros", cfg.trimTrailingZeros},
                        {"missingPlaceholder", cfg.missingPlaceholder},
                        {"formats", formats},
                        {"textColor", colorText(cfg.textR, cfg.textG, cfg.textB)},
                        {"textSize", whole(cfg.textSize)},
                        {"thickness", whole(cfg.thickness)},
                        {"position", SwJsonObject{{"x", fraction(cfg.posX)}, {"y", fraction(cfg.posY)}}},
                        {"bgColor", colorText(cfg.bgR, cfg.bgG, cfg.bgB)},
                        {"bgAlpha", fraction(cfg.bgAlpha)},
                        {"updateEveryNFrames", whole(cfg.updateEveryNFrames)}};
    if (cfg.condition.enabled) {
        object["condition"] = conditionObject(cfg.condition);
    }
    return object;
}

}  // namespace

std::vector<std::string> const& timeZones()
{
    static std::vector<std::string> const zones{
        "UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "NST3:30", "NZST-12NZDT,M9.5.0,M4.1.0/3", "AAA-24:59:59", "unusable///"};
    return zones;
}

std::string configText(std::vector<OverlayCfg> const& blocks)
{
    SwJsonArray overlay;
    for (OverlayCfg const& cfg : blocks) {
        overlay.append(blockObject(cfg));
    }
    return SwJsonDocument(SwJsonValue(SwJsonObject{{"overlay", overlay}})).toJson().toStdString();
}

}  // namespace stanag_overlay
