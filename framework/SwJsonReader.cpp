// The JSON reader: text to value tree in one pass, with string coercion and decryption on the way. Open
// containers stand on a stack of its own, so that depth costs memory and never the thread's stack.
#include "SwCrypto.h"
#include "SwJson.h"
#include "sw_diagnostic.h"
#include "sw_json_builder.h"
#include "sw_json_number.h"
#include "sw_json_scan.h"
#include "sw_numbers.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <new>

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

/// Whether the text begins as a literal or number does: most do not.
bool mayBeCoerced(std::string_view text)
{
    char const first = text.empty() ? '\0' : text.front();
    return isDigit(first) || first == '-' || first == '.' || first == 't' || first == 'f' || first == 'n';
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
    char* stop = nullptr;
    errno = 0;
    number = strtod_l(text.c_str(), &stop, sw_detail::classicLocale());
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

/// One reading of one value: the open containers and the first problem. Each step takes the cursor and gives the
/// new one, null after a problem; so it stays in a register of the processor.
class Reader {
public:
    Reader(SwString const& text, SwString const& key)
        : begin_(text.c_str())
        , end_(begin_ + text.toStdString().size())
        , key_(key)
        , hasKey_(!key.isEmpty())
        , tree_(text.toStdString().size())
    {
    }

    /// Reads the value at `cursor` into `root` and moves the cursor behind it, or to where reading stopped;
    /// false when there is a problem.
    bool read(std::size_t& cursor, SwJsonValue& root)
    {
        char const* const stop = readAll_(begin_ + std::min(cursor, size_()));
        cursor = static_cast<std::size_t>((stop != nullptr ? stop : stopped_) - begin_);
        if (stop == nullptr) {
            return false;
        }
        root = tree_.takeRoot();
        return true;
    }

    /// What the root owns; see JsonBuilder.
    std::unique_ptr<sw_detail::JsonDocumentMemory> takeMemory() { return tree_.takeMemory(); }
    std::size_t problemIndex() const { return static_cast<std::size_t>(problem_.at - begin_); }
    std::string_view problemMessage() const { return problem_.message; }

private:
    std::size_t size_() const { return static_cast<std::size_t>(end_ - begin_); }

    char const* fail_(char const* at, std::string_view message)
    {
        problem_ = {at, message};
        return stopAt_(at);
    }
    /// The problem is noted already.
    char const* stopAt_(char const* at)
    {
        stopped_ = at;
        return nullptr;
    }

    char const* readAll_(char const* at)
    {
        for (;;) {
            at = skipSpace(at, end_);
            if (at == end_) {
                return fail_(at, "Unexpected end of JSON input");
            }
            bool const opens = *at == '{' || *at == '[';
            if (opens) {
                tree_.open(*at == '{');
                ++at;
            } else {
                at = *at == '"' ? readStringValue_(at) : readBareValue_(at);
            }
            bool isFirst = opens;
            bool valueFollows = false;
            while (!valueFollows) {
                if (at == nullptr || !tree_.isOpen()) {
                    return at;
                }
                at = tree_.isInObject() ? nextMember_(at, isFirst, valueFollows)
                                        : nextElement_(at, isFirst, valueFollows);
                isFirst = false;
            }
        }
    }

    /// Reads up to the value of the next member; without one the object ends here.
    char const* nextMember_(char const* at, bool isFirst, bool& valueFollows)
    {
        at = skipSpace(at, end_);
        if (!isFirst) {
            if (*at == ',') {
                at = skipSpace(at + 1, end_);
            } else if (*at != '}') {
                return fail_(at, at == end_ ? "Unterminated JSON object" : "Expected ',' or '}' in object");
            }
        }
        if (*at != '"') {
            // Also after a comma: a trailing one is accepted.
            if (*at == '}') {
                return close_(at);
            }
            return fail_(at, at == end_ ? "Unterminated JSON object" : "Expected string key in object");
        }
        std::string_view name;
        at = readString_(at, name);
        if (at == nullptr) {
            return nullptr;
        }
        at = skipSpace(at, end_);
        if (*at != ':') {
            return fail_(at, "Expected ':' after object key");
        }
        tree_.name(name);
        valueFollows = true;
        return at + 1;
    }

    /// Reads up to the next element; without one the array ends here.
    char const* nextElement_(char const* at, bool isFirst, bool& valueFollows)
    {
        if (!isFirst) {
            at = skipSpace(at, end_);
            if (*at == ']') {
                return close_(at);
            }
            if (*at != ',') {
                return fail_(at, at == end_ ? "Unterminated JSON array" : "Expected ',' or ']' in array");
            }
            ++at;
        }
        // Only directly behind the bracket or comma; white space there makes it a missing value.
        if (at == end_) {
            return fail_(at, "Unterminated JSON array");
        }
        at = skipSpace(at, end_);
        if (*at == ']') {
            return close_(at);
        }
        valueFollows = true;
        return at;
    }

    char const* close_(char const* at)
    {
        tree_.close();
        return at + 1;
    }

    /// A string whose bytes stay: in the text itself or, with escapes, kept.
    char const* readString_(char const* at, std::string_view& text)
    {
        if (!sw_detail::scanString(at, end_, text, scratch_, problem_)) {
            return stopAt_(at);
        }
        if (text.data() == scratch_.data()) {
            text = tree_.keep(text);
        }
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
            return addDecryptedString_(at, text);
        }
        if (mayBeCoerced(text)) {
            addCoerced(tree_, text);
        } else {
            tree_.addString(text);
        }
        return at;
    }

    char const* addDecryptedString_(char const* at, std::string_view text)
    {
        std::string plain;
        try {
            plain = SwCrypto::decryptOrReport(text, key_.toStdString());
        } catch (std::bad_alloc const&) {
            throw;
        } catch (...) {
            return fail_(at, "Unable to decrypt string value");
        }
        addCoerced(tree_, tree_.keep(plain));
        return at;
    }

    char const* readBareValue_(char const* at)
    {
        if (hasKey_) {
            if (char const* const stop = readEncryptedToken_(at)) {
                return stop;
            }
        }
        if (isDigit(*at) || *at == '-') {
            return readNumber_(at);
        }
        switch (*at) {
        case 't':
        case 'f':
            return readLetters_(at, "Invalid boolean literal");
        case 'n':
            return readLetters_(at, "Invalid literal, expected 'null'");
        default:
            // With a key every other byte is read as a number, which it is not.
            return hasKey_ ? readNumber_(at) : fail_(at, "Invalid JSON token");
        }
    }

    /// The run of letters here, which must be one of the literals that its first letter announces.
    char const* readLetters_(char const* at, std::string_view message)
    {
        char const* const start = at;
        while (isLetter(*at)) {
            ++at;
        }
        bool const isLiteral = addLiteral(tree_, std::string_view(start, static_cast<std::size_t>(at - start)));
        return isLiteral ? at : fail_(at, message);
    }

    char const* readNumber_(char const* at)
    {
        sw_detail::JsonNumber number;
        if (!sw_detail::scanNumber(at, end_, number, problem_)) {
            return stopAt_(at);
        }
        if (number.isDouble) {
            tree_.addDouble(number.real);
        } else {
            tree_.addInt(number.whole);
        }
        return at;
    }

    /// Takes the bytes up to a delimiter as cipher text of a scalar; null when there are none.
    char const* readEncryptedToken_(char const* at)
    {
        char const* stop = at;
        while (stop != end_ && *stop != ']' && *stop != '}' && *stop != ',' && !isSpace(*stop)) {
            ++stop;
        }
        if (stop == at) {
            return nullptr;
        }
        std::string plain;
        try {
            plain = SwCrypto::decryptOrReport({at, static_cast<std::size_t>(stop - at)}, key_.toStdString());
        } catch (std::bad_alloc const&) {
            throw;
        } catch (...) {
            // Read on as if there were no key.
            return nullptr;
        }
        addDecryptedScalar(tree_, plain);
        return stop;
    }

    char const* begin_;
    char const* end_;
    SwString const& key_;
    bool hasKey_;
    JsonBuilder tree_;
    std::string scratch_;
    sw_detail::JsonProblem problem_;
    char const* stopped_ = nullptr;
};

}  // namespace

SwJsonDocument SwJsonDocument::fromJson(SwString const& text, SwString const& key, SwString& error)
{
    SwJsonDocument document;
    std::size_t cursor = 0;
    Reader reader(text, key);
    if (!reader.read(cursor, document.root_)) {
        reportError(error, text, reader.problemIndex(), reader.problemMessage());
        return {};
    }
    if (error.isEmpty()) {
        char const* const end = text.c_str() + text.toStdString().size();
        if (skipSpace(text.c_str() + cursor, end) != end) {
            error = "Unexpected characters at the end of JSON.";
        }
    }
    if (!error.isEmpty()) {
        return {};
    }
    // A single long string owns no block.
    if (document.root_.hasContainer()) {
        document.memory_ = reader.takeMemory();
    }
    return document;
}

SwJsonValue SwJsonDocument::parseJson(SwString const& text, std::size_t& cursor, SwString const& key, SwString& error)
{
    Reader reader(text, key);
    SwJsonValue root;
    if (!reader.read(cursor, root)) {
        reportError(error, text, reader.problemIndex(), reader.problemMessage());
        return {};
    }
    return root;
}

std::string SwJsonDocument::parseString(SwString const& text, std::size_t& cursor, SwString& error)
{
    char const* const begin = text.c_str();
    std::size_t const size = text.toStdString().size();
    char const* const end = begin + size;
    if (cursor >= size) {
        reportError(error, text, size, "Unterminated string literal");
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
    char const* const end = begin + text.toStdString().size();
    char const* at = begin + std::min(cursor, text.toStdString().size());
    sw_detail::JsonProblem problem;
    bool const read = sw_detail::scanUnicodeEscape(at, end, out, problem);
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
    std::size_t const size = text.toStdString().size();
    std::size_t const first = std::min(std::max(index, kContextBytes) - kContextBytes, size);
    std::size_t const last = std::min(index + kContextBytes, size);
    std::string report(message);
    report.append(" (index ").append(std::to_string(index)).append(") near \"");
    report.append(text.toStdString(), first, last - first).push_back('"');
    error = std::move(report);
}
