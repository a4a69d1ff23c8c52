// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The JSON reader: text to value tree in one pass, with string coercion and decryption on the way. Open
// containers stand on a stack of its own, so that depth costs memory and never the thread's stack.
#include "SwCrypto.h"
#include "SwJson.h"
#include "sw_diagnostic.h"
#include "sw_json_builder.h"
#include "sw_json_scan.h"
#include "sw_numbers.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <new>

using sw_detail::isDigit, sw_detail::isLetter, sw_detail::isSpace, sw_detail::JsonBuilder, sw_detail::JsonProblem,
    sw_detail::readShortDouble, sw_detail::scanDigits, sw_detail::skipSpace;

namespace {

/// What a text of digits is: digits only, or digits around one point.
enum class NumericForm { None, Integer, Decimal };

NumericForm numericForm(std::string_view text)
{
    if (!text.empty() && text.front() == '-') {
        text.remove_prefix(1);
    }
    std::size_t points = 0;
    for (char const byte : text) {
        if (byte == '.') {
            ++points;
        } else if (!isDigit(byte)) {
            return NumericForm::None;
        }
    }
    if (text.empty() || points > 1) {
        return NumericForm::None;
    }
    return points == 1 ? NumericForm::Decimal : NumericForm::Integer;
}

/// Adds Bool or Null when `text` is exactly one of the three literals.
bool addLiteral(JsonBuilder& tree, std::string_view text)
{
    if (text == "true" || text == "false") {
        tree.addBool(text == "true");
        return true;
    }
    if (text == "null") {
        tree.addNull();
        return true;
    }
    return false;
}

/// A string value takes the kind that its text looks like: configurations write numbers and switches as
/// strings. The bytes of `text` stay.
void addCoerced(JsonBuilder& tree, std::string_view text)
{
    if (addLiteral(tree, text)) {
        return;
    }
    switch (numericForm(text)) {
    case NumericForm::Integer:
        tree.addInt(SwString(std::string(text)).toInt());
        return;
    case NumericForm::Decimal: {
        double number = 0.0;
        if (!SwString(std::string(text)).parseNumericDouble(number)) {
            sw_detail::writeDiagnostic("Invalid float conversion in SwString: ", text);
            number = 0.0;
        }
        tree.addDouble(static_cast<double>(sw_detail::nearestFloat(number)));
        return;
    }
    case NumericForm::None:
        tree.addString(text);
        return;
    }
}

/// The whole of a decrypted text as a base-10 integer.
bool wholeInteger(std::string const& text, std::int64_t& number)
{
    char* stop = nullptr;
    errno = 0;
    number = std::strtoll(text.c_str(), &stop, 10);
    return stop == text.c_str() + text.size() && errno == 0;
}

/// The whole of a decrypted text as a double, in the "C" locale.
bool wholeDouble(std::string const& text, double& number)
{
    char* stop = nullptr;
    errno = 0;
    number = strtod_l(text.c_str(), &stop, sw_detail::classicLocale());
    return stop == text.c_str() + text.size() && errno == 0;
}

/// A decrypted bare token takes the kind of the scalar that was written. The bytes of `plain` stay.
void addDecryptedScalar(JsonBuilder& tree, std::string const& plain)
{
    if (addLiteral(tree, plain)) {
        return;
    }
    std::int64_t whole = 0;
    double real = 0.0;
    bool const isReal = plain.find_first_of(".eE") != std::string::npos;
    if (!plain.empty() && !isReal && wholeInteger(plain, whole)) {
        tree.addInt(whole);
    } else if (isReal && wholeDouble(plain, real)) {
        tree.addDouble(real);
    } else {
        tree.addString(plain);
    }
}

/// One reading of one value. Each step takes the cursor and gives the new one, null after a problem.
class Reader {
public:
    Reader(std::string const& text, SwString const& key)
        : begin_(text.c_str())
        , end_(begin_ + text.size())
        , key_(key)
        , hasKey_(!key.isEmpty())
    {
    }

    /// Reads the value at `cursor` into `root` and moves the cursor behind it, or to the problem; false then.
    bool read(std::size_t& cursor, SwJsonValue& root)
    {
        char const* at = begin_ + std::min(cursor, static_cast<std::size_t>(end_ - begin_));
        at = readTree_(at);
        cursor = static_cast<std::size_t>((at != nullptr ? at : problem_.at) - begin_);
        if (at != nullptr) {
            tree_.takeRoot(root);
        }
        return at != nullptr;
    }
    std::string_view problem() const { return problem_.message; }

private:
    /// One value with all that is in it.
    char const* readTree_(char const* at)
    {
        at = readValue_(at);
        while (at != nullptr && tree_.isOpen()) {
            at = tree_.isInObject() ? readMember_(at) : readElement_(at);
        }
        return at;
    }

    /// A scalar, or the bracket that opens a container.
    char const* readValue_(char const* at)
    {
        at = skipSpace(at);
        if (at == end_) {
            return problem_.note(at, "Unexpected end of JSON input");
        }
        switch (*at) {
        case '{':
        case '[':
            tree_.open(*at == '{');
            return at + 1;
        case '"':
            return readStringValue_(at);
        default:
            return hasKey_ ? readEncryptedToken_(at) : readBareValue_(at);
        }
    }

    /// The next member of the open object with its value or the bracket that opens it; or the object's end.
    char const* readMember_(char const* at)
    {
        at = skipSpace(at);
        if (!tree_.isFirst()) {
            if (*at == ',') {
                at = skipSpace(at + 1);
            } else if (*at != '}') {
                return problem_.note(at, at == end_ ? "Unterminated JSON object" : "Expected ',' or '}' in object");
            }
        }
        // Also after a comma: a trailing one is accepted.
        if (*at == '}') {
            tree_.closeObject();
            return at + 1;
        }
        if (*at != '"') {
            return problem_.note(at, at == end_ ? "Unterminated JSON object" : "Expected string key in object");
        }
        std::string_view name;
        at = readString_(at, name);
        if (at == nullptr) {
            return nullptr;
        }
        at = skipSpace(at);
        if (*at != ':') {
            return problem_.note(at, "Expected ':' after object key");
        }
        tree_.name(name);
        return readValue_(at + 1);
    }

    /// The next element of the open array, as readMember_.
    char const* readElement_(char const* at)
    {
        if (!tree_.isFirst()) {
            at = skipSpace(at);
            if (*at == ']') {
                return closeArray_(at);
            }
            if (*at != ',') {
                return problem_.note(at, at == end_ ? "Unterminated JSON array" : "Expected ',' or ']' in array");
            }
            ++at;
        }
        // Only directly behind the bracket or comma; white space there makes it a missing value.
        if (at == end_) {
            return problem_.note(at, "Unterminated JSON array");
        }
        at = skipSpace(at);
        return *at == ']' ? closeArray_(at) : readValue_(at);
    }

    char const* closeArray_(char const* at)
    {
        tree_.closeArray();
        return at + 1;
    }

    /// A string whose bytes stay: in the text itself or, with escapes, kept.
    char const* readString_(char const* at, std::string_view& text)
    {
        char const* const stop = sw_detail::endOfPlainRun(at + 1, end_);
        if (stop != end_ && *stop == '"') {
            text = std::string_view(at + 1, static_cast<std::size_t>(stop - at - 1));
            return stop + 1;
        }
        std::string& decoded = tree_.keep();
        at = sw_detail::scanString(at, end_, decoded, problem_);
        text = decoded;
        return at;
    }

    char const* readStringValue_(char const* at)
    {
        std::string_view text;
        at = readString_(at, text);
        if (at == nullptr) {
            return nullptr;
        }
        if (hasKey_) {
            std::string& plain = tree_.keep();
            if (!decrypt_(text, plain)) {
                return problem_.note(at, "Unable to decrypt string value");
            }
            text = plain;
        }
        addCoerced(tree_, text);
        return at;
    }

    char const* readBareValue_(char const* at)
    {
        switch (*at) {
        case 't':
        case 'f':
            return readLiteral_(at, "Invalid boolean literal");
        case 'n':
            return readLiteral_(at, "Invalid literal, expected 'null'");
        default:
            // With a key every other byte is read as a number, which it is not.
            return isDigit(*at) || *at == '-' || hasKey_ ? readNumber_(at) : problem_.note(at, "Invalid JSON token");
        }
    }

    /// The run of letters here, which must be one of the literals that its first letter announces.
    char const* readLiteral_(char const* at, std::string_view message)
    {
        char const* const start = at;
        while (isLetter(*at)) {
            ++at;
        }
        bool const isLiteral = addLiteral(tree_, std::string_view(start, static_cast<std::size_t>(at - start)));
        return isLiteral ? at : problem_.note(at, message);
    }

    char const* readNumber_(char const* at)
    {
        char const* const start = at;
        at += *at == '-' ? 1 : 0;
        if (*at == '0' && isDigit(at[1])) {
            return problem_.note(at + 1, "Leading zeros are not allowed in JSON numbers");
        }
        if (!isDigit(*at)) {
            return problem_.note(at, "Expected digit in number literal");
        }
        std::uint64_t digits = 0;
        std::ptrdiff_t decimals = 0;
        at = scanDigits(at, digits);
        if (*at == '.') {
            char const* const fraction = at + 1;
            at = scanDigits(fraction, digits);
            decimals = at - fraction;
            if (decimals == 0) {
                return problem_.note(at, "Expected digit after decimal point");
            }
        }
        bool const hasExponent = *at == 'e' || *at == 'E';
        if (hasExponent) {
            at += at[1] == '-' || at[1] == '+' ? 2 : 1;
            if (!isDigit(*at)) {
                return problem_.note(at, "Expected digit in exponent");
            }
            std::uint64_t exponent = 0;
            at = scanDigits(at, exponent);
        }
        if (decimals == 0 && !hasExponent) {
            return addInt_(start, at);
        }
        double number = 0.0;
        if ((hasExponent || !readShortDouble(start, at, digits, decimals, number)) &&
            !sw_detail::readDouble(start, at, number)) {
            return problem_.note(start, "Invalid floating-point number");
        }
        tree_.addDouble(number);
        return at;
    }

    char const* addInt_(char const* start, char const* end)
    {
        std::int64_t number = 0;
        if (std::from_chars(start, end, number).ec != std::errc()) {
            return problem_.note(start, "Invalid integer number");
        }
        tree_.addInt(number);
        return end;
    }

    /// Takes the bytes up to a delimiter as cipher text of a scalar. Without any, or when they cannot be decrypted,
    /// reads on as if there were no key.
    char const* readEncryptedToken_(char const* at)
    {
        char const* stop = at;
        while (stop != end_ && *stop != ']' && *stop != '}' && *stop != ',' && !isSpace(*stop)) {
            ++stop;
        }
        std::string& plain = tree_.keep();
        if (stop == at || !decrypt_({at, static_cast<std::size_t>(stop - at)}, plain)) {
            return readBareValue_(at);
        }
        addDecryptedScalar(tree_, plain);
        return stop;
    }

    /// False when decryption throws, which it does for nothing that the data could cause.
    bool decrypt_(std::string_view cipherText, std::string& plain) const
    {
        try {
            plain = SwCrypto::decryptOrReport(cipherText, key_.toStdString());
        } catch (std::bad_alloc const&) {
            throw;
        } catch (...) {
            return false;
        }
        return true;
    }

    char const* begin_;
    char const* end_;
    SwString const& key_;
    bool hasKey_;
    JsonProblem problem_;
    JsonBuilder tree_;
};

/// Moves the cursor to where a step ended, or to its problem, which is given back.
template <typename Step>
std::string_view takeStep(std::string const& text, std::size_t& cursor, Step const& step)
{
    char const* const begin = text.c_str();
    JsonProblem problem;
    char const* const at = step(begin + std::min(cursor, text.size()), begin + text.size(), problem);
    cursor = static_cast<std::size_t>((at != nullptr ? at : problem.at) - begin);
    return problem.message;
}

}  // namespace

SwJsonDocument SwJsonDocument::fromJson(SwString const& text, SwString const& key, SwString& error)
{
    std::size_t cursor = 0;
    SwJsonDocument document(parseJson(text, cursor, key, error));
    std::string const& bytes = text;
    if (error.isEmpty() && skipSpace(bytes.c_str() + cursor) != bytes.c_str() + bytes.size()) {
        error = "Unexpected characters at the end of JSON.";
        return {};
    }
    return document;
}

SwJsonValue SwJsonDocument::parseJson(SwString const& text, std::size_t& cursor, SwString const& key, SwString& error)
{
    SwJsonValue root;
    if (!error.isEmpty()) {
        return root;
    }
    Reader reader(text, key);
    if (!reader.read(cursor, root)) {
        reportError(error, text, cursor, reader.problem());
    }
    return root;
}

std::string SwJsonDocument::parseString(SwString const& text, std::size_t& cursor, SwString& error)
{
    std::string decoded;
    std::string_view const problem =
        takeStep(text, cursor, [&decoded](char const* at, char const* end, JsonProblem& found) {
            return sw_detail::scanString(at, end, decoded, found);
        });
    if (!problem.empty()) {
        reportError(error, text, cursor, problem);
        decoded.clear();
    }
    return decoded;
}

std::string_view SwJsonDocument::parseUnicodeEscapeSequence(SwString const& text, std::size_t& cursor, std::string& out)
{
    return takeStep(text, cursor, [&out](char const* at, char const* end, JsonProblem& found) {
        return sw_detail::scanUnicodeEscape(at, end, out, found);
    });
}

void SwJsonDocument::reportError(SwString& error, SwString const& text, std::size_t index, std::string_view message)
{
    if (!error.isEmpty()) {
        return;
    }
    constexpr std::size_t kContextBytes = 20;
    std::string const& bytes = text;
    std::size_t const first = std::min(std::max(index, kContextBytes) - kContextBytes, bytes.size());
    std::size_t const last = std::min(index + kContextBytes, bytes.size());
    std::string report(message);
    report.append(" (index ").append(std::to_string(index)).append(") near \"");
    report.append(bytes, first, last - first).push_back('"');
    error = std::move(report);
}
