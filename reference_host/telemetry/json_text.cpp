// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The library's events become the framework's tree. Its reader keeps a stack of its own, as does this one, so that
// no depth of nesting reaches the thread's stack.
#include "telemetry/json_text.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace telemetry {
namespace {

using Json = nlohmann::json;

/// The library's message without its own name and without the text that it quotes, which may be of any length:
/// "column 7: syntax error while parsing value - invalid literal".
std::string shortMessage(std::string message)
{
    constexpr std::string_view kPlace = "parse error at line 1, ";
    constexpr std::string_view kQuote = "; last read: '";
    std::size_t const name = message.find("] ");
    message.erase(0, name == std::string::npos ? 0 : name + 2);
    if (message.rfind(kPlace, 0) == 0) {
        message.erase(0, kPlace.size());
    }
    constexpr std::string_view kTooLarge = "number overflow";
    if (message.rfind(kTooLarge, 0) == 0) {
        return "a number is too large";
    }
    std::size_t const quote = message.find(kQuote);
    return quote == std::string::npos ? message : message.substr(0, quote);
}

/// Builds the tree from the inside: a container goes into the one around it when it ends.
class TreeBuilder : public nlohmann::json_sax<Json> {
public:
    explicit TreeBuilder(std::string& error) : error_(error) {}

    SwJsonValue takeRoot() { return std::move(root_); }

    bool null() override { return add_(SwJsonValue()); }
    bool boolean(bool value) override { return add_(SwJsonValue(value)); }
    bool number_integer(number_integer_t value) override { return add_(SwJsonValue(value)); }
    bool number_unsigned(number_unsigned_t value) override
    {
        constexpr auto kLargest = static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max());
        return add_(value <= kLargest ? SwJsonValue(value) : SwJsonValue(static_cast<double>(value)));
    }
    bool number_float(number_float_t value, string_t const&) override { return add_(SwJsonValue(value)); }
    bool string(string_t& value) override { return add_(SwJsonValue(std::move(value))); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open_(SwJsonValue(SwJsonObject())); }
    bool end_object() override { return close_(); }
    bool start_array(std::size_t) override { return open_(SwJsonValue(SwJsonArray())); }
    bool end_array() override { return close_(); }
    bool key(string_t& name) override
    {
        stack_.back().name = std::move(name);
        return true;
    }
    bool parse_error(std::size_t, std::string const&, nlohmann::detail::exception const& failure) override
    {
        error_ = shortMessage(failure.what());
        return false;
    }

private:
    struct OpenContainer {
        SwJsonValue value;
        std::string name{};  ///< of the member that comes next
    };

    bool open_(SwJsonValue container)
    {
        stack_.push_back({std::move(container)});
        return true;
    }
    bool close_()
    {
        SwJsonValue container = std::move(stack_.back().value);
        stack_.pop_back();
        return add_(std::move(container));
    }
    bool add_(SwJsonValue value)
    {
        if (stack_.empty()) {
            root_ = std::move(value);
        } else if (SwJsonObject* const object = stack_.back().value.editObject()) {
            object->insertOrAssign(stack_.back().name, std::move(value));
        } else {
            stack_.back().value.editArray()->append(std::move(value));
        }
        return true;
    }

    std::string& error_;
    SwJsonValue root_;
    std::vector<OpenContainer> stack_;
};

}  // namespace

SwJsonValue parseJsonText(std::string_view text, std::string& error)
{
    error.clear();
    // The library would pass over it wherever a value begins.
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        error = "column 1: a byte order mark where a value should begin";
        return {};
    }
    TreeBuilder builder(error);
    bool const whole = Json::sax_parse(text.begin(), text.end(), &builder);
    return whole ? builder.takeRoot() : SwJsonValue();
}

}  // namespace telemetry
