// The JSON writer: value tree to text, compact or indented, in the clear or with encrypted scalars. Open
// containers stand on a stack of its own, so that depth costs memory and never the thread's stack.
#include "SwCrypto.h"
#include "SwJson.h"
#include "sw_fixed_number.h"
#include "sw_json_scan.h"
#include "sw_numbers.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace {

/// What is written first gathers here, so that small pieces cost no call and no look at the string's room.
class TextSink {
public:
    explicit TextSink(std::string& out) : out_(out) {}
    TextSink(TextSink const&) = delete;
    TextSink& operator=(TextSink const&) = delete;

    void put(char byte)
    {
        if (used_ == sizeof buffer_) {
            flush();
        }
        buffer_[used_++] = byte;
    }
    void put(std::string_view bytes)
    {
        if (bytes.size() > sizeof buffer_ - used_) {
            flush();
            if (bytes.size() > sizeof buffer_) {
                out_.append(bytes);
                return;
            }
        }
        std::memcpy(buffer_ + used_, bytes.data(), bytes.size());
        used_ += bytes.size();
    }
    void fill(std::size_t count, char byte)
    {
        for (; count > 0; --count) {
            put(byte);
        }
    }
    /// Room for `bytes` at the end, at most kLargestRoom; what of it was filled is told to `advance`.
    char* room(std::size_t bytes)
    {
        if (bytes > sizeof buffer_ - used_) {
            flush();
        }
        return buffer_ + used_;
    }
    void advance(char const* end) { used_ = static_cast<std::size_t>(end - buffer_); }
    void flush()
    {
        out_.append(buffer_, used_);
        used_ = 0;
    }

    static constexpr std::size_t kLargestRoom = 4096;

private:
    std::string& out_;
    std::size_t used_ = 0;
    char buffer_[kLargestRoom];
};

void putEscape(unsigned char byte, TextSink& out)
{
    constexpr std::string_view kHexDigits = "0123456789ABCDEF";
    out.put('\\');
    switch (byte) {
    case '"':
    case '\\':
        out.put(static_cast<char>(byte));
        break;
    case '\b':
        out.put('b');
        break;
    case '\f':
        out.put('f');
        break;
    case '\n':
        out.put('n');
        break;
    case '\r':
        out.put('r');
        break;
    case '\t':
        out.put('t');
        break;
    default:
        out.put("u00");
        out.put(kHexDigits[byte >> 4U]);
        out.put(kHexDigits[byte & 15U]);
        break;
    }
}

void putEscaped(std::string_view text, TextSink& out)
{
    char const* at = text.data();
    char const* const end = at + text.size();
    for (;;) {
        // The bytes that end a plain run while reading are those that need an escape while writing.
        char const* const run = at;
        at = sw_detail::endOfPlainRun(at, end);
        out.put(std::string_view(run, static_cast<std::size_t>(at - run)));
        if (at == end) {
            return;
        }
        putEscape(static_cast<unsigned char>(*at), out);
        ++at;
    }
}

void putInt(std::int64_t number, TextSink& out)
{
    constexpr std::size_t kInt64Bytes = 20;
    char* const room = out.room(kInt64Bytes);
    out.advance(std::to_chars(room, room + kInt64Bytes, number).ptr);
}

/// A number with a fractional part. With a point under every locale: a comma would end the number.
void putFraction(double number, TextSink& out)
{
    constexpr int kDecimals = 6;
    out.advance(sw_detail::writeFixed(out.room(sw_detail::fixedLength(kDecimals)), number, kDecimals));
}

void putDouble(double number, TextSink& out)
{
    if (std::isnan(number)) {
        out.put("nan");
        return;
    }
    double whole = 0.0;
    if (std::modf(number, &whole) == 0.0) {
        putInt(sw_detail::saturatedInt64(whole), out);
        return;
    }
    putFraction(number, out);
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
        out_.flush();
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
            out_.put("null");
            break;
        case SwJsonValue::Bool:
            writeScalar_(value, [](SwJsonValue const& scalar, TextSink& out) {
                out.put(std::string_view(scalar.toBool() ? "true" : "false"));
            });
            break;
        case SwJsonValue::Int:
            writeScalar_(value, [](SwJsonValue const& scalar, TextSink& out) { putInt(scalar.toInt(), out); });
            break;
        case SwJsonValue::Double:
            writeScalar_(value, [](SwJsonValue const& scalar, TextSink& out) { putDouble(scalar.toDouble(), out); });
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

    template <typename Put>
    void writeScalar_(SwJsonValue const& scalar, Put const& put)
    {
        if (key_.isEmpty()) {
            put(scalar, out_);
            return;
        }
        std::string plain;
        TextSink sink(plain);
        put(scalar, sink);
        sink.flush();
        out_.put(SwCrypto::encryptOrReport(plain, key_.toStdString()));
    }

    void writeString_(std::string const& text)
    {
        out_.put('"');
        if (key_.isEmpty()) {
            putEscaped(text, out_);
        } else {
            putEscaped(SwCrypto::encryptOrReport(text, key_.toStdString()), out_);
        }
        out_.put('"');
    }

    void openObject_(SwJsonObject const& object)
    {
        if (object.empty()) {
            out_.put("{}");
            return;
        }
        out_.put('{');
        Open open;
        open.object = &object;
        open.member = object.begin();
        open_.push_back(open);
    }

    void openArray_(SwJsonArray const& array)
    {
        if (array.empty()) {
            out_.put("[]");
            return;
        }
        out_.put('[');
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
        out_.put('"');
        putEscaped(top.member->first, out_);
        out_.put("\": ");
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
            out_.put(',');
        }
        breakLine_();
    }

    void close_(char bracket)
    {
        open_.pop_back();
        breakLine_();
        out_.put(bracket);
    }

    /// A line end and the indent of the open depth, in the indented form only.
    void breakLine_()
    {
        if (pretty_) {
            out_.put('\n');
            out_.fill(2 * (baseLevel_ + open_.size()), ' ');
        }
    }

    TextSink out_;
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
    TextSink sink(escaped);
    putEscaped(text, sink);
    sink.flush();
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
