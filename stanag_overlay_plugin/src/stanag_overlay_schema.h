// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The published description of the configuration, from which hosts build their editing form.
#pragma once

#include <string>
#include <vector>

namespace stanag_overlay {

/// Writes the JSON Schema (draft 07) of the configuration.
class ConfigSchemaBuilder {
public:
    /// The schema with `keys` in the given order as the default of "availableKeys". Fixed text but for
    /// that list; its defaults and bounds describe the form, not the parser, and differ from it in
    /// places (tests/plugin/config_schema_test.cpp lists them). A key with a control byte other than \b \f
    /// \n \r \t keeps it raw, and the text is then no valid JSON. The list of the keys a"b and c is
    /// ["a\"b","c"].
    std::string build(std::vector<std::string> const& keys) const;
};

}  // namespace stanag_overlay
