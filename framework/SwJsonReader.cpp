// The JSON reader: text to value tree in one pass, with string coercion and decryption on the way. Open
// containers stand on a stack of its own, so that depth costs memory and never the thread's stack.
#include "SwJson.h"
#include "sw_diagnostic.h"
#include "sw_json_builder.h"
#include "sw_json_scan.h"
#include "sw_numbers.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <locale.h>

using sw_detail::isDigit;
using sw_detail::isLetter;
using sw_detail::isSpace;
using sw_detail::JsonBuilder;
using sw_detail::skipSpace;

namespace {

/// What an all-literal or all-number text is: nothing, digits only, or digits around one point.
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

/// The whole of a decrypted text as a base-10 integer, as strtoll reads it.
bool wholeInteger(std::string const& text, std::int64_t& number)
{
    char const* const end = text.c_str() + text.size();
    char const* at = skipSpace(text.c_str(), end);
    // A plus sign is the one thing that strtoll accepts and from_chars does not.
    if (*at == '+' && isDigit(at[1])) {
        ++at;
    }
    std::from_chars_result const read = std::from_chars(at, end, number);
    return read.ec == std::errc() && read.ptr == end;
}

/// The whole of a decrypted text as a double, as strtod reads it in the "C" locale.
bool wholeDouble(std::string const& text, double& number)
{
    static locale_t const classic = newlocale(LC_ALL_MASK, "C", nullptr);
    char* stop = nullptr;
    errno = 0;
    number = strtod_l(text.c_str(), &stop, classic);
    return stop == text.c_str() + text.size() && errno == 0;
}

/// A decrypted bare token takes the kind of the scalar that was written.
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
        tree.addString(tree.keep(plain));
    }
}

/// One reading of one value: cursor, open containers and the first problem.
class Reader {
public:
    Reader(SwString const& text, std::size_t cursor, SwString const& key)
        : begin_(text.c_str())
        , at_(begin_ + std::min(cursor, text.size()))
        , end_(begin_ + text.size())
        , key_(key)
        , hasKey_(!key.isEmpty())
        , tree_(text.size())
    {
    }

    /// Reads the value into `root`; false when there is a problem.
    bool read(SwJsonValue& root)
    {
        bool valueFollows = true;
        while (valueFollows) {
            if (!readValue_()) {
                return false;
            }
            valueFollows = false;
            while (!valueFollows && tree_.isOpen()) {
                if (!(tree_.isInObject() ? nextMember_(valueFollows) : nextElement_(valueFollows))) {
                    return false;
                }
            }
        }
        root = tree_.takeRoot();
        return true;
    }

    std::size_t cursor() const { return static_cast<std::size_t>(at_ - begin_); }
    std::size_t problemIndex() const { return static_cast<std::size_t>(problem_.at - begin_); }
    std::string_view problemMessage() const { return problem_.message; }

private:
    bool fail_(std::string_view message)
    {
        problem_ = {at_, message};
        return false;
    }

    /// Reads a scalar, or opens a container.
    bool readValue_()
    {
        at_ = skipSpace(at_, end_);
        if (at_ == end_) {
            return fail_("Unexpected end of JSON input");
        }
        switch (*at_) {
        case '{':
            ++at_;
            tree_.openObject();
            justOpened_ = true;
            return true;
        case '[':
            ++at_;
            tree_.openArray();
            justOpened_ = true;
            return true;
        case '"':
            return readStringValue_();
        default:
            return readBareValue_();
        }
    }

    /// Reads up to the value of the next member; without one the object ends here.
    bool nextMember_(bool& valueFollows)
    {
        at_ = skipSpace(at_, end_);
        if (!justOpened_) {
            if (at_ == end_) {
                return fail_("Unterminated JSON object");
            }
            if (*at_ == '}') {
                return close_();
            }
            if (*at_ != ',') {
                return fail_("Expected ',' or '}' in object");
            }
            at_ = skipSpace(at_ + 1, end_);
        }
        justOpened_ = false;
        if (at_ == end_) {
            return fail_("Unterminated JSON object");
        }
        // Also after a comma: a trailing one is accepted.
        if (*at_ == '}') {
            return close_();
        }
        if (*at_ != '"') {
            return fail_("Expected string key in object");
        }
        std::string_view name;
        if (!readString_(name)) {
            return false;
        }
        at_ = skipSpace(at_, end_);
        if (at_ == end_ || *at_ != ':') {
            return fail_("Expected ':' after object key");
        }
        ++at_;
        tree_.name(name);
        valueFollows = true;
        return true;
    }

    /// Reads up to the next element; without one the array ends here.
    bool nextElement_(bool& valueFollows)
    {
        if (!justOpened_) {
            at_ = skipSpace(at_, end_);
            if (at_ == end_) {
                return fail_("Unterminated JSON array");
            }
            if (*at_ == ']') {
                return close_();
            }
            if (*at_ != ',') {
                return fail_("Expected ',' or ']' in array");
            }
            ++at_;
        }
        justOpened_ = false;
        // Only directly behind the bracket or comma; white space there makes it a missing value.
        if (at_ == end_) {
            return fail_("Unterminated JSON array");
        }
        at_ = skipSpace(at_, end_);
        if (at_ != end_ && *at_ == ']') {
            return close_();
        }
        valueFollows = true;
        return true;
    }

    bool close_()
    {
        ++at_;
        tree_.close();
        justOpened_ = false;
        return true;
    }

    /// A string whose bytes stay: in the text itself or, with escapes, kept.
    bool readString_(std::string_view& text)
    {
        if (!sw_detail::scanString(at_, end_, text, scratch_, problem_)) {
            return false;
        }
        if (text.data() == scratch_.data()) {
            text = tree_.keep(text);
        }
        return true;
    }

    bool readStringValue_()
    {
        std::string_view text;
        if (!readString_(text)) {
            return false;
        }
        if (!hasKey_) {
            addCoerced(tree_, text);
            return true;
        }
        SwString plain;
        try {
            plain = SwString(std::string(text)).decryptAES(key_);
        } catch (...) {
            return fail_("Unable to decrypt string value");
        }
        addCoerced(tree_, tree_.keep(plain.toStdString()));
        return true;
    }

    bool readBareValue_()
    {
        if (hasKey_ && readEncryptedToken_()) {
            return true;
        }
        switch (*at_) {
        case 't':
        case 'f':
            return readLetters_("Invalid boolean literal");
        case 'n':
            return readLetters_("Invalid literal, expected 'null'");
        default:
            return readNumber_();
        }
    }

    /// The run of letters here, which must be one of the literals that its first letter announces.
    bool readLetters_(std::string_view message)
    {
        char const* const start = at_;
        while (isLetter(*at_)) {
            ++at_;
        }
        return addLiteral(tree_, std::string_view(start, static_cast<std::size_t>(at_ - start))) || fail_(message);
    }

    bool readNumber_()
    {
        // With a key any byte leads here and fails as a number; without one it is named a bad token.
        if (!hasKey_ && *at_ != '-' && !isDigit(*at_)) {
            return fail_("Invalid JSON token");
        }
        sw_detail::JsonNumber number;
        if (!sw_detail::scanNumber(at_, number, problem_)) {
            return false;
        }
        if (number.isDouble) {
            tree_.addDouble(number.real);
        } else {
            tree_.addInt(number.whole);
        }
        return true;
    }

    /// Takes the bytes up to a delimiter as cipher text of a scalar; false when there are none.
    bool readEncryptedToken_()
    {
        char const* stop = at_;
        while (stop != end_ && *stop != ']' && *stop != '}' && *stop != ',' && !isSpace(*stop)) {
            ++stop;
        }
        if (stop == at_) {
            return false;
        }
        SwString plain;
        try {
            plain = SwString(std::string(at_, stop)).decryptAES(key_);
        } catch (...) {
            // Read on as if there were no key.
            return false;
        }
        at_ = stop;
        addDecryptedScalar(tree_, plain.toStdString());
        return true;
    }

    char const* begin_;
    char const* at_;
    char const* end_;
    SwString const& key_;
    bool hasKey_;
    bool justOpened_ = false;
    JsonBuilder tree_;
    std::string scratch_;
    sw_detail::JsonProblem problem_;
};

}  // namespace

SwJsonDocument SwJsonDocument::fromJson(SwString const& text, SwString const& key, SwString& error)
{
    std::size_t cursor = 0;
    SwJsonDocument document(parseJson(text, cursor, key, error));
    if (error.isEmpty()) {
        char const* const end = text.c_str() + text.size();
        if (skipSpace(text.c_str() + cursor, end) != end) {
            error = "Unexpected characters at the end of JSON.";
        }
    }
    if (!error.isEmpty()) {
        document.root_ = SwJsonValue();
    }
    return document;
}

SwJsonValue SwJsonDocument::parseJson(SwString const& text, std::size_t& cursor, SwString const& key, SwString& error)
{
    Reader reader(text, cursor, key);
    SwJsonValue root;
    bool const read = reader.read(root);
    cursor = reader.cursor();
    if (!read) {
        reportError(error, text, reader.problemIndex(), reader.problemMessage());
        return {};
    }
    return root;
}

std::string SwJsonDocument::parseString(SwString const& text, std::size_t& cursor, SwString& error)
{
    char const* const begin = text.c_str();
    char const* const end = begin + text.size();
    if (cursor >= text.size()) {
        reportError(error, text, text.size(), "Unterminated string literal");
        return {};
    }
    char const* at = begin + cursor;
    std::string_view decoded;
    std::string scratch;
    sw_detail::JsonProblem problem;
    bool const read = sw_detail::scanString(at, end, decoded, scratch, problem);
    cursor = static_cast<std::size_t>(at - begin);
    if (!read) {
        reportError(error, text, static_cast<std::size_t>(problem.at - begin), problem.message);
        return {};
    }
    return std::string(decoded);
}

bool SwJsonDocument::parseUnicodeEscapeSequence(SwString const& text, std::size_t& cursor, std::string& out,
                                                SwString& error)
{
    char const* const begin = text.c_str();
    char const* at = begin + std::min(cursor, text.size());
    sw_detail::JsonProblem problem;
    bool const read = sw_detail::scanUnicodeEscape(at, begin + text.size(), out, problem);
    cursor = static_cast<std::size_t>(at - begin);
    if (!read) {
        reportError(error, text, static_cast<std::size_t>(problem.at - begin), problem.message);
    }
    return read;
}

void SwJsonDocument::reportError(SwString& error, SwString const& text, std::size_t index, std::string_view message)
{
    if (!error.isEmpty()) {
        return;
    }
    constexpr std::size_t kContextBytes = 20;
    std::size_t const first = std::min(std::max(index, kContextBytes) - kContextBytes, text.size());
    std::size_t const last = std::min(index + kContextBytes, text.size());
    std::string report(message);
    report.append(" (index ").append(std::to_string(index)).append(") near \"");
    report.append(text.toStdString(), first, last - first).push_back('"');
    error = std::move(report);
}
