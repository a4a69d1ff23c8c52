// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// JSON output of the program. The framework's own writer rounds doubles to six decimals, which is right
// for configurations and too coarse for telemetry.
#include "telemetry/json_line.h"

#include "sw_utf8.h"

#include <array>
#include <charconv>
#include <cmath>
#include <vector>

namespace telemetry {
namespace {

void appendScalar(std::string& line, SwJsonValue const& value)
{
    switch (value.type()) {
    case SwJsonValue::Bool:
        line += value.toBool() ? "true" : "false";
        break;
    case SwJsonValue::Int:
        line += std::to_string(value.toInt());
        break;
    case SwJsonValue::Double:
        appendJsonNumber(line, value.toDouble());
        break;
    case SwJsonValue::String:
        appendJsonString(line, value.stringRef());
        break;
    default:
        line += "null";
        break;
    }
}

/// A container that is being written, and how far.
struct OpenContainer {
    SwJsonValue const* value;
    SwJsonObject::const_iterator member;
    std::size_t item = 0;
    bool first = true;
};

/// The next value inside, with its comma and name written; null at the end of the container.
SwJsonValue const* stepInto(std::string& line, OpenContainer& open)
{
    bool const object = open.value->isObject();
    bool const ended = object ? open.member == open.value->toObject().end() : open.item == open.value->toArray().size();
    if (ended) {
        return nullptr;
    }
    if (!open.first) {
        line += ", ";
    }
    open.first = false;
    if (!object) {
        return &open.value->toArray()[open.item++];
    }
    appendJsonString(line, open.member->first);
    line += ": ";
    return &(open.member++)->second;
}

}  // namespace

void appendJsonString(std::string& line, std::string_view text)
{
    line += '"';
    line += SwJsonValue::escapeString(sw_utf8::valid(text));
    line += '"';
}

void appendJsonNumber(std::string& line, double number)
{
    if (!std::isfinite(number)) {
        line += "null";
        return;
    }
    constexpr double kLargestPlain = 1e15;
    bool const plain = number == std::trunc(number) && std::abs(number) < kLargestPlain;
    std::array<char, 32> text{};
    char* const begin = text.data();
    char* const limit = begin + text.size();
    auto const end = plain ? std::to_chars(begin, limit, number, std::chars_format::fixed, 1).ptr
                           : std::to_chars(begin, limit, number).ptr;
    line.append(begin, end);
}

void appendJson(std::string& line, SwJsonValue const& value)
{
    // A stack of our own: payloads may be nested deeper than a thread's stack reaches.
    std::vector<OpenContainer> open;
    SwJsonValue const* next = &value;
    for (;;) {
        if (next->isObject() || next->isArray()) {
            line += next->isObject() ? '{' : '[';
            open.push_back({next, next->toObject().begin()});
        } else {
            appendScalar(line, *next);
        }
        for (next = nullptr; !open.empty() && next == nullptr;) {
            next = stepInto(line, open.back());
            if (next == nullptr) {
                line += open.back().value->isObject() ? '}' : ']';
                open.pop_back();
            }
        }
        if (next == nullptr) {
            return;
        }
    }
}

}  // namespace telemetry
