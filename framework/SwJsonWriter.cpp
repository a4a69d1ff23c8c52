// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The JSON writer: value tree to text, compact or indented, in the clear or with encrypted scalars. Open
// containers stand on a stack of its own, so that depth costs memory and never the thread's stack.
#include "SwCrypto.h"
#include "SwJson.h"
#include "sw_fixed_number.h"
#include "sw_json_scan.h"
#include "sw_numbers.h"

#include <cmath>
#include <vector>

namespace {

void appendEscape(std::string& out, char byte)
{
    constexpr std::string_view hexDigits = "0123456789ABCDEF";
    out.push_back('\\');
    switch (byte) {
    case '"':
    case '\\':
        out.push_back(byte);
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
        out.push_back(hexDigits[static_cast<unsigned char>(byte) >> 4U]);
        out.push_back(hexDigits[static_cast<unsigned char>(byte) & 15U]);
        break;
    }
}

void appendEscaped(std::string& out, std::string_view text)
{
    while (!text.empty()) {
        // The bytes that end a plain run while reading are those that need an escape while writing.
        char const* const runEnd = sw_detail::endOfPlainRun(text.data(), text.data() + text.size());
        auto const run = static_cast<std::size_t>(runEnd - text.data());
        out.append(text, 0, run);
        text.remove_prefix(run);
        if (!text.empty()) {
            appendEscape(out, text.front());
            text.remove_prefix(1);
        }
    }
}

/// Whole numbers as integers, others fixed with six digits; with a point under every locale: a comma would end the
/// number.
void appendDouble(std::string& out, double number)
{
    double whole = 0.0;
    if (std::isnan(number)) {
        out.append("nan");
    } else if (std::modf(number, &whole) == 0.0) {
        out.append(std::to_string(sw_detail::saturatedInt64(whole)));
    } else {
        sw_detail::appendFixed(out, number, 6);
    }
}

/// One writing of one value, appended to `out`.
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
        case SwJsonValue::Double: {
            std::string text;
            appendDouble(text, value.toDouble());
            writeScalar_(text);
            break;
        }
        case SwJsonValue::String:
            out_.push_back('"');
            if (key_.isEmpty()) {
                appendEscaped(out_, value.stringRef());
            } else {
                appendEscaped(out_, encrypted_(value.stringRef()));
            }
            out_.push_back('"');
            break;
        case SwJsonValue::Object:
            openObject_(value.toObject());
            break;
        case SwJsonValue::Array:
            openArray_(value.toArray());
            break;
        }
    }

    void writeScalar_(std::string const& text) { out_.append(key_.isEmpty() ? text : encrypted_(text)); }
    std::string encrypted_(std::string const& text) const
    {
        return SwCrypto::encryptOrReport(text, key_.toStdString());
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
        appendEscaped(out_, top.member->first);
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
    appendEscaped(escaped, text);
    return escaped;
}

void SwJsonDocument::generateJson(SwJsonValue const& value, SwString& out, bool pretty, int level, SwString const& key)
{
    // In a text of its own: when memory runs out, `out` keeps what it has.
    std::string text;
    Writer(text, pretty, level, key).write(value);
    out.append(text);
}

SwString SwJsonDocument::toJson(bool pretty, SwString const& key) const
{
    SwString text;
    generateJson(root_, text, pretty, 0, key);
    return text;
}
