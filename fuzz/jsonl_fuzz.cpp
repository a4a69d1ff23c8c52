// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Any text as JSON Lines: it is read line by line, so that reading the lines apart gives the same packets
// and fails at the same line. Values come as they are written: a plain tree of the same line says how.
#include "telemetry/telemetry.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

void require(bool holds, char const* property)
{
    if (!holds) {
        std::fprintf(stderr, "jsonl_fuzz: does not hold: %s\n", property);
        std::abort();
    }
}

/// The packets; empty after a failure, whose text goes to `failure`.
std::optional<std::vector<telemetry::Packet>> read(std::string_view text, std::string& failure)
{
    try {
        return telemetry::parseJsonLines(text, "f");
    } catch (std::runtime_error const& error) {
        failure = error.what();
        return std::nullopt;
    }
}

void requireOneLine(std::string const& failure, std::size_t lineNumber)
{
    std::string const start = "f:" + std::to_string(lineNumber) + ": ";
    require(failure.compare(0, start.size(), start) == 0, "a failure names the line");
    require(failure.find('\n') == std::string::npos, "a failure is one line");
}

bool isWhole(nlohmann::json const& value)
{
    return value.is_number_integer() && (!value.is_number_unsigned() || value.get<std::uint64_t>() <= INT64_MAX);
}

/// Scalars of the same kind and value; containers of the same kind and size.
bool isSame(SwJsonValue const& taken, nlohmann::json const& written)
{
    switch (taken.type()) {
    case SwJsonValue::Null:
        return written.is_null();
    case SwJsonValue::Bool:
        return written.is_boolean() && written.get<bool>() == taken.toBool();
    case SwJsonValue::Int:
        return isWhole(written) && written.get<std::int64_t>() == taken.toInt();
    case SwJsonValue::Double:
        return written.is_number() && !isWhole(written) && written.get<double>() == taken.toDouble();
    case SwJsonValue::String:
        return written.is_string() && written.get_ref<std::string const&>() == taken.stringRef();
    case SwJsonValue::Object:
        return written.is_object() && written.size() == taken.toObject().size();
    default:
        return written.is_array() && written.size() == taken.toArray().size();
    }
}

/// Whether the line is one packet of the kind that the program lists.
bool isListed(nlohmann::json const& line)
{
    return line.contains("pts") && line.contains("payload") && line["payload"].is_object();
}

void requireAsWritten(std::string_view text, telemetry::Packet const& packet)
{
    nlohmann::json const line = nlohmann::json::parse(text);
    nlohmann::json const& written = isListed(line) ? line["payload"] : line;
    std::size_t const times = !isListed(line) && line.contains("t") ? 1 : 0;
    require(packet.payload.size() + times == written.size(), "every key is there");
    for (auto const& [key, value] : packet.payload) {
        require(isSame(value, written.at(std::string(key))), "a value is as it was written");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string_view const text(reinterpret_cast<char const*>(data), size);
    std::string failure;
    auto const whole = read(text, failure);
    std::size_t packets = 0;
    std::size_t lineNumber = 1;
    for (std::size_t start = 0; start < text.size(); ++lineNumber) {
        std::size_t const end = std::min(text.find('\n', start), text.size());
        std::string lineFailure;
        auto const line = read(text.substr(start, end - start), lineFailure);
        // Only the text's own byte order mark is passed over.
        bool const hasMark = text.substr(start, 3) == "\xEF\xBB\xBF";
        std::size_t const lineStart = start;
        start = end + 1;
        if (lineNumber > 1 && hasMark) {
            return 0;
        }
        if (!line.has_value()) {
            requireOneLine(lineFailure, 1);
            require(!whole.has_value(), "a bad line fails the text");
            requireOneLine(failure, lineNumber);
            return 0;
        }
        require(line->size() <= 1, "a line is one packet at most");
        for (telemetry::Packet const& packet : *line) {
            requireAsWritten(text.substr(lineStart, end - lineStart), packet);
            require(!whole.has_value() || packets < whole->size(), "no packet is lost");
            require(!whole.has_value() || (*whole)[packets].payload == packet.payload, "the payload is the line's");
            require(!whole.has_value() || (*whole)[packets].timeSeconds == packet.timeSeconds, "and so is the time");
            ++packets;
        }
    }
    require(whole.has_value() && whole->size() == packets, "good lines make a good text");
    return 0;
}
