// Text from a stream as valid UTF-8, so that JSON output made from it is valid too.
#pragma once

#include <string>
#include <string_view>

namespace telemetry {

/// The text with every byte that is not part of a well-formed UTF-8 sequence (RFC 3629: overlong forms,
/// surrogates and values above U+10FFFF are not) replaced by U+FFFD. "A\xFF" gives "A\xEF\xBF\xBD".
std::string validUtf8(std::string_view bytes);

}  // namespace telemetry
