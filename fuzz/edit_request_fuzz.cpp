// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Any request to the editor's server. Bytes: the request's head as lines, an empty line, its body.
//   first line: method and target, "PUT /api/config"; further lines: headers
// Nobody without the own Host and the cookie or the token gets more than a refusal; what is refused by the head is
// refused alike with its body; every refusal is one line of JSON.
#include "editor/picture_message.h"
#include "editor/request_handler.h"
#include "telemetry/json_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr unsigned short kPort = 4711;
constexpr char const* kToken = "00112233445566778899aabbccddeeff";
constexpr char const* kPass = "ffeeddccbbaa99887766554433221100";

void require(bool holds, char const* property)
{
    if (!holds) {
        std::fprintf(stderr, "edit_request_fuzz: does not hold: %s\n", property);
        std::abort();
    }
}

/// Up to the line's end, which is taken off.
std::string_view takeLine(std::string_view& text)
{
    std::size_t const end = std::min(text.find('\n'), text.size());
    std::string_view const line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

editor::Request requestOf(std::string_view text)
{
    editor::Request request;
    std::string_view const first = takeLine(text);
    std::size_t const blank = std::min(first.find(' '), first.size());
    request.method = first.substr(0, blank);
    request.target = first.substr(std::min(blank + 1, first.size()));
    while (!text.empty()) {
        std::string_view const line = takeLine(text);
        if (line.empty()) {
            break;
        }
        std::size_t const colon = std::min(line.find(": "), line.size());
        request.headers.push_back(
            {std::string(line.substr(0, colon)), std::string(line.substr(std::min(colon + 2, line.size())))});
    }
    request.body = text;
    return request;
}

/// Whether any header, or the target, holds the token or the pass.
bool knowsASecret(editor::Request const& request)
{
    auto const holds = [](std::string const& text) {
        return text.find(kToken) != std::string::npos || text.find(kPass) != std::string::npos;
    };
    return holds(request.target) || std::any_of(request.headers.begin(), request.headers.end(),
                                                [&holds](editor::Header const& each) { return holds(each.value); });
}

bool namesThisServer(editor::Request const& request)
{
    std::vector<std::string_view> const hosts = editor::valuesOf(request, "Host");
    return hosts.size() == 1 && (editor::equalIgnoringCase(hosts.front(), "127.0.0.1:4711") ||
                                 editor::equalIgnoringCase(hosts.front(), "localhost:4711"));
}

void requireOneLineOfJson(editor::Response const& response)
{
    std::string error;
    SwJsonValue const value = telemetry::parseJsonText(response.body, error);
    require(error.empty(), "a refusal is JSON");
    require(value.toObject()["error"].isString(), "a refusal says why");
    require(std::count(response.body.begin(), response.body.end(), '\n') == 1, "a refusal is one line");
}

editor::Response askForPicture(SwJsonObject const& body)
{
    editor::PreviewQuestion const question = editor::readPreviewQuestion(body);
    require(!question.place.frame || *question.place.frame > 0, "frames count from 1");
    require(question.place.seconds >= 0.0, "times count from 0");
    return editor::contentResponse(200, "text/plain", question.text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    bool reached = false;
    auto const reach = [&reached](SwJsonObject const& body) {
        reached = true;
        return body.contains("text") ? askForPicture(body) : editor::contentResponse(200, "text/plain", "");
    };
    editor::RequestHandler handler(kPort, kToken, kPass,
                                   {{"GET", "/", reach},
                                    {"GET", "/api/config", reach},
                                    {"PUT", "/api/config", reach},
                                    {"POST", "/api/preview", reach}});
    editor::Request const request = requestOf({reinterpret_cast<char const*>(data), size});
    auto const refusal = handler.refuse(request);
    editor::Response const answer = handler.answer(request);
    bool const isAllowed = namesThisServer(request) && knowsASecret(request);
    require(isAllowed || (!reached && answer.status >= 400), "without Host and secret there is a refusal");
    require(!reached || !refusal, "what is refused by its head reaches nothing");
    require(!refusal || (refusal->status == answer.status && refusal->body == answer.body), "head and whole agree");
    require((answer.status == 200) == (reached && answer.status < 400), "only routes answer");
    require(answer.status == 200 || answer.status == 303 || (answer.status >= 400 && answer.status <= 415),
            "the status is one of those that are documented");
    if (answer.status >= 400) {
        requireOneLineOfJson(answer);
    }
    return 0;
}
