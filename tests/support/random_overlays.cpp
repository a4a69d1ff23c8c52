// See the header. Numbers and texts come from lists of known troubles as often as from chance.
#include "random_overlays.h"

#include <cstring>
#include <limits>

namespace stanag_overlay {

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
        return static_cast<double>(below(2000000000)) * 1.0e3 + 0.25;
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
    for (std::string const& key : keys_) {
        if (!oneIn(4)) {
            object[key] = value();
        }
    }
    return object;
}

FormatSpec RandomOverlays::format()
{
    FormatSpec result;
    result.date = oneIn(3);
    result.decimals = oneIn(3) ? -1 : static_cast<int>(oneIn(10) ? below(400) : below(8));
    result.trimTrailingZeros = oneIn(2);
    if (oneIn(2)) {
        result.dateFormat = oneOf<std::string>({"", "%", "%H", "%Y-%m-%dT%H:%M:%SZ", "%%%H", "%H%", "%E", "%F %T %Z",
                                                "%y%j", "plain", "%Q %", "%d.%m.%Y \xC3\xA9", "%EY%Od", "%e"});
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
    for (std::size_t parts = below(9); parts > 0; --parts) {
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
    OverlayCfg cfg;
    cfg.decimals = static_cast<int>(below(14)) - 1;
    cfg.trimTrailingZeros = oneIn(2);
    cfg.missingPlaceholder = oneOf<std::string>({"--", "n/a"});
    cfg.formatString = templateText();
    for (std::string const& key : keys_) {
        if (!oneIn(3)) {
            cfg.formats[key] = format();
        }
    }
    cfg.condition = condition();
    cfg.updateEveryNFrames = static_cast<int>(below(5)) - 1;
    cfg.thickness = static_cast<int>(below(400)) - 2;
    cfg.textSize = static_cast<int>(below(260));
    cfg.posX = static_cast<float>(below(1001)) / 1000.0F;
    cfg.posY = static_cast<float>(below(1001)) / 1000.0F;
    cfg.bgAlpha = static_cast<float>(below(101)) / 100.0F;
    cfg.textR = static_cast<std::uint8_t>(below(256));
    cfg.bgB = static_cast<std::uint8_t>(below(256));
    return cfg;
}

}  // namespace stanag_overlay
