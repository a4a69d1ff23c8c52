// The JSON writer: value tree to text, compact or indented, in the clear or with encrypted scalars. Open
// containers stand on a stack of its own, so that depth costs memory and never the thread's stack.
#include "SwJson.h"
#include "sw_numbers.h"

#include <charconv>
#include <cmath>
#include <locale>
#include <sstream>

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

/// The number of decimals of a Double with a fractional part.
constexpr int kDecimals = 6;

void appendEscaped(std::string_view text, std::string& out)
{
    std::size_t plainFrom = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto const byte = static_cast<unsigned char>(text[i]);
        if (byte >= 0x20U && byte != '"' && byte != '\\') {
            continue;
        }
        out.append(text, plainFrom, i - plainFrom);
        plainFrom = i + 1;
        out.push_back('\\');
        switch (byte) {
        case '"':
        case '\\':
            out.push_back(text[i]);
            break;
        case '\b':
            out.push_back('b');
            break;
        case '\f':
            out.push_back('f');
            break;
        case '\n':
            out.push_back('n');
            break;
        case '\r':
            out.push_back('r');
            break;
        case '\t':
            out.push_back('t');
            break;
        default:
            out.append("u00");
            out.push_back(kHexDigits[byte >> 4U]);
            out.push_back(kHexDigits[byte & 15U]);
            break;
        }
    }
    out.append(text, plainFrom);
}

/// A number with a fractional part as a new stream writes it, which follows the global C++ locale.
std::string fractionText(double number)
{
    std::ostringstream stream;
    stream.precision(kDecimals);
    stream << std::fixed << number;
    return stream.str();
}

std::string doubleText(double number)
{
    if (std::isnan(number)) {
        return "nan";
    }
    double whole = 0.0;
    if (std::modf(number, &whole) == 0.0) {
        return std::to_string(sw_detail::saturatedInt64(whole));
    }
    return fractionText(number);
}

/// One writing of one value.
class Writer {
public:
    Writer(std::string& out, bool pretty, int level, SwString const& key)
        : out_(out)
        , pretty_(pretty)
        , baseLevel_(level < 0 ? 0 : static_cast<std::size_t>(level))
        , key_(key)
    {
    }

    void write(SwJsonValue const& root)
    {
        writeValue_(root);
        while (!open_.empty()) {
            Open& top = open_.back();
            if (top.object != nullptr) {
                nextMember_(top);
            } else {
                nextElement_(top);
            }
        }
    }

private:
    /// An open container and how far it is written; one of the two pointers is set.
    struct Open {
        SwJsonObject const* object = nullptr;
        SwJsonObject::const_iterator member;
        SwJsonArray const* array = nullptr;
        std::size_t element = 0;
    };

    void writeValue_(SwJsonValue const& value)
    {
        switch (value.type()) {
        case SwJsonValue::Null:
            out_.append("null");
            break;
        case SwJsonValue::Bool:
            writeScalar_(value.toBool() ? "true" : "false");
            break;
        case SwJsonValue::Int:
            writeScalar_(std::to_string(value.toInt()));
            break;
        case SwJsonValue::Double:
            writeScalar_(doubleText(value.toDouble()));
            break;
        case SwJsonValue::String:
            writeString_(value.stringRef());
            break;
        case SwJsonValue::Object:
            openObject_(value.toObject());
            break;
        case SwJsonValue::Array:
            openArray_(value.toArray());
            break;
        }
    }

    void writeScalar_(std::string const& text)
    {
        out_.append(key_.isEmpty() ? text : SwString(text).encryptAES(key_).toStdString());
    }

    void writeString_(std::string const& text)
    {
        out_.push_back('"');
        if (key_.isEmpty()) {
            appendEscaped(text, out_);
        } else {
            appendEscaped(SwString(text).encryptAES(key_).toStdString(), out_);
        }
        out_.push_back('"');
    }

    void openObject_(SwJsonObject const& object)
    {
        if (object.empty()) {
            out_.append("{}");
            return;
        }
        out_.push_back('{');
        Open open;
        open.object = &object;
        open.member = object.begin();
        open_.push_back(open);
    }

    void openArray_(SwJsonArray const& array)
    {
        if (array.empty()) {
            out_.append("[]");
            return;
        }
        out_.push_back('[');
        Open open;
        open.array = &array;
        open_.push_back(open);
    }

    void nextMember_(Open& top)
    {
        if (top.member == top.object->end()) {
            close_('}');
            return;
        }
        separate_(top.member == top.object->begin());
        out_.push_back('"');
        appendEscaped(top.member->first, out_);
        out_.append("\": ");
        SwJsonValue const& value = top.member->second;
        ++top.member;
        writeValue_(value);
    }

    void nextElement_(Open& top)
    {
        if (top.element == top.array->size()) {
            close_(']');
            return;
        }
        separate_(top.element == 0);
        SwJsonValue const& value = (*top.array)[top.element];
        ++top.element;
        writeValue_(value);
    }

    /// What stands before a member or element.
    void separate_(bool first)
    {
        if (!first) {
            out_.push_back(',');
        }
        breakLine_();
    }

    void close_(char bracket)
    {
        open_.pop_back();
        breakLine_();
        out_.push_back(bracket);
    }

    /// A line end and the indent of the open depth, in the indented form only.
    void breakLine_()
    {
        if (pretty_) {
            out_.push_back('\n');
            out_.append(2 * (baseLevel_ + open_.size()), ' ');
        }
    }

    std::string& out_;
    bool pretty_;
    std::size_t baseLevel_;
    SwString const& key_;
    std::vector<Open> open_;
};

}  // namespace

std::string SwJsonValue::escapeString(std::string_view text)
{
    std::string escaped;
    escaped.reserve(text.size());
    appendEscaped(text, escaped);
    return escaped;
}

void SwJsonDocument::generateJson(SwJsonValue const& value, SwString& out, bool pretty, int level, SwString const& key)
{
    std::string text = out.takeStdString();
    Writer(text, pretty, level, key).write(value);
    out = std::move(text);
}

SwString SwJsonDocument::toJson(bool pretty, SwString const& key) const
{
    SwString text;
    generateJson(root_, text, pretty, 0, key);
    return text;
}
