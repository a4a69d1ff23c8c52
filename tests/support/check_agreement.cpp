// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One function per kind of member, each written from what a person would expect of the text. The only thing that is
// taken from the check, beside its findings, is the text of each scalar.
#include "check_agreement.h"

#include "check/config_check.h"
#include "check/template_keys.h"
#include "check/written_config.h"
#include "stanag_overlay_config.h"
#include "stanag_overlay_format.h"
#include "sw_extended.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

namespace check_agreement {
namespace {

using namespace stanag_overlay;

bool isPlainName(std::string_view name)
{
    return name.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_") ==
           std::string_view::npos;
}

bool contains(std::string const& text, std::string_view part)
{
    return text.find(part) != std::string::npos;
}

bool startsOrEndsSentence(std::string_view rest)
{
    return rest.empty() || rest.substr(0, 2) == " (" || rest.substr(0, 2) == "; ";
}

/// The number that makes up a whole text.
std::optional<long double> numberOf(std::string const& text)
{
    char* end = nullptr;
    long double const number = sw_detail::extended(std::strtold(text.c_str(), &end));
    bool const isWhole = !text.empty() && end == text.c_str() + text.size();
    return isWhole && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

/// The same at the precision of the record's field: read as such, not rounded twice.
std::optional<double> doubleOf(std::string const& text)
{
    return numberOf(text) ? std::optional(std::strtod(text.c_str(), nullptr)) : std::nullopt;
}

float readAs(float /*type*/, char const* text, char** end)
{
    return std::strtof(text, end);
}
double readAs(double /*type*/, char const* text, char** end)
{
    return std::strtod(text, end);
}
long double readAs(long double /*type*/, char const* text, char** end)
{
    return sw_detail::extended(std::strtold(text, end));
}

class Comparison {
public:
    explicit Comparison(std::vector<check::Finding> const& findings)
    {
        for (check::Finding const& finding : findings) {
            // Of members with one name both sides see the last one only.
            if (!contains(finding.text, "stands there more than once")) {
                said_[finding.place].push_back(finding.text);
            }
        }
    }

    std::string const& firstFailure() const { return failure_; }

    void compareAll(SwJsonValue const& written, std::vector<OverlayCfg> const& records)
    {
        takeUnknown_("", written.toObject(), {"overlay", "availableKeys"});
        SwJsonArray const& blocks = written.toObject()["overlay"].toArray();
        std::size_t next = 0;
        for (std::size_t index = 0; index < blocks.size(); ++index) {
            std::string const place = "overlay[" + std::to_string(index) + "]";
            if (!blocks[index].isObject()) {
                require_(contains(take_(place), " is skipped"), place, "an item that is no object is skipped");
            } else if (next < records.size()) {
                compareBlock_(place, blocks[index].toObject(), records[next++]);
            }
        }
        require_(next == records.size(), "overlay", "one record for each object");
        for (auto const& [place, texts] : said_) {
            require_(texts.empty(), place, "nothing is said of what is not there");
        }
    }

private:
    using Names = std::vector<std::string>;

    void require_(bool holds, std::string const& place, std::string const& what)
    {
        if (!holds && failure_.empty()) {
            failure_ = place + ": " + what;
        }
    }

    /// Takes the first finding about a place, empty when there is none.
    std::string take_(std::string const& place)
    {
        auto const found = said_.find(place);
        if (found == said_.end() || found->second.empty()) {
            return {};
        }
        std::string text = found->second.front();
        found->second.erase(found->second.begin());
        return text;
    }

    /// Takes a finding that says a certain thing, whichever of its place it is.
    bool takeSaying_(std::string const& place, std::string_view what)
    {
        std::vector<std::string>& texts = said_[place];
        auto const found =
            std::find_if(texts.begin(), texts.end(), [what](auto const& text) { return contains(text, what); });
        if (found == texts.end()) {
            return false;
        }
        texts.erase(found);
        return true;
    }

    void takeUnknown_(std::string const& place, SwJsonObject const& object, Names const& known)
    {
        for (auto const& [name, value] : object) {
            if (std::find(known.begin(), known.end(), name) == known.end()) {
                std::string const member = place.empty() ? std::string(name) : place + "." + name;
                require_(takeSaying_(member, "unknown key, ignored"), member, "an unknown key is named");
            }
        }
    }

    // ---- one member: silent, becoming something, or ignored ----

    /// `held` is what the record has, `literal` what stands in the text.
    template <typename Number>
    void number_(std::string const& place, std::optional<Number> literal, Number held)
    {
        std::string const said = take_(place);
        if (said.empty()) {
            require_(literal == held, place, "silent, but the record holds " + std::to_string(held));
            return;
        }
        std::size_t const at = said.rfind(" becomes ");
        require_(at != std::string::npos, place, "no number is named: " + said);
        char* end = nullptr;
        char const* const begin = at == std::string::npos ? said.c_str() : said.c_str() + at + 9;
        Number const named = readAs(held, begin, &end);
        require_(end != begin && startsOrEndsSentence(end) && named == held, place,
                 "said: " + said + ", but the record holds " + std::to_string(held));
    }

    void word_(std::string const& place, bool isLiteral, std::string const& held)
    {
        std::string const said = take_(place);
        if (said.empty()) {
            require_(isLiteral, place, "silent, but the record holds " + held);
            return;
        }
        std::string const becomes = " becomes " + held;
        std::size_t const at = said.rfind(becomes);
        require_(at != std::string::npos && startsOrEndsSentence(std::string_view(said).substr(at + becomes.size())),
                 place, "said: " + said + ", but the record holds " + held);
    }

    void boolean_(std::string const& place, SwJsonValue const& written, bool held)
    {
        std::string const text = check::literalText(written);
        std::optional<double> const number = doubleOf(text);
        word_(place, text == (held ? "true" : "false") || number == (held ? 1.0 : 0.0), held ? "true" : "false");
    }

    void integer_(std::string const& place, SwJsonValue const& written, std::int64_t held)
    {
        number_(place, doubleOf(check::literalText(written)), static_cast<double>(held));
    }

    void duration_(std::string const& place, SwJsonValue const& written, std::uint64_t heldNs)
    {
        require_(heldNs % 1000000 == 0, place, "whole milliseconds");
        integer_(place, written, static_cast<std::int64_t>(heldNs / 1000000));
    }

    void fraction_(std::string const& place, SwJsonValue const& written, float held)
    {
        std::optional<double> const literal = doubleOf(check::literalText(written));
        // Far outside nothing can be equal: the cast sees only what fits.
        bool const isInside = literal && std::abs(*literal) <= 2.0;
        number_(place, isInside ? std::optional(static_cast<float>(*literal)) : std::nullopt, held);
    }

    void defaultText_(std::string const& place, SwJsonValue const& written, std::string const& held,
                      std::string const& usual)
    {
        takeSaying_(place, "\"%{\" without \"}\"");
        std::string const said = take_(place);
        bool const isIgnored = contains(said, " is ignored; the default stays");
        require_(said.empty() || isIgnored, place, "a text stays or is ignored: " + said);
        require_(isIgnored ? held == usual : check::isQuoted(written) && check::literalText(written) == held, place,
                 "the text " + held);
    }

    static std::string quoted_(std::string const& text) { return '"' + check::printable(text) + '"'; }

    /// A text made of any scalar.
    void operand_(std::string const& place, SwJsonValue const& written, std::string const& held)
    {
        std::string const text = check::literalText(written);
        std::optional<long double> const number = numberOf(text);
        word_(place, written.isString() && (text == held || (number && number == numberOf(held))), quoted_(held));
    }

    void color_(std::string const& place, SwJsonValue const& written, std::array<std::uint8_t, 3> held,
                std::array<std::uint8_t, 3> usual)
    {
        std::array<char, 8> text{};
        std::snprintf(text.data(), text.size(), "#%02x%02x%02x", held[0], held[1], held[2]);
        if (takeSaying_(place, " is not #rrggbb and is ignored; the default stays")) {
            require_(held == usual, place, "ignored, but the record holds another colour");
            return;
        }
        std::string literal = check::literalText(written);
        std::transform(literal.begin(), literal.end(), literal.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ' ') : c; });
        word_(place, check::isQuoted(written) && literal == text.data(), text.data());
    }

    // ---- objects ----

    void compareBlock_(std::string const& place, SwJsonObject const& block, OverlayCfg const& record)
    {
        OverlayCfg const usual;
        auto const each = [&](std::string const& name, auto const& compare) {
            if (block.contains(name)) {
                compare(place + "." + name, block[name]);
            }
        };
        each("formatString", [&](auto const& where, auto const& value) {
            defaultText_(where, value, record.formatString, usual.formatString);
        });
        each("missingPlaceholder", [&](auto const& where, auto const& value) {
            defaultText_(where, value, record.missingPlaceholder, usual.missingPlaceholder);
        });
        each("decimals", [&](auto const& where, auto const& value) { integer_(where, value, record.decimals); });
        each("textSize", [&](auto const& where, auto const& value) { integer_(where, value, record.textSize); });
        each("thickness", [&](auto const& where, auto const& value) { integer_(where, value, record.thickness); });
        each("updateEveryNFrames",
             [&](auto const& where, auto const& value) { integer_(where, value, record.updateEveryNFrames); });
        each("trimTrailingZeros",
             [&](auto const& where, auto const& value) { boolean_(where, value, record.trimTrailingZeros); });
        each("textColor", [&](auto const& where, auto const& value) {
            color_(where, value, {record.textR, record.textG, record.textB}, {255, 255, 255});
        });
        each("bgColor", [&](auto const& where, auto const& value) {
            color_(where, value, {record.bgR, record.bgG, record.bgB}, {0, 0, 0});
        });
        each("bgAlpha", [&](auto const& where, auto const& value) { opacity_(where, value, record.bgAlpha); });
        each("position", [&](auto const& where, auto const& value) { position_(where, value, record); });
        each("condition", [&](auto const& where, auto const& value) { condition_(where, value, record.condition); });
        each("formats", [&](auto const& where, auto const& value) { formats_(where, value, record); });
        takeUnknown_(place, block,
                     {"formatString", "decimals", "trimTrailingZeros", "missingPlaceholder", "condition", "formats",
                      "textColor", "textSize", "thickness", "position", "bgColor", "bgAlpha", "updateEveryNFrames"});
    }

    void opacity_(std::string const& place, SwJsonValue const& written, float held)
    {
        if (takeSaying_(place, " is no number and is ignored; 0.5 stays")) {
            require_(held == 0.5F, place, "ignored, but the record holds another opacity");
        } else {
            fraction_(place, written, held);
        }
    }

    void position_(std::string const& place, SwJsonValue const& written, OverlayCfg const& record)
    {
        OverlayCfg const usual;
        if (!written.isObject()) {
            require_(contains(take_(place), " is no object and is ignored; the default stays"), place, "is named");
            require_(record.posX == usual.posX && record.posY == usual.posY, place, "the default stays");
            return;
        }
        SwJsonObject const& position = written.toObject();
        if (position.contains("x")) {
            fraction_(place + ".x", position["x"], record.posX);
        }
        if (position.contains("y")) {
            fraction_(place + ".y", position["y"], record.posY);
        }
        takeUnknown_(place, position, {"x", "y"});
    }

    void condition_(std::string const& place, SwJsonValue const& written, ConditionCfg const& held)
    {
        SwJsonObject const& condition = written.toObject();
        takeUnknown_(place, condition,
                     {"key", "operator", "value", "equals", "notEquals", "bitmask", "showAfterMs", "keepAfterMs"});
        if (takeSaying_(place, "the block is always shown") ||
            takeSaying_(place + ".key", "the block is always shown")) {
            require_(!held.enabled && held.op == ConditionOp::Exists && held.value.empty() && !held.hasBitmask &&
                         held.showAfterNs == 0 && held.keepAfterNs == 0,
                     place, "ignored, but the record holds a condition");
            return;
        }
        require_(held.enabled && check::isQuoted(condition["key"]) && check::literalText(condition["key"]) == held.key,
                 place, "the key " + held.key);
        comparison_(place, condition, held);
        if (condition.contains("bitmask")) {
            mask_(place + ".bitmask", condition["bitmask"], held);
        }
        if (condition.contains("showAfterMs")) {
            duration_(place + ".showAfterMs", condition["showAfterMs"], held.showAfterNs);
        }
        if (condition.contains("keepAfterMs")) {
            duration_(place + ".keepAfterMs", condition["keepAfterMs"], held.keepAfterNs);
        }
    }

    void comparison_(std::string const& place, SwJsonObject const& condition, ConditionCfg const& held)
    {
        bool const equals = condition.contains("equals");
        bool const notEquals = condition.contains("notEquals");
        std::string const operand = equals ? "equals" : notEquals ? "notEquals" : "value";
        for (std::string const loser : {"notEquals", "operator", "value"}) {
            if ((equals || notEquals) && loser != operand && condition.contains(loser)) {
                require_(takeSaying_(place + "." + loser, "has no effect: \"" + operand + "\" wins"),
                         place + "." + loser, "is overruled");
            }
        }
        if (condition.contains(operand)) {
            operand_(place + "." + operand, condition[operand], held.value);
        } else {
            require_(held.value.empty(), place, "no operand");
        }
        if (equals || notEquals) {
            require_(held.op == (equals ? ConditionOp::Equals : ConditionOp::NotEquals), place, "the shortcut");
        } else if (condition.contains("operator")) {
            word_(place + ".operator", operatorOf_(check::literalText(condition["operator"])) == held.op,
                  held.op == ConditionOp::Equals ? "\"equals\"" : "\"exists\"");
        } else {
            require_(held.op == (condition.contains("value") ? ConditionOp::Equals : ConditionOp::Exists), place,
                     "the operator that is not named");
        }
    }

    static std::optional<ConditionOp> operatorOf_(std::string word)
    {
        static std::map<std::string, ConditionOp> const kWords = {{"exists", ConditionOp::Exists},
                                                                  {"equals", ConditionOp::Equals},
                                                                  {"eq", ConditionOp::Equals},
                                                                  {"==", ConditionOp::Equals},
                                                                  {"notequals", ConditionOp::NotEquals},
                                                                  {"ne", ConditionOp::NotEquals},
                                                                  {"!=", ConditionOp::NotEquals},
                                                                  {"greaterthan", ConditionOp::GreaterThan},
                                                                  {"gt", ConditionOp::GreaterThan},
                                                                  {">", ConditionOp::GreaterThan},
                                                                  {"greaterorequal", ConditionOp::GreaterOrEqual},
                                                                  {"gte", ConditionOp::GreaterOrEqual},
                                                                  {">=", ConditionOp::GreaterOrEqual},
                                                                  {"lessthan", ConditionOp::LessThan},
                                                                  {"lt", ConditionOp::LessThan},
                                                                  {"<", ConditionOp::LessThan},
                                                                  {"lessorequal", ConditionOp::LessOrEqual},
                                                                  {"lte", ConditionOp::LessOrEqual},
                                                                  {"<=", ConditionOp::LessOrEqual}};
        std::transform(word.begin(), word.end(), word.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ' ') : c; });
        auto const found = kWords.find(word);
        return found == kWords.end() ? std::nullopt : std::optional(found->second);
    }

    void mask_(std::string const& place, SwJsonValue const& written, ConditionCfg const& held)
    {
        if (takeSaying_(place, " is ignored")) {
            require_(!held.hasBitmask, place, "ignored, but the record holds a mask");
            return;
        }
        require_(held.hasBitmask, place, "the record holds no mask");
        number_(place, numberOf(check::literalText(written)), static_cast<long double>(held.bitmask));
    }

    void formats_(std::string const& place, SwJsonValue const& written, OverlayCfg const& record)
    {
        if (!written.isObject()) {
            require_(contains(take_(place), " is no object and is ignored"), place, "is named");
            require_(record.formats.empty(), place, "no formats");
            return;
        }
        for (auto const& [name, format] : written.toObject()) {
            std::string const where = place + "." + name;
            auto const held = record.formats.find(name);
            if (format.isObject() && held != record.formats.end()) {
                format_(where, format.toObject(), held->second);
            } else {
                require_(contains(take_(where), " is no object and is ignored"), where, "is named");
                require_(held == record.formats.end(), where, "no such format");
            }
        }
    }

    void format_(std::string const& place, SwJsonObject const& format, FormatSpec const& held)
    {
        FormatSpec const usual;
        auto const each = [&](std::string const& name, auto const& compare) {
            if (format.contains(name)) {
                compare(place + "." + name, format[name]);
            }
        };
        each("date", [&](auto const& where, auto const& value) { boolean_(where, value, held.date); });
        each("trimTrailingZeros",
             [&](auto const& where, auto const& value) { boolean_(where, value, held.trimTrailingZeros); });
        each("decimals", [&](auto const& where, auto const& value) { integer_(where, value, held.decimals); });
        each("dateFormat", [&](auto const& where, auto const& value) {
            while (takeSaying_(where, "\" is no date conversion and is shown as it stands") ||
                   takeSaying_(where, "\"%\" at the end is not shown")) {
            }
            word_(where, check::isQuoted(value) && check::literalText(value) == held.dateFormat,
                  quoted_(held.dateFormat));
        });
        each("timestampUnit", [&](auto const& where, auto const& value) {
            static std::map<std::string, TimestampUnit> const kUnits = {{"s", TimestampUnit::Seconds},
                                                                        {"ms", TimestampUnit::Milliseconds},
                                                                        {"us", TimestampUnit::Microseconds}};
            auto const unit = kUnits.find(check::literalText(value));
            word_(where, unit != kUnits.end() && unit->second == held.timestampUnit, "\"ms\"");
            require_(unit != kUnits.end() || held.timestampUnit == TimestampUnit::Milliseconds, where, "milliseconds");
        });
        each("timezone", [&](auto const& where, auto const& value) {
            word_(where, check::literalText(value) == (held.localTime ? "local" : "utc"),
                  held.localTime ? "\"local\"" : "\"utc\"");
        });
        each("missingPlaceholder", [&](auto const& where, auto const& value) {
            defaultText_(where, value, held.missingPlaceholder, usual.missingPlaceholder);
        });
        each("invalidValues",
             [&](auto const& where, auto const& value) { invalidValues_(where, value, held.invalidValues); });
        each("holdLastMs", [&](auto const& where, auto const& value) { duration_(where, value, held.holdLastNs); });
        each("refreshEveryMs",
             [&](auto const& where, auto const& value) { duration_(where, value, held.refreshEveryNs); });
        bounds_(place, format, held);
        takeUnknown_(place, format,
                     {"date", "decimals", "trimTrailingZeros", "dateFormat", "timestampUnit", "timezone",
                      "missingPlaceholder", "invalidValues", "holdLastMs", "refreshEveryMs", "minValue", "maxValue"});
    }

    void invalidValues_(std::string const& place, SwJsonValue const& written, std::vector<std::string> const& held)
    {
        if (!written.isArray()) {
            require_(contains(take_(place), " is no array and is ignored"), place, "is named");
            require_(held.empty(), place, "no invalid values");
            return;
        }
        std::size_t next = 0;
        for (std::size_t index = 0; index < written.toArray().size(); ++index) {
            std::string const where = place + "[" + std::to_string(index) + "]";
            if (takeSaying_(where, " is skipped")) {
                continue;
            }
            require_(next < held.size(), where, "an item of the record");
            operand_(where, written.toArray()[index], next < held.size() ? held[next] : std::string());
            ++next;
        }
        require_(next == held.size(), place, "as many items");
    }

    void bounds_(std::string const& place, SwJsonObject const& format, FormatSpec const& held)
    {
        bool const isAbove = takeSaying_(place, ": every value is out of range");
        require_(isAbove == (held.hasMin && held.hasMax && held.minValue > held.maxValue), place, "crossed bounds");
        if (takeSaying_(place, "are equal: there is no bound at all")) {
            require_(!held.hasMin && !held.hasMax, place, "equal, but the record holds a bound");
            return;
        }
        bound_(place + ".minValue", format, "minValue", held.hasMin, held.minValue);
        bound_(place + ".maxValue", format, "maxValue", held.hasMax, held.maxValue);
    }

    void bound_(std::string const& place, SwJsonObject const& format, char const* name, bool isHeld, double held)
    {
        if (!format.contains(name)) {
            return;
        }
        if (takeSaying_(place, " is ignored: there is no bound")) {
            require_(!isHeld, place, "ignored, but the record holds a bound");
            return;
        }
        require_(isHeld, place, "the record holds no bound");
        number_(place, doubleOf(check::literalText(format[name])), held);
    }

    std::map<std::string, std::vector<std::string>> said_;
    std::string failure_;
};

/// Whether every name that can be part of a place is plain.
bool hasPlainNames(SwJsonObject const& object, int depth)
{
    for (auto const& [name, value] : object) {
        if (!isPlainName(name)) {
            return false;
        }
        if (depth == 0) {
            continue;
        }
        if (!hasPlainNames(value.toObject(), depth - 1)) {
            return false;
        }
        for (SwJsonValue const& item : value.toArray()) {
            if (!hasPlainNames(item.toObject(), depth - 1)) {
                return false;
            }
        }
    }
    return true;
}

// Around what a template shows of a key, and in place of a key that is missing.
constexpr char kMissing = '\x01';
constexpr char kBegin = '\x02';
constexpr char kEnd = '\x03';

}  // namespace

std::string disagreement(std::string const& text)
{
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(SwString(text), SwString(), error);
    std::vector<OverlayCfg> const records = OverlayConfigParser().parse(text);
    if (!document.object()["overlay"].isArray()) {
        return records.empty() ? "" : "records of a text without blocks";
    }
    check::Findings const findings = check::checkConfig(document.object(), text);
    constexpr int kDepthOfPlaces = 4;
    if (!hasPlainNames(document.object(), kDepthOfPlaces)) {
        return "";
    }
    Comparison comparison(findings);
    comparison.compareAll(check::readAsWritten(text), records);
    return comparison.firstFailure();
}

std::string templateDisagreement(std::string const& text)
{
    if (text.empty() ||
        std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 4; })) {
        return "";
    }
    check::TemplateKeys const named = check::templateKeys(text);
    SwJsonObject payload;
    std::string expected;
    for (std::string const& key : named.keys) {
        payload[key] = SwJsonValue(kBegin + key + kEnd);
        expected += kBegin + key + kEnd;
    }
    OverlayCfg cfg;
    cfg.missingPlaceholder = kMissing;
    auto const expand = [&](std::string const& tmpl) {
        OverlayRuntime runtime;
        return OverlayTextFormatter().expandTemplate(tmpl, &payload, cfg, runtime, 1, {});
    };
    std::string const out = expand(text);
    std::string lookedUp;
    for (std::size_t at = out.find(kBegin); at != std::string::npos; at = out.find(kBegin, at + 1)) {
        lookedUp += out.substr(at, out.find(kEnd, at) + 1 - at);
    }
    if (contains(out, std::string(1, kMissing)) || lookedUp != expected) {
        return "the plugin looks up other keys";
    }
    // One brace more closes what was open, and then one key more is looked up, which is missing or named before.
    auto const lookups = [](std::string const& drawn) {
        return std::count(drawn.begin(), drawn.end(), kBegin) + std::count(drawn.begin(), drawn.end(), kMissing);
    };
    bool const isOpen = lookups(expand(text + "}")) > lookups(out);
    return isOpen == named.unclosed ? "" : "the brace is not as it is said to be";
}

}  // namespace check_agreement
