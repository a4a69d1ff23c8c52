// Replaces malformed UTF-8; used for the text items of KLV packets.
#include "utf8_text.h"

#include <cstddef>
#include <cstdint>

namespace telemetry {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// The length of the well-formed sequence at the start of `bytes`, 0 when there is none. RFC 3629, section 4.
std::size_t sequenceLength(std::string_view bytes)
{
    auto const at = [bytes](std::size_t i) -> unsigned {
        return i < bytes.size() ? static_cast<std::uint8_t>(bytes[i]) : 0U;
    };
    auto const tail = [at](std::size_t i) { return (at(i) & 0xC0U) == 0x80U; };
    unsigned const first = at(0);
    if (first < 0x80U) {
        return 1;
    }
    if (first >= 0xC2U && first <= 0xDFU) {
        return tail(1) ? 2 : 0;
    }
    if (first >= 0xE0U && first <= 0xEFU) {
        unsigned const low = first == 0xE0U ? 0xA0U : 0x80U;
        unsigned const high = first == 0xEDU ? 0x9FU : 0xBFU;
        return at(1) >= low && at(1) <= high && tail(2) ? 3 : 0;
    }
    if (first >= 0xF0U && first <= 0xF4U) {
        unsigned const low = first == 0xF0U ? 0x90U : 0x80U;
        unsigned const high = first == 0xF4U ? 0x8FU : 0xBFU;
        return at(1) >= low && at(1) <= high && tail(2) && tail(3) ? 4 : 0;
    }
    return 0;
}

}  // namespace

std::string validUtf8(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        std::size_t const length = sequenceLength(bytes);
        text.append(length == 0 ? kReplacement : bytes.substr(0, length));
        bytes.remove_prefix(length == 0 ? 1 : length);
    }
    return text;
}

}  // namespace telemetry
