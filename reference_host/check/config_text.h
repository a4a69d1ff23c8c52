// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A configuration's file and what makes its text no configuration at all, with its place: the plugin silently takes
// such a text for an empty one.
#pragma once

#include "SwJson.h"

#include <cstddef>
#include <optional>
#include <string>

namespace check {

/// Line and column of a byte, both from 1.
struct TextPlace {
    std::size_t line = 1;
    std::size_t column = 1;
};

/// The place of byte `index`; behind the end is the end.
TextPlace placeIn(std::string const& text, std::size_t index);

struct TextFault {
    /// Where the JSON is wrong; empty when it is right and no configuration.
    std::optional<TextPlace> place;
    std::string text;  ///< "Expected ',' or '}' in object; mend the JSON there"
};

/// The fault in one line: "line 3, column 7: Expected ',' or '}' in object; mend the JSON there".
std::string lineOf(TextFault const& fault);

struct ConfigText {
    SwJsonObject root;               ///< empty with a fault
    std::optional<TextFault> fault;  ///< none: an object with an array "overlay"
};

/// The bytes of a configuration's file, whatever they are. Throws std::runtime_error with one line that names the path
/// and the cure when it is a folder or cannot be read.
std::string readConfigFile(std::string const& path);

/// Reads a configuration's text as the plugin does: {"overlay":[],} is one, "{}" is none.
ConfigText readConfigText(std::string const& text);

}  // namespace check
