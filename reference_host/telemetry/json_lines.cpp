// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Telemetry from JSON Lines, the form people write by hand and other programs produce.
#include "telemetry/json_text.h"
#include "telemetry/telemetry.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace telemetry {
namespace {

constexpr std::string_view kTimeKey = "t";

// Members of a line that `keys` prints.
constexpr std::string_view kListedTimeKey = "pts";
constexpr std::string_view kListedChecksumKey = "checksum";
constexpr std::string_view kListedPayloadKey = "payload";
constexpr std::string_view kListedStreamKey = "stream";

[[noreturn]] void fail(std::string const& name, std::size_t line, std::string const& reason)
{
    throw std::runtime_error(name + ":" + std::to_string(line) + ": " + reason);
}

/// The seconds under `key`; without that key, or with null, the packet has no time.
std::optional<double> secondsOf(SwJsonObject const& object, std::string_view key, std::string const& name,
                                std::size_t line)
{
    SwJsonValue const& time = object[key];
    if (time.isInt()) {
        return static_cast<double>(time.toInt());
    }
    if (time.isDouble()) {
        return time.toDouble();
    }
    if (!time.isNull()) {
        fail(name, line,
             "\"" + std::string(key) +
                 "\" is not a number; give the seconds from the start of the video, like \"t\": 1.5");
    }
    return std::nullopt;
}

/// Whether the line is one that `keys` prints: the packet's keys then stand in a member of their own.
bool isListedPacket(SwJsonObject const& object)
{
    return object.contains(kListedTimeKey) && object[kListedPayloadKey].isObject();
}

Checksum checksumOf(std::string const& text)
{
    for (Checksum const checksum : {Checksum::Ok, Checksum::Bad}) {
        if (text == toText(checksum)) {
            return checksum;
        }
    }
    return Checksum::Absent;
}

Packet parseLine(std::string_view line, std::string const& name, std::size_t number, bool isFirst)
{
    std::string error;
    SwJsonValue root = parseJsonText(line, error);
    if (!error.empty()) {
        fail(name, number, "not a JSON object: " + error + "; mend the JSON there");
    }
    if (!root.isObject()) {
        fail(name, number, "not a JSON object; each line must look like {\"t\": 1.5, \"heading_deg\": 90}");
    }
    SwJsonObject const& members = root.toObject();
    bool const listed = isListedPacket(members);
    Packet packet;
    packet.timeSeconds =
        secondsOf(members, listed && !members.contains(kTimeKey) ? kListedTimeKey : kTimeKey, name, number);
    if (listed) {
        packet.checksum = checksumOf(members[kListedChecksumKey].stringRef());
        packet.stream = members[kListedStreamKey].stringRef();
        packet.payload = members[kListedPayloadKey].toObject();
    } else {
        packet.payload = std::move(*root.editObject());
        packet.payload.erase(kTimeKey);
        packet.lasting = isFirst;
    }
    return packet;
}

bool isBlank(std::string_view line)
{
    return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

}  // namespace

std::vector<Packet> parseJsonLines(std::string_view text, std::string const& name)
{
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        text.remove_prefix(kByteOrderMark.size());
    }
    std::vector<Packet> packets;
    for (std::size_t number = 1; !text.empty(); ++number) {
        std::size_t const end = std::min(text.find('\n'), text.size());
        std::string_view const line = text.substr(0, end);
        if (!isBlank(line)) {
            packets.push_back(parseLine(line, name, number, packets.empty()));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return packets;
}

}  // namespace telemetry
