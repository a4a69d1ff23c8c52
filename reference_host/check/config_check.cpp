// The configuration check: one rule per member, each saying what becomes of a value it does not like.
#include "check/config_check.h"

#include "check/number_text.h"
#include "check/suggestion.h"
#include "check/template_keys.h"
#include "sw_utf8.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string_view>

namespace check {
namespace {

constexpr int kMaxMilliseconds = 600000;

/// The value as somebody wrote it, cut when it is long.
std::string shown(SwJsonValue const& value)
{
    constexpr std::size_t kMaxShown = 40;
    if (value.isObject() || value.isArray()) {
        return value.isObject() ? "an object" : "an array";
    }
    std::string const text = value.isString() ? '"' + SwJsonValue::escapeString(sw_utf8::valid(value.stringRef())) + '"'
                             : value.isDouble() ? numberText(value.toDouble())
                                                : value.toString();
    return text.size() <= kMaxShown ? text : text.substr(0, kMaxShown) + "...";
}

/// The place of a member: inside("overlay[0]", "textSize") is "overlay[0].textSize".
std::string inside(std::string place, std::string const& member)
{
    if (!place.empty()) {
        place += '.';
    }
    return place += member;
}

bool isNumber(SwJsonValue const& value)
{
    return value.isInt() || value.isDouble();
}

double numberOf(SwJsonValue const& value)
{
    return value.isInt() ? static_cast<double>(value.toInt()) : value.toDouble();
}

std::int32_t low32Signed(std::int64_t number)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(number)));
}

template <typename Integer>
Integer saturate(double number)
{
    constexpr auto kLeast = static_cast<double>(std::numeric_limits<Integer>::min());
    constexpr auto kMost = static_cast<double>(std::numeric_limits<Integer>::max());
    if (std::isnan(number)) {
        return 0;
    }
    if (number <= kLeast) {
        return std::numeric_limits<Integer>::min();
    }
    return number >= kMost ? std::numeric_limits<Integer>::max() : static_cast<Integer>(number);
}

/// Integer reading: whole numbers keep their low 32 bits, others are cut toward zero.
std::int32_t readInteger(SwJsonValue const& value)
{
    if (value.isInt()) {
        return low32Signed(value.toInt());
    }
    if (value.isDouble()) {
        double const number = value.toDouble();
        return number == std::trunc(number) ? low32Signed(saturate<std::int64_t>(number))
                                            : saturate<std::int32_t>(number);
    }
    return value.isBool() && value.toBool() ? 1 : 0;
}

/// Durations and frame counts: numbers are limited without being narrowed first, but for whole ones
/// written as integers.
std::int32_t readLimited(SwJsonValue const& value)
{
    return value.isDouble() ? saturate<std::int32_t>(value.toDouble()) : readInteger(value);
}

class ConfigCheck {
public:
    std::vector<Finding> run(SwJsonObject const& root)
    {
        refuseUnknown_("", root, {"overlay", "availableKeys"});
        std::size_t index = 0;
        for (SwJsonValue const& item : root["overlay"].toArray()) {
            std::string const place = "overlay[" + std::to_string(index++) + "]";
            if (item.isObject()) {
                checkOverlay_(place, item.toObject());
            } else {
                add_(place, shown(item) + " is no object and is skipped");
            }
        }
        return std::move(findings_);
    }

private:
    using Rule = void (ConfigCheck::*)(std::string const&, SwJsonValue const&);
    struct Member {
        char const* name;
        Rule rule;
    };

    void checkOverlay_(std::string const& place, SwJsonObject const& overlay);
    void checkTemplate_(std::string const& place, SwJsonValue const& value);
    void checkCondition_(std::string const& place, SwJsonValue const& value);
    void checkPosition_(std::string const& place, SwJsonValue const& value);
    void checkFormats_(std::string const& place, SwJsonValue const& value);
    void checkFormat_(std::string const& place, SwJsonObject const& format);
    void checkOverruled_(std::string const& place, SwJsonObject const& condition);

    void text_(std::string const& place, SwJsonValue const& value);
    void anyText_(std::string const& place, SwJsonValue const& value);
    void switch_(std::string const& place, SwJsonValue const& value);
    void color_(std::string const& place, SwJsonValue const& value);
    void blockDecimals_(std::string const& place, SwJsonValue const& value) { integer_(place, value, -1, 12); }
    void textSize_(std::string const& place, SwJsonValue const& value) { integer_(place, value, 6, 256); }
    void thickness_(std::string const& place, SwJsonValue const& value) { integer_(place, value, 1, 16); }
    void formatDecimals_(std::string const& place, SwJsonValue const& value);
    void fraction_(std::string const& place, SwJsonValue const& value);
    void opacity_(std::string const& place, SwJsonValue const& value);
    void frameCount_(std::string const& place, SwJsonValue const& value);
    void milliseconds_(std::string const& place, SwJsonValue const& value);
    void bound_(std::string const& place, SwJsonValue const& value);
    void timestampUnit_(std::string const& place, SwJsonValue const& value);
    void timezone_(std::string const& place, SwJsonValue const& value);
    void invalidValues_(std::string const& place, SwJsonValue const& value);
    void conditionKey_(std::string const& place, SwJsonValue const& value);
    void operator_(std::string const& place, SwJsonValue const& value);
    void operand_(std::string const& place, SwJsonValue const& value);
    void bitmask_(std::string const& place, SwJsonValue const& value);

    void add_(std::string const& place, std::string text) { findings_.push_back({place, std::move(text)}); }
    void becomes_(std::string const& place, SwJsonValue const& value, double result, double least, double most);
    void integer_(std::string const& place, SwJsonValue const& value, int least, int most);
    void refuseUnknown_(std::string const& place, SwJsonObject const& object, std::vector<std::string> const& known);
    template <std::size_t Count>
    void checkMembers_(std::string const& place, SwJsonObject const& object, std::array<Member, Count> const& members);

    std::vector<Finding> findings_;
};

void ConfigCheck::refuseUnknown_(std::string const& place, SwJsonObject const& object,
                                 std::vector<std::string> const& known)
{
    for (auto const& [name, value] : object) {
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            add_(inside(place, name), "unknown key, ignored" + didYouMean(name, known));
        }
    }
}

template <std::size_t Count>
void ConfigCheck::checkMembers_(std::string const& place, SwJsonObject const& object,
                                std::array<Member, Count> const& members)
{
    std::vector<std::string> known;
    for (Member const& member : members) {
        known.emplace_back(member.name);
        auto const found = object.find(member.name);
        if (found != object.end()) {
            (this->*member.rule)(inside(place, member.name), found->second);
        }
    }
    refuseUnknown_(place, object, known);
}

void ConfigCheck::becomes_(std::string const& place, SwJsonValue const& value, double result, double least, double most)
{
    if (isNumber(value) && numberOf(value) == result) {
        return;
    }
    std::string const range = " (allowed: " + numberText(least) + " to " + numberText(most) + ")";
    add_(place, shown(value) + (isNumber(value) ? "" : " is no number and") + " becomes " + numberText(result) + range);
}

void ConfigCheck::integer_(std::string const& place, SwJsonValue const& value, int least, int most)
{
    becomes_(place, value, std::clamp(readInteger(value), least, most), least, most);
}

void ConfigCheck::milliseconds_(std::string const& place, SwJsonValue const& value)
{
    becomes_(place, value, std::clamp(readLimited(value), 0, kMaxMilliseconds), 0, kMaxMilliseconds);
}

void ConfigCheck::frameCount_(std::string const& place, SwJsonValue const& value)
{
    int const frames = isNumber(value) ? std::clamp(readLimited(value), 1, 120) : 1;
    becomes_(place, value, frames, 1, 120);
}

void ConfigCheck::formatDecimals_(std::string const& place, SwJsonValue const& value)
{
    constexpr int kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr int kMost = std::numeric_limits<std::int32_t>::max();
    becomes_(place, value, readInteger(value), kLeast, kMost);
}

void ConfigCheck::fraction_(std::string const& place, SwJsonValue const& value)
{
    double const number = isNumber(value) ? numberOf(value) : readInteger(value);
    becomes_(place, value, std::clamp(number, 0.0, 1.0), 0, 1);
}

void ConfigCheck::opacity_(std::string const& place, SwJsonValue const& value)
{
    if (!isNumber(value)) {
        add_(place, shown(value) + " is no number and is ignored; 0.5 stays");
        return;
    }
    becomes_(place, value, std::clamp(numberOf(value), 0.0, 1.0), 0, 1);
}

void ConfigCheck::text_(std::string const& place, SwJsonValue const& value)
{
    if (!value.isString()) {
        bool const container = value.isObject() || value.isArray();
        add_(place, shown(value) + (container ? " is no text" : ", even in quotes, is read as no text") +
                        " and is ignored; the default stays");
    }
}

void ConfigCheck::anyText_(std::string const& place, SwJsonValue const& value)
{
    if (value.isObject() || value.isArray()) {
        add_(place, shown(value) + " becomes \"{}\"");
    }
}

void ConfigCheck::switch_(std::string const& place, SwJsonValue const& value)
{
    bool const number = isNumber(value);
    if (!value.isBool() && !(number && (numberOf(value) == 0.0 || numberOf(value) == 1.0))) {
        add_(place, shown(value) + " becomes " + (number ? "true" : "false") + " (allowed: true, false)");
    }
}

void ConfigCheck::color_(std::string const& place, SwJsonValue const& value)
{
    std::string const& text = value.stringRef();
    if (!value.isString() || text.size() != 7 || text.front() != '#') {
        add_(place, shown(value) + " is not #rrggbb and is ignored; the default stays");
        return;
    }
    // Reading stops at the first byte that is no digit; white space and a sign before it are passed over
    // as in every formatted number.
    bool const clean = std::all_of(text.begin() + 1, text.end(),
                                   [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; });
    if (clean) {
        return;
    }
    unsigned number = 0;
    std::from_chars(text.data() + 1, text.data() + text.size(), number, 16);
    std::array<char, 16> read{};
    std::snprintf(read.data(), read.size(), "#%06x", number);
    bool const plain = std::isspace(static_cast<unsigned char>(text[1])) == 0 && text[1] != '-' && text[1] != '+' &&
                       text[2] != 'x' && text[2] != 'X';
    add_(place, shown(value) + " is not #rrggbb and " +
                    (plain ? std::string("becomes ") + read.data() : "becomes another colour"));
}

void ConfigCheck::bound_(std::string const& place, SwJsonValue const& value)
{
    if (value.isString()) {
        char* end = nullptr;
        double const number = std::strtod(value.stringRef().c_str(), &end);
        if (end == value.stringRef().c_str() || !std::isfinite(number)) {
            add_(place, shown(value) + " is no number and is ignored: there is no bound");
        } else if (*end != '\0') {
            add_(place, shown(value) + " becomes " + numberText(number));
        }
        return;
    }
    bool const whole = isNumber(value) && numberOf(value) == std::trunc(numberOf(value));
    double const result = value.isDouble() && !whole ? value.toDouble() : readInteger(value);
    if (!isNumber(value) || numberOf(value) != result) {
        add_(place, shown(value) + " becomes " + numberText(result));
    }
}

void ConfigCheck::timestampUnit_(std::string const& place, SwJsonValue const& value)
{
    std::string const text = value.toString();
    if (text != "s" && text != "ms" && text != "us") {
        add_(place, shown(value) + " becomes \"ms\" (allowed: \"s\", \"ms\", \"us\")");
    }
}

void ConfigCheck::timezone_(std::string const& place, SwJsonValue const& value)
{
    std::string const text = value.toString();
    if (text != "utc" && text != "local") {
        add_(place, shown(value) + " becomes \"utc\" (allowed: \"utc\", \"local\")");
    }
}

void ConfigCheck::invalidValues_(std::string const& place, SwJsonValue const& value)
{
    if (!value.isArray()) {
        add_(place, shown(value) + " is no array and is ignored");
        return;
    }
    std::size_t index = 0;
    for (SwJsonValue const& item : value.toArray()) {
        if (item.isObject() || item.isArray()) {
            add_(place + "[" + std::to_string(index) + "]", shown(item) + " is skipped");
        }
        ++index;
    }
}

void ConfigCheck::conditionKey_(std::string const& place, SwJsonValue const& value)
{
    if (!value.isString() || value.stringRef().empty()) {
        add_(place, shown(value) + " is no key: the condition is ignored and the block is always shown");
    }
}

void ConfigCheck::operator_(std::string const& place, SwJsonValue const& value)
{
    static std::vector<std::string> const kWords = {
        "exists",         "equals", "eq", "==",       "notequals", "ne",          "!=",  "greaterthan", "gt", ">",
        "greaterorequal", "gte",    ">=", "lessthan", "lt",        "lessorequal", "lte", "<",           "<="};
    std::string word = value.toString();
    std::transform(word.begin(), word.end(), word.begin(),
                   [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    if (std::find(kWords.begin(), kWords.end(), word) == kWords.end()) {
        add_(place, shown(value) + " is no operator and becomes \"equals\" with an operand, else \"exists\"" +
                        didYouMean(word, kWords));
    }
}

void ConfigCheck::operand_(std::string const& place, SwJsonValue const& value)
{
    anyText_(place, value);
}

void ConfigCheck::bitmask_(std::string const& place, SwJsonValue const& value)
{
    if (value.isString()) {
        std::string const& text = value.stringRef();
        char* end = nullptr;
        std::strtoull(text.c_str(), &end, 0);
        if (end == text.c_str()) {
            // Not even one digit of an integer; the fallback takes numbers such as ".5".
            bool const number = std::strtold(text.c_str(), &end) >= 0.0L && end != text.c_str() && *end == '\0';
            add_(place, shown(value) + (number ? " loses its fraction" : " is no number and is ignored"));
        } else if (*end != '\0') {
            add_(place, shown(value) + " is no whole number and is ignored");
        }
        return;
    }
    double const number = isNumber(value) ? numberOf(value) : -1.0;
    bool const fraction = number != std::trunc(number);
    if (!isNumber(value) || (fraction ? number < 0.0 : readInteger(value) < 0)) {
        add_(place, shown(value) + " is no bit mask and is ignored; masks from bit 31 on need quotes and 0x");
    } else if (fraction || readInteger(value) != number) {
        add_(place, shown(value) + " becomes " +
                        (fraction ? numberText(std::trunc(number)) : std::to_string(readInteger(value))));
    }
}

void ConfigCheck::checkTemplate_(std::string const& place, SwJsonValue const& value)
{
    text_(place, value);
    if (templateKeys(value.stringRef()).unclosed) {
        add_(place, "\"%{\" without \"}\": the text from there on is shown as it is");
    }
}

void ConfigCheck::checkPosition_(std::string const& place, SwJsonValue const& value)
{
    static constexpr std::array<Member, 2> kMembers = {
        {{"x", &ConfigCheck::fraction_}, {"y", &ConfigCheck::fraction_}}};
    if (!value.isObject()) {
        add_(place, shown(value) + " is no object and is ignored; the default stays");
        return;
    }
    checkMembers_(place, value.toObject(), kMembers);
}

void ConfigCheck::checkOverruled_(std::string const& place, SwJsonObject const& condition)
{
    char const* const winner = condition.contains("equals")      ? "equals"
                               : condition.contains("notEquals") ? "notEquals"
                                                                 : nullptr;
    if (winner == nullptr) {
        return;
    }
    for (char const* const loser : {"notEquals", "operator", "value"}) {
        if (condition.contains(loser) && std::string_view(loser) != winner) {
            add_(place + "." + loser, std::string("has no effect: \"") + winner + "\" wins");
        }
    }
}

void ConfigCheck::checkCondition_(std::string const& place, SwJsonValue const& value)
{
    static constexpr std::array<Member, 8> kMembers = {{{"key", &ConfigCheck::conditionKey_},
                                                        {"operator", &ConfigCheck::operator_},
                                                        {"value", &ConfigCheck::operand_},
                                                        {"equals", &ConfigCheck::operand_},
                                                        {"notEquals", &ConfigCheck::operand_},
                                                        {"bitmask", &ConfigCheck::bitmask_},
                                                        {"showAfterMs", &ConfigCheck::milliseconds_},
                                                        {"keepAfterMs", &ConfigCheck::milliseconds_}}};
    if (!value.isObject()) {
        add_(place, shown(value) + " is no object and is ignored: the block is always shown");
        return;
    }
    SwJsonObject const& condition = value.toObject();
    if (!condition.contains("key")) {
        add_(place, "\"key\" is missing: the condition is ignored and the block is always shown");
    }
    checkMembers_(place, condition, kMembers);
    checkOverruled_(place, condition);
}

void ConfigCheck::checkFormats_(std::string const& place, SwJsonValue const& value)
{
    if (!value.isObject()) {
        add_(place, shown(value) + " is no object and is ignored");
        return;
    }
    for (auto const& [key, format] : value.toObject()) {
        std::string const formatPlace = inside(place, key);
        if (format.isObject()) {
            checkFormat_(formatPlace, format.toObject());
        } else {
            add_(formatPlace, shown(format) + " is no object and is ignored");
        }
    }
}

void ConfigCheck::checkFormat_(std::string const& place, SwJsonObject const& format)
{
    static constexpr std::array<Member, 12> kMembers = {{{"date", &ConfigCheck::switch_},
                                                         {"decimals", &ConfigCheck::formatDecimals_},
                                                         {"trimTrailingZeros", &ConfigCheck::switch_},
                                                         {"dateFormat", &ConfigCheck::anyText_},
                                                         {"timestampUnit", &ConfigCheck::timestampUnit_},
                                                         {"timezone", &ConfigCheck::timezone_},
                                                         {"missingPlaceholder", &ConfigCheck::text_},
                                                         {"invalidValues", &ConfigCheck::invalidValues_},
                                                         {"holdLastMs", &ConfigCheck::milliseconds_},
                                                         {"refreshEveryMs", &ConfigCheck::milliseconds_},
                                                         {"minValue", &ConfigCheck::bound_},
                                                         {"maxValue", &ConfigCheck::bound_}}};
    checkMembers_(place, format, kMembers);
    auto const least = format.find("minValue");
    auto const most = format.find("maxValue");
    if (least != format.end() && most != format.end() && isNumber(least->second) && isNumber(most->second) &&
        numberOf(least->second) == numberOf(most->second)) {
        add_(place, "\"minValue\" and \"maxValue\" are equal: there is no bound at all");
    }
}

void ConfigCheck::checkOverlay_(std::string const& place, SwJsonObject const& overlay)
{
    static constexpr std::array<Member, 13> kMembers = {{{"formatString", &ConfigCheck::checkTemplate_},
                                                         {"decimals", &ConfigCheck::blockDecimals_},
                                                         {"trimTrailingZeros", &ConfigCheck::switch_},
                                                         {"missingPlaceholder", &ConfigCheck::text_},
                                                         {"condition", &ConfigCheck::checkCondition_},
                                                         {"formats", &ConfigCheck::checkFormats_},
                                                         {"textColor", &ConfigCheck::color_},
                                                         {"textSize", &ConfigCheck::textSize_},
                                                         {"thickness", &ConfigCheck::thickness_},
                                                         {"position", &ConfigCheck::checkPosition_},
                                                         {"bgColor", &ConfigCheck::color_},
                                                         {"bgAlpha", &ConfigCheck::opacity_},
                                                         {"updateEveryNFrames", &ConfigCheck::frameCount_}}};
    checkMembers_(place, overlay, kMembers);
}

/// Adds a finding when the key is not delivered.
void expectKey(std::string const& place, std::string const& key, std::vector<std::string> const& delivered,
               std::vector<Finding>& findings)
{
    if (!std::binary_search(delivered.begin(), delivered.end(), key)) {
        findings.push_back({place, "the input never delivers \"" + key + "\"" + didYouMean(key, delivered)});
    }
}

}  // namespace

std::vector<Finding> checkConfig(SwJsonObject const& root)
{
    return ConfigCheck().run(root);
}

std::vector<Finding> checkKeys(SwJsonObject const& root, std::vector<std::string> const& delivered)
{
    std::vector<Finding> findings;
    std::size_t index = 0;
    for (SwJsonValue const& item : root["overlay"].toArray()) {
        std::string const place = "overlay[" + std::to_string(index++) + "]";
        SwJsonObject const& overlay = item.toObject();
        for (std::string const& key : templateKeys(overlay["formatString"].stringRef()).keys) {
            expectKey(place + ".formatString", key, delivered, findings);
        }
        std::string const& conditionKey = overlay["condition"].toObject()["key"].stringRef();
        if (!conditionKey.empty()) {
            expectKey(place + ".condition.key", conditionKey, delivered, findings);
        }
        for (auto const& [key, format] : overlay["formats"].toObject()) {
            expectKey(place + ".formats", key, delivered, findings);
        }
    }
    return findings;
}

}  // namespace check
