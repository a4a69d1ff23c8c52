// Turns templates and telemetry values into text, with the memory that holds values over gaps and slows
// their changes. Runs for every placeholder of every frame, so everything is appended to the block's text
// in place, and the usual case builds no stream: where a stream would only write what std::to_chars writes,
// std::to_chars does.
#include "stanag_overlay_format.h"

#include "overlay_numbers.h"

#include "sw_fixed_number.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <iomanip>
#include <ios>
#include <iterator>
#include <limits>
#include <locale>
#include <sstream>
#include <string_view>
#include <unordered_map>

namespace stanag_overlay {

namespace {

// ---- numbers ----

bool isGlobalLocaleClassic()
{
    return std::locale() == std::locale::classic();
}

// Gives a stream the decimal point of the global locale and takes its digit grouping away: a number on the
// picture is one unbroken word.
class UngroupedPunctuation : public std::numpunct<char> {
public:
    explicit UngroupedPunctuation(char decimalPoint) : decimalPoint_(decimalPoint) {}

protected:
    char do_decimal_point() const override { return decimalPoint_; }

private:
    char decimalPoint_;
};

void appendStreamedFixed(std::string& out, double number, int precision)
{
    std::locale const global;
    std::ostringstream stream;
    stream.imbue(
        std::locale(global, new UngroupedPunctuation(std::use_facet<std::numpunct<char>>(global).decimal_point())));
    stream << std::fixed << std::setprecision(precision) << number;
    out += stream.str();
}

// As SwJsonValue::toString.
void appendPlainText(std::string& out, SwJsonValue const& value)
{
    if (value.isString()) {
        out += value.stringRef();
    } else if (value.isDouble()) {
        sw_detail::appendFixed(out, value.toDouble(), 6);
    } else {
        out += value.toString();
    }
}

// Takes the zeros from the end, and the point too when nothing else follows it.
void trimZeros(std::string& out, std::size_t point)
{
    std::size_t const last = out.find_last_not_of('0');
    out.resize(last == point ? point : last + 1);
}

// The number with `decimals` digits after the point. -0.04 with one digit gives "-0.0", trimmed "-0".
void formatNumber(std::string& out, SwJsonValue const& value, int decimals, bool trimTrailingZeros)
{
    long double number = 0.0L;
    if (!tryParseNumber(value, number)) {
        appendPlainText(out, value);
        return;
    }
    std::size_t const start = out.size();
    auto const narrowed = static_cast<double>(number);
    int const digits = std::min(decimals, sw_detail::kMaxFractionDigits);
    if (isGlobalLocaleClassic()) {
        sw_detail::appendFixed(out, narrowed, digits);
    } else {
        appendStreamedFixed(out, narrowed, digits);
    }
    // Only a "." counts as the point, so nothing is trimmed under a decimal comma.
    std::size_t const point = trimTrailingZeros ? out.find('.', start) : std::string::npos;
    if (point != std::string::npos) {
        trimZeros(out, point);
    } else if (std::isfinite(narrowed)) {
        out.append(static_cast<std::size_t>(decimals - digits), '0');
    }
}

// A value's text without any check: by its digits when they are given, else its plain text form.
void appendValue(std::string& out, SwJsonValue const& value, int decimals, bool trimTrailingZeros)
{
    if (decimals >= 0) {
        formatNumber(out, value, decimals, trimTrailingZeros);
    } else {
        appendPlainText(out, value);
    }
}

// ---- dates ----

// Microseconds since 1970, halves away from zero; beyond 64 bits the largest magnitude whose negative
// exists too. Not-a-number is the epoch.
std::int64_t roundToMicroseconds(long double value)
{
    constexpr auto kLimit = static_cast<long double>(std::numeric_limits<std::int64_t>::max());
    if (std::isnan(value)) {
        return 0;
    }
    // Compared before the call: where long double has no 64-bit significand the limit is 2^63 itself.
    if (value >= kLimit) {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (value <= -kLimit) {
        return -std::numeric_limits<std::int64_t>::max();
    }
    return std::llroundl(value);
}

// Goes through nanoseconds in wrapping 64-bit arithmetic, so times beyond the years 1677 to 2262 come out
// as times within. The fraction of a second is dropped toward 1970.
std::time_t wholeSeconds(std::int64_t microseconds)
{
    auto const nanoseconds = static_cast<std::int64_t>(static_cast<std::uint64_t>(microseconds) * 1000U);
    return static_cast<std::time_t>(nanoseconds / 1000000000);
}

long double toMicroseconds(long double number, TimestampUnit unit)
{
    switch (unit) {
    case TimestampUnit::Seconds:
        return number * 1000000.0L;
    case TimestampUnit::Milliseconds:
        return number * 1000.0L;
    case TimestampUnit::Microseconds:
        break;
    }
    return number;
}

void appendDigits(std::string& out, int number, int width)
{
    std::array<char, 4> digits{};
    for (int i = width - 1; i >= 0; --i) {
        digits[static_cast<std::size_t>(i)] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
    out.append(digits.data(), static_cast<std::size_t>(width));
}

// Writes the conversions that are plain padded numbers in the classic locale, four-digit years included.
// Any other conversion, and a "%" at the end, gives false with `out` as it was: the facet decides those.
bool appendNumericDate(std::string& out, std::tm const& time, std::string_view pattern)
{
    std::size_t const start = out.size();
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] != '%') {
            out += pattern[i];
            continue;
        }
        ++i;
        switch (i < pattern.size() ? pattern[i] : '\0') {
        case 'H':
            appendDigits(out, time.tm_hour, 2);
            break;
        case 'M':
            appendDigits(out, time.tm_min, 2);
            break;
        case 'S':
            appendDigits(out, time.tm_sec, 2);
            break;
        case 'd':
            appendDigits(out, time.tm_mday, 2);
            break;
        case 'm':
            appendDigits(out, time.tm_mon + 1, 2);
            break;
        case 'Y':
            // The wrapping above leaves the years 1677 to 2262.
            appendDigits(out, time.tm_year + 1900, 4);
            break;
        default:
            out.resize(start);
            return false;
        }
    }
    return true;
}

// As std::put_time with the pattern as a C string, which a zero byte ends.
void appendDateText(std::string& out, std::tm const& time, std::string_view dateFormat)
{
    std::string_view const pattern = dateFormat.substr(0, dateFormat.find('\0'));
    if (isGlobalLocaleClassic() && appendNumericDate(out, time, pattern)) {
        return;
    }
    std::ostringstream stream;
    auto const& facet = std::use_facet<std::time_put<char>>(stream.getloc());
    facet.put(std::ostreambuf_iterator<char>(stream), stream, stream.fill(), &time, pattern.data(),
              pattern.data() + pattern.size());
    out += stream.str();
}

void appendDate(std::string& out, long double number, FormatSpec const& spec)
{
    std::time_t const seconds = wholeSeconds(roundToMicroseconds(toMicroseconds(number, spec.timestampUnit)));
    std::tm time{};
    if (spec.localTime) {
        localtime_r(&seconds, &time);
    } else {
        gmtime_r(&seconds, &time);
    }
    appendDateText(out, time, spec.dateFormat);
}

// ---- checks ----

bool isInvalid(SwJsonValue const& value, std::vector<std::string> const& invalidValues)
{
    if (invalidValues.empty()) {
        return false;
    }
    long double number = 0.0L;
    bool const isNumber = tryParseNumber(value, number);
    return std::any_of(invalidValues.begin(), invalidValues.end(), [&](std::string const& invalid) {
        long double invalidNumber = 0.0L;
        // Two numbers are never compared as texts.
        if (isNumber && parseWholeNumber(invalid, invalidNumber)) {
            return numbersEqual(number, invalidNumber);
        }
        return value.toString() == invalid;
    });
}

// Both bounds are inclusive, and a not-a-number passes.
bool isOutOfRange(SwJsonValue const& value, FormatSpec const& spec)
{
    if (!spec.hasMin && !spec.hasMax) {
        return false;
    }
    long double number = 0.0L;
    if (!tryParseNumber(value, number)) {
        return true;
    }
    return (spec.hasMin && spec.minValue > number) || (spec.hasMax && spec.maxValue < number);
}

// ---- memory ----

// The entry of that key. A map finds only by a std::string, which takes memory for a long name: the entries of a
// block are few, and looking along them costs no more than a hash.
template <typename Map>
auto findKey(Map& map, std::string_view key)
{
    constexpr std::size_t kFew = 24;
    if (map.size() > kFew) {
        return map.find(std::string(key));
    }
    return std::find_if(map.begin(), map.end(), [key](auto const& entry) { return entry.first == key; });
}

// Inclusive: the text is still shown when exactly the hold time has passed.
std::string const& heldOrMissing(FormatSpec const* spec, OverlayCfg const& cfg, std::string_view key,
                                 OverlayRuntime const& runtime, std::uint64_t nowNs)
{
    if (spec == nullptr) {
        return cfg.missingPlaceholder;
    }
    if (spec->holdLastNs != 0) {
        auto const held = findKey(runtime.heldValues, key);
        if (held != runtime.heldValues.end() && held->second.timeNs != 0 &&
            nowNs - held->second.timeNs <= spec->holdLastNs) {
            return held->second.text;
        }
    }
    return spec->missingPlaceholder;
}

// The text that the refresh limit keeps on the picture, null when a new one is due. Exclusive: a new text
// is taken when exactly the period has passed.
std::string const* refreshLimitedValue(FormatSpec const& spec, std::string_view key, OverlayRuntime const& runtime,
                                       std::uint64_t nowNs)
{
    if (spec.refreshEveryNs == 0) {
        return nullptr;
    }
    auto const shown = findKey(runtime.refreshValues, key);
    bool const waits = shown != runtime.refreshValues.end() && shown->second.timeNs != 0 &&
                       nowNs - shown->second.timeNs < spec.refreshEveryNs;
    return waits ? &shown->second.text : nullptr;
}

void remember(std::unordered_map<std::string, TimedText>& entries, std::string_view key, std::string_view text,
              std::uint64_t nowNs)
{
    auto const found = findKey(entries, key);
    TimedText& entry = found != entries.end() ? found->second : entries[std::string(key)];
    entry.text = text;
    entry.timeNs = nowNs;
}

// Held is what is shown, not what came.
void rememberHeldValue(FormatSpec const& spec, std::string_view key, std::string_view shown, OverlayRuntime& runtime,
                       std::uint64_t nowNs)
{
    if (spec.holdLastNs != 0) {
        remember(runtime.heldValues, key, shown, nowNs);
    }
}

FormatSpec const* formatOf(OverlayCfg const& cfg, std::string_view key)
{
    auto const entry = findKey(cfg.formats, key);
    return entry == cfg.formats.end() ? nullptr : &entry->second;
}

// As OverlayTextFormatter::lookupFormatted.
void appendFormatted(std::string& out, SwJsonObject const* root, std::string_view key, OverlayCfg const& cfg,
                     OverlayRuntime& runtime, std::uint64_t nowNs)
{
    FormatSpec const* const spec = formatOf(cfg, key);
    auto const member = root == nullptr ? SwJsonObject::const_iterator() : root->find(key);
    if (member == SwJsonObject::const_iterator()) {
        out += heldOrMissing(spec, cfg, key, runtime, nowNs);
        return;
    }
    SwJsonValue const& value = member->second;
    if (spec == nullptr) {
        appendValue(out, value, cfg.decimals, cfg.trimTrailingZeros);
        return;
    }
    if (isInvalid(value, spec->invalidValues) || isOutOfRange(value, *spec)) {
        out += heldOrMissing(spec, cfg, key, runtime, nowNs);
        return;
    }
    long double date = 0.0L;
    if (spec->date && !tryParseNumber(value, date)) {
        // A text in place of a time is shown as it comes and leaves no trace in the memory.
        appendPlainText(out, value);
        return;
    }

    std::size_t const start = out.size();
    if (std::string const* const shown = refreshLimitedValue(*spec, key, runtime, nowNs)) {
        out += *shown;
    } else {
        if (spec->date) {
            appendDate(out, date, *spec);
        } else {
            appendValue(out, value, spec->decimals, spec->trimTrailingZeros);
        }
        if (spec->refreshEveryNs != 0) {
            remember(runtime.refreshValues, key, std::string_view(out).substr(start), nowNs);
        }
    }
    rememberHeldValue(*spec, key, std::string_view(out).substr(start), runtime, nowNs);
}

// ---- templates ----

// The punctuation that templates put around values. Dots, dashes, "%" and all bytes of UTF-8 names are
// part of a name.
constexpr std::string_view kNameEnds = "\t\n\r \"'(),/:;<>[\\]{}";
static_assert(kNameEnds.size() == 19);

constexpr std::array<bool, 256> kEndsName = [] {
    std::array<bool, 256> ends{};
    for (char const byte : kNameEnds) {
        ends[static_cast<unsigned char>(byte)] = true;
    }
    return ends;
}();

std::size_t findNameEnd(std::string_view text, std::size_t from)
{
    while (from < text.size() && !kEndsName[static_cast<unsigned char>(text[from])]) {
        ++from;
    }
    return from;
}

// What a "%" at one place of a template stands for.
struct Placeholder {
    std::string_view literal;  ///< copied to the output
    std::string_view name;     ///< looked up after it, when there is one
    bool hasName = false;
    std::size_t next = 0;  ///< where the scan goes on
};

Placeholder readPlaceholder(std::string_view text, std::size_t percent)
{
    std::size_t const start = percent + 1;
    if (start < text.size() && text[start] == '%') {
        return {text.substr(percent, 1), {}, false, start + 1};
    }
    if (start < text.size() && text[start] == '{') {
        std::size_t const close = text.find('}', start + 1);
        if (close == std::string_view::npos) {
            // Nothing after an unterminated brace is expanded any more.
            return {text.substr(percent), {}, false, text.size()};
        }
        return {{}, text.substr(start + 1, close - start - 1), true, close + 1};
    }
    std::size_t const end = findNameEnd(text, start);
    if (end == start) {
        return {text.substr(percent, 1), {}, false, start};
    }
    return {{}, text.substr(start, end - start), true, end};
}

}  // namespace

std::string OverlayTextFormatter::expandTemplate(std::string const& tmpl, SwJsonObject const* root,
                                                 OverlayCfg const& cfg, OverlayRuntime& runtime, std::uint64_t nowNs,
                                                 std::vector<std::string> const& availableKeys) const
{
    std::string out;
    if (tmpl.empty()) {
        if (root == nullptr || root->empty()) {
            return out;
        }
        for (std::string const& key : availableKeys) {
            if (!out.empty()) {
                out += '\n';
            }
            out += key;
            out += ": ";
            appendFormatted(out, root, key, cfg, runtime, nowNs);
        }
        return out;
    }

    constexpr std::size_t kExpectedGrowth = 64;
    out.reserve(tmpl.size() + kExpectedGrowth);
    std::string_view const text = tmpl;
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t const percent = std::min(text.find('%', at), text.size());
        out += text.substr(at, percent - at);
        if (percent == text.size()) {
            break;
        }
        Placeholder const placeholder = readPlaceholder(text, percent);
        out += placeholder.literal;
        if (placeholder.hasName) {
            appendFormatted(out, root, placeholder.name, cfg, runtime, nowNs);
        }
        at = placeholder.next;
    }
    return out;
}

std::string OverlayTextFormatter::lookupFormatted(SwJsonObject const* root, std::string const& key,
                                                  OverlayCfg const& cfg, OverlayRuntime& runtime,
                                                  std::uint64_t nowNs) const
{
    std::string out;
    appendFormatted(out, root, key, cfg, runtime, nowNs);
    return out;
}

}  // namespace stanag_overlay
