// Any text as JSON Lines: it is read line by line, so that reading the lines apart gives the same packets
// and fails at the same line.
#include "telemetry/telemetry.h"

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
            require(!packet.payload.contains("t"), "the time is no key");
            require(!whole.has_value() || packets < whole->size(), "no packet is lost");
            require(!whole.has_value() || (*whole)[packets].payload == packet.payload, "the payload is the line's");
            require(!whole.has_value() || (*whole)[packets].timeSeconds == packet.timeSeconds, "and so is the time");
            ++packets;
        }
    }
    require(whole.has_value() && whole->size() == packets, "good lines make a good text");
    return 0;
}
