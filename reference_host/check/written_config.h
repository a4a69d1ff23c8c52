// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What stands in a configuration file, before the JSON reader has given quoted numbers and literals their kinds: the
// reader makes 8 of "010" and 0 of "99999999999", and only the file still knows.
#pragma once

#include "SwJson.h"

#include <optional>
#include <string>
#include <vector>

namespace check {

/// The tree of a text in which every scalar is a String that keeps what stands in the file; see isQuoted() and
/// literalText(). `text` is JSON that the reader accepts; any other gives Null.
SwJsonValue readAsWritten(std::string const& text);

/// The places of members whose name has stood in the same object before, in the order of the text: of those only the
/// last counts. {"a":{"b":1,"b":2}} gives a.b. What is nested deeper than any member of a configuration is left out.
std::vector<std::string> repeatedMembers(std::string const& text);

/// The place of a member: inside("overlay[0]", "textSize") is "overlay[0].textSize".
std::string inside(std::string const& place, std::string const& name);

/// Of a value of that tree: whether it is a text in quotes, not a bare number or literal.
bool isQuoted(SwJsonValue const& written);

/// The scalar as it stands in the file: of 12.50 the text 12.50, of "a\tb" the text with its tab. "" of a container.
std::string literalText(SwJsonValue const& written);

/// The whole text as a finite number, in quotes or not, decimal or hexadecimal: 16 for 16, "16" and "0x10", 10 for
/// "010". None for anything else.
std::optional<double> literalNumber(SwJsonValue const& written);

/// The same with all digits that 64-bit integers need.
std::optional<long double> literalLongNumber(SwJsonValue const& written);

/// Whether `held` is what stands in the file: the same text, or the same number in other digits ("1.500000" for 1.5).
bool meansTheSame(SwJsonValue const& written, std::string const& held);

/// For messages: the scalar with its quotes, one line, cut when it is long; "an object" or "an array".
std::string shown(SwJsonValue const& written);

/// A text of any bytes for messages: one line of valid UTF-8, without quotes around it.
std::string printable(std::string const& text);

}  // namespace check
