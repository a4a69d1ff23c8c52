// Telemetry from JSON Lines, the form people write by hand and other programs produce.
#include "telemetry/telemetry.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace telemetry {
namespace {

constexpr std::string_view kTimeKey = "t";

[[noreturn]] void fail(std::string const& name, std::size_t line, std::string const& reason)
{
    throw std::runtime_error(name + ":" + std::to_string(line) + ": " + reason);
}

/// A reader's message within a longer one. It may quote the text around the error: control characters would break
/// the one line.
std::string oneLine(std::string message)
{
    if (message.ends_with('.')) {
        message.pop_back();
    }
    std::replace_if(
        message.begin(), message.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    return message;
}

Packet parseLine(std::string_view line, std::string const& name, std::size_t number)
{
    SwString error;
    SwJsonDocument document = SwJsonDocument::fromJson(SwString(std::string(line)), SwString(), error);
    if (!error.isEmpty()) {
        fail(name, number, "not a JSON object: " + oneLine(error.toStdString()) + "; mend the JSON there");
    }
    SwJsonValue root = document.takeRoot();
    if (!root.isObject()) {
        fail(name, number, "not a JSON object; each line must look like {\"t\": 1.5, \"heading_deg\": 90}");
    }
    Packet packet;
    if (SwJsonObject* const members = root.editObject()) {
        packet.payload = std::move(*members);
    }
    SwJsonValue const time = std::as_const(packet.payload)[kTimeKey];
    if (time.isInt()) {
        packet.timeSeconds = static_cast<double>(time.toInt());
    } else if (time.isDouble()) {
        packet.timeSeconds = time.toDouble();
    } else if (!time.isNull()) {
        fail(name, number, "\"t\" is not a number; give the seconds from the start of the video, like \"t\": 1.5");
    }
    packet.payload.erase(kTimeKey);
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
            packets.push_back(parseLine(line, name, number));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return packets;
}

}  // namespace telemetry
