// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Placeholder reading for the configuration check; the same grammar as the plugin's template expansion.
#include "check/template_keys.h"

#include <algorithm>
#include <cstddef>

namespace check {
namespace {

/// The bytes that end a name without braces.
constexpr std::string_view kNameEnds = "\t\n\r \"'(),/:;<>[\\]{}";

}  // namespace

TemplateKeys templateKeys(std::string_view text)
{
    TemplateKeys found;
    std::size_t place = text.find('%');
    while (place != std::string_view::npos && place + 1 < text.size()) {
        std::size_t next = place + 1;
        if (text[next] == '%') {
            ++next;
        } else if (text[next] == '{') {
            std::size_t const close = text.find('}', next + 1);
            if (close == std::string_view::npos) {
                found.unclosed = true;
                return found;
            }
            found.keys.emplace_back(text.substr(next + 1, close - next - 1));
            next = close + 1;
        } else {
            std::size_t const end = std::min(text.find_first_of(kNameEnds, next), text.size());
            if (end > next) {
                found.keys.emplace_back(text.substr(next, end - next));
            }
            next = end;
        }
        place = text.find('%', next);
    }
    return found;
}

}  // namespace check
