// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Looking things up in requests, and the two shapes of answers.
#include "editor/http_message.h"

#include "sw_text.h"
#include "telemetry/json_line.h"

#include <algorithm>
#include <utility>

namespace editor {

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return sw_detail::toLower(x) == sw_detail::toLower(y); });
}

std::vector<std::string_view> valuesOf(Request const& request, std::string_view name)
{
    std::vector<std::string_view> values;
    for (Header const& header : request.headers) {
        if (equalIgnoringCase(header.name, name)) {
            values.emplace_back(header.value);
        }
    }
    return values;
}

std::string_view pathOf(Request const& request)
{
    return std::string_view(request.target).substr(0, request.target.find('?'));
}

std::string_view queryValue(Request const& request, std::string_view name)
{
    std::string_view const target = request.target;
    std::size_t at = target.find('?');
    while (at != std::string_view::npos) {
        std::size_t const end = target.find('&', at + 1);
        std::string_view const part = target.substr(at + 1, end == std::string_view::npos ? end : end - at - 1);
        if (part.size() > name.size() && part.substr(0, name.size()) == name && part[name.size()] == '=') {
            return part.substr(name.size() + 1);
        }
        at = end;
    }
    return {};
}

Response contentResponse(int status, std::string type, std::string body)
{
    return {status, {{"Content-Type", std::move(type)}}, std::move(body)};
}

Response errorResponse(int status, std::string_view line)
{
    std::string body = "{\"error\": ";
    telemetry::appendJsonString(body, line);
    body += "}\n";
    return contentResponse(status, "application/json", std::move(body));
}

}  // namespace editor
