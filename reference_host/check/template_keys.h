// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The telemetry keys that a text template asks for.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace check {

struct TemplateKeys {
    std::vector<std::string> keys;  ///< in order, repeated ones too
    bool unclosed = false;          ///< a "%{" without "}": everything from there on is shown as it is
};

/// Reads "%name" and "%{any name}"; "%%" is a percent sign. templateKeys("%a, %{b c}") gives a and "b c".
TemplateKeys templateKeys(std::string_view text);

}  // namespace check
