// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Who may ask the editor's server and what is answered to the others, request by request.
#include "editor/request_handler.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using editor::Header;
using editor::Request;
using editor::RequestHandler;
using editor::Response;

constexpr unsigned short kPort = 4711;
constexpr char const* kToken = "00112233445566778899aabbccddeeff";
constexpr char const* kPass = "ffeeddccbbaa99887766554433221100";

Header host()
{
    return {"Host", "127.0.0.1:4711"};
}

Header cookie()
{
    return {"Cookie", std::string("stanag_editor_4711=") + kToken};
}

Header json()
{
    return {"Content-Type", "application/json"};
}

/// What the routes have been asked.
struct Asked {
    std::vector<std::string> texts;
};

RequestHandler handlerFor(Asked& asked, unsigned short port = kPort)
{
    return {port,
            kToken,
            kPass,
            {{"GET", "/", [](SwJsonObject const&) { return editor::contentResponse(200, "text/html", "page"); }},
             {"GET", "/api/config", [](SwJsonObject const&) { return editor::contentResponse(200, "a/b", "load"); }},
             {"PUT", "/api/config",
              [&asked](SwJsonObject const& body) {
                  asked.texts.push_back(body["text"].toString());
                  return editor::contentResponse(200, "a/b", "saved");
              }},
             {"POST", "/api/failure", [](SwJsonObject const& body) -> Response {
                  std::string const kind = body["kind"].toString();
                  if (kind == "known") {
                      throw editor::RequestFailure(409, "one \"line\"");
                  }
                  if (kind == "memory") {
                      throw std::bad_alloc();
                  }
                  throw std::runtime_error("something else");
              }}}};
}

/// The only value of a header; "" when it is not there.
std::string headerOf(Response const& response, std::string_view name)
{
    std::string value;
    for (Header const& header : response.headers) {
        if (header.name == name) {
            EXPECT_EQ(value, "") << name << " stands twice";
            value = header.value;
        }
    }
    return value;
}

struct Row {
    char const* name;
    Request request;
    int status;
};

class Refusals : public testing::TestWithParam<Row> {};

/// Every refusal is known from the head, is one line of JSON and reaches no route.
TEST_P(Refusals, HaveTheRightStatus)
{
    Asked asked;
    RequestHandler handler = handlerFor(asked);
    Response const answer = handler.answer(GetParam().request);
    EXPECT_EQ(answer.status, GetParam().status) << answer.body;
    EXPECT_EQ(asked.texts, std::vector<std::string>());
    EXPECT_EQ(answer.body.substr(0, 11), "{\"error\": \"");
    auto const early = handler.refuse(GetParam().request);
    ASSERT_TRUE(early.has_value());
    EXPECT_EQ(early->status, GetParam().status);
    EXPECT_EQ(early->body, answer.body);
}

std::string const kSave = R"({"text": "{}", "etag": ""})";
std::string const kLongBody = "\"" + std::string(editor::kMostBodyBytes, 'x') + "\"";

INSTANTIATE_TEST_SUITE_P(
    Head, Refusals,
    testing::Values(
        Row{"no_host", {"GET", "/", {cookie()}, ""}, 400},
        Row{"two_hosts", {"GET", "/", {host(), host(), cookie()}, ""}, 400},
        Row{"foreign_host", {"GET", "/", {{"Host", "evil.example:4711"}, cookie()}, ""}, 403},
        Row{"host_that_points_here",
            {"PUT", "/api/config", {{"Host", "rebound.example"}, cookie(), json()}, kSave},
            403},
        Row{"host_without_port", {"GET", "/", {{"Host", "127.0.0.1"}, cookie()}, ""}, 403},
        Row{"host_with_other_port", {"GET", "/", {{"Host", "127.0.0.1:4712"}, cookie()}, ""}, 403},
        Row{"host_that_begins_right", {"GET", "/", {{"Host", "127.0.0.1:47110"}, cookie()}, ""}, 403},
        Row{"empty_host", {"GET", "/", {{"Host", ""}, cookie()}, ""}, 403},
        Row{"no_target", {"GET", "", {host(), cookie()}, ""}, 400},
        Row{"absolute_target", {"GET", "http://127.0.0.1:4711/", {host(), cookie()}, ""}, 400},
        Row{"target_with_blank", {"GET", "/a b", {host(), cookie()}, ""}, 400},
        Row{"target_with_high_byte", {"GET", "/\xC3\xA4", {host(), cookie()}, ""}, 400},
        Row{"no_cookie", {"GET", "/", {host()}, ""}, 403},
        Row{"no_cookie_api", {"GET", "/api/config", {host()}, ""}, 403},
        Row{"no_cookie_unknown", {"GET", "/nothing", {host()}, ""}, 403},
        Row{"empty_cookie", {"GET", "/", {host(), {"Cookie", "stanag_editor_4711="}}, ""}, 403},
        Row{"wrong_cookie",
            {"GET", "/", {host(), {"Cookie", "stanag_editor_4711=00112233445566778899aabbccddeefe"}}, ""},
            403},
        Row{"longer_cookie",
            {"GET", "/", {host(), {"Cookie", "stanag_editor_4711=00112233445566778899aabbccddeeff0"}}, ""},
            403},
        Row{"cookie_of_another_editor",
            {"GET", "/", {host(), {"Cookie", std::string("stanag_editor_4712=") + kToken}}, ""},
            403},
        Row{"pass_as_cookie", {"GET", "/", {host(), {"Cookie", std::string("stanag_editor_4711=") + kPass}}, ""}, 403},
        Row{"foreign_origin", {"GET", "/", {host(), cookie(), {"Origin", "http://evil.example"}}, ""}, 403},
        Row{"null_origin", {"PUT", "/api/config", {host(), cookie(), json(), {"Origin", "null"}}, kSave}, 403},
        Row{"origin_of_another_port",
            {"PUT", "/api/config", {host(), cookie(), json(), {"Origin", "http://127.0.0.1:80"}}, kSave},
            403},
        Row{"origin_of_another_scheme",
            {"PUT", "/api/config", {host(), cookie(), json(), {"Origin", "https://127.0.0.1:4711"}}, kSave},
            403},
        Row{"cross_site_write",
            {"PUT", "/api/config", {host(), cookie(), json(), {"Sec-Fetch-Site", "cross-site"}}, kSave},
            403},
        Row{"same_site_write",
            {"PUT", "/api/config", {host(), cookie(), json(), {"Sec-Fetch-Site", "same-site"}}, kSave},
            403},
        Row{"write_without_page",
            {"PUT", "/api/config", {host(), cookie(), json(), {"Sec-Fetch-Site", "none"}}, kSave},
            403},
        Row{"cross_site_read", {"GET", "/api/config", {host(), cookie(), {"Sec-Fetch-Site", "cross-site"}}, ""}, 403},
        Row{"unknown", {"GET", "/nothing", {host(), cookie()}, ""}, 404},
        Row{"traversal", {"GET", "/../../etc/passwd", {host(), cookie()}, ""}, 404},
        Row{"encoded_traversal", {"GET", "/%2e%2e/%2e%2e/etc/passwd", {host(), cookie()}, ""}, 404},
        Row{"encoded_name", {"GET", "/api/%63onfig", {host(), cookie()}, ""}, 404},
        Row{"double_slash", {"GET", "//", {host(), cookie()}, ""}, 404},
        Row{"trailing_slash", {"GET", "/api/config/", {host(), cookie()}, ""}, 404},
        Row{"folder", {"GET", "/api/", {host(), cookie()}, ""}, 404},
        Row{"write_to_page", {"POST", "/", {host(), cookie(), json()}, "{}"}, 405},
        Row{"other_method", {"DELETE", "/api/config", {host(), cookie()}, ""}, 405},
        Row{"options", {"OPTIONS", "/api/config", {host(), cookie()}, ""}, 405},
        Row{"method_in_lower_case", {"get", "/api/config", {host(), cookie()}, ""}, 405},
        Row{"post_token", {"POST", std::string("/?token=") + kToken, {host()}, ""}, 403},
        Row{"too_long_by_length",
            {"PUT", "/api/config", {host(), cookie(), json(), {"Content-Length", "4194305"}}, ""},
            413},
        Row{"endless_length",
            {"PUT", "/api/config", {host(), cookie(), json(), {"Content-Length", "99999999999999999999999"}}, ""},
            413},
        Row{"no_type", {"PUT", "/api/config", {host(), cookie()}, kSave}, 415},
        Row{"form_type",
            {"PUT", "/api/config", {host(), cookie(), {"Content-Type", "application/x-www-form-urlencoded"}}, kSave},
            415},
        Row{"text_type", {"PUT", "/api/config", {host(), cookie(), {"Content-Type", "text/plain"}}, kSave}, 415},
        Row{"two_types", {"PUT", "/api/config", {host(), cookie(), json(), json()}, kSave}, 415}),
    [](auto const& row) { return row.param.name; });

class Accepted : public testing::TestWithParam<Row> {};

TEST_P(Accepted, ReachItsRoute)
{
    Asked asked;
    RequestHandler handler = handlerFor(asked);
    EXPECT_FALSE(handler.refuse(GetParam().request).has_value());
    EXPECT_EQ(handler.answer(GetParam().request).status, GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(
    Requests, Accepted,
    testing::Values(
        Row{"page", {"GET", "/", {host(), cookie()}, ""}, 200}, Row{"head", {"HEAD", "/", {host(), cookie()}, ""}, 200},
        Row{"localhost", {"GET", "/", {{"host", "LocalHost:4711"}, cookie()}, ""}, 200},
        Row{"typed_address", {"GET", "/", {host(), cookie(), {"Sec-Fetch-Site", "none"}}, ""}, 200},
        Row{"query_is_ignored", {"GET", "/api/config?x=1", {host(), cookie()}, ""}, 200},
        Row{"one_of_several_cookies",
            {"GET",
             "/",
             {host(), {"Cookie", std::string("a=b; stanag_editor_4711=old; stanag_editor_4711=") + kToken}},
             ""},
            200},
        Row{"own_write",
            {"PUT",
             "/api/config",
             {host(), cookie(), json(), {"Origin", "http://127.0.0.1:4711"}, {"Sec-Fetch-Site", "same-origin"}},
             kSave},
            200},
        Row{"type_with_parameter",
            {"PUT", "/api/config", {host(), cookie(), {"content-type", "Application/JSON ; charset=utf-8"}}, kSave},
            200},
        Row{"no_json", {"PUT", "/api/config", {host(), cookie(), json()}, "{"}, 400},
        Row{"empty_body", {"PUT", "/api/config", {host(), cookie(), json()}, ""}, 400},
        Row{"not_utf8", {"PUT", "/api/config", {host(), cookie(), json()}, "{\"text\": \"\xFF\"}"}, 400},
        Row{"half_surrogate", {"PUT", "/api/config", {host(), cookie(), json()}, R"({"text": "\ud800"})"}, 400},
        Row{"no_object", {"PUT", "/api/config", {host(), cookie(), json()}, "[]"}, 400},
        // Without a length only the body itself tells.
        Row{"too_long", {"PUT", "/api/config", {host(), cookie(), json()}, kLongBody}, 413}),
    [](auto const& row) { return row.param.name; });

TEST(RequestHandler, GivesTheRouteTheTextAsItIs)
{
    Asked asked;
    RequestHandler handler = handlerFor(asked);
    handler.answer({"PUT", "/api/config", {host(), cookie(), json()}, R"({"text": "12"})"});
    handler.answer({"PUT", "/api/config", {host(), cookie(), json()}, R"({"text": "a\u00e4\n\t\"b"})"});
    EXPECT_EQ(asked.texts, (std::vector<std::string>{"12", "a\xC3\xA4\n\t\"b"}));
}

TEST(RequestHandler, TurnsTheTokenIntoAStrictCookie)
{
    Asked asked;
    RequestHandler handler = handlerFor(asked);
    Response const answer = handler.answer({"GET", std::string("/?token=") + kToken, {host()}, ""});
    EXPECT_EQ(answer.status, 303);
    EXPECT_EQ(headerOf(answer, "Location"), "/");
    EXPECT_EQ(headerOf(answer, "Set-Cookie"),
              std::string("stanag_editor_4711=") + kToken + "; HttpOnly; SameSite=Strict; Path=/");
    EXPECT_EQ(answer.body, "");
    // The printed address may be opened again and again.
    EXPECT_EQ(handler.answer({"GET", std::string("/?token=") + kToken, {host()}, ""}).status, 303);
}

TEST(RequestHandler, RefusesWrongTokens)
{
    Asked asked;
    RequestHandler handler = handlerFor(asked);
    std::string const right = std::string("/?token=") + kToken;
    for (std::string const& target : {std::string("/?token="), std::string("/?token=1"), right + "0", right + "%30",
                                      "/?tokens=" + std::string(kToken), "/?TOKEN=" + std::string(kToken)}) {
        Response const answer = handler.answer({"GET", target, {host()}, ""});
        EXPECT_EQ(answer.status, 403) << target;
        EXPECT_EQ(headerOf(answer, "Set-Cookie"), "") << target;
    }
    EXPECT_EQ(handler.answer({"GET", right, {{"Host", "evil.example:4711"}}, ""}).status, 403);
    EXPECT_EQ(handler.answer({"GET", right, {}, ""}).status, 400);
}

TEST(RequestHandler, TakesThePassOnce)
{
    Asked asked;
    RequestHandler handler = handlerFor(asked);
    Request const open{"GET", std::string("/?token=") + kPass, {host()}, ""};
    Response const first = handler.answer(open);
    EXPECT_EQ(first.status, 303);
    EXPECT_EQ(headerOf(first, "Set-Cookie"),
              std::string("stanag_editor_4711=") + kToken + "; HttpOnly; SameSite=Strict; Path=/");
    EXPECT_EQ(handler.answer(open).status, 403);
}

TEST(RequestHandler, WithoutAPassNoEmptyOneWorks)
{
    RequestHandler handler(kPort, kToken, "", {});
    EXPECT_EQ(handler.answer({"GET", "/?token=&x", {host()}, ""}).status, 403);
}

TEST(RequestHandler, KnowsTheUsualPortWithoutItsNumber)
{
    Asked asked;
    RequestHandler handler = handlerFor(asked, 80);
    std::string const target = std::string("/?token=") + kToken;
    EXPECT_EQ(handler.answer({"GET", target, {{"Host", "127.0.0.1"}}, ""}).status, 303);
    EXPECT_EQ(handler.answer({"GET", target, {{"Host", "localhost:80"}}, ""}).status, 303);
    EXPECT_EQ(handler.answer({"GET", target, {{"Host", "127.0.0.2"}}, ""}).status, 403);
}

TEST(RequestHandler, NamesTheMethodsOfAnAddress)
{
    Asked asked;
    RequestHandler handler = handlerFor(asked);
    EXPECT_EQ(headerOf(handler.answer({"POST", "/api/config", {host(), cookie(), json()}, "{}"}), "Allow"),
              "GET, HEAD, PUT");
    EXPECT_EQ(headerOf(handler.answer({"GET", "/api/failure", {host(), cookie()}, ""}), "Allow"), "POST");
}

TEST(RequestHandler, TurnsFailuresIntoAnswers)
{
    Asked asked;
    RequestHandler handler = handlerFor(asked);
    auto const fail = [&handler](std::string const& kind) {
        return handler.answer({"POST", "/api/failure", {host(), cookie(), json()}, "{\"kind\": \"" + kind + "\"}"});
    };
    EXPECT_EQ(fail("known").status, 409);
    EXPECT_EQ(fail("known").body, "{\"error\": \"one \\\"line\\\"\"}\n");
    EXPECT_EQ(fail("memory").status, 507);
    EXPECT_EQ(fail("other").status, 500);
    EXPECT_EQ(fail("other").body, "{\"error\": \"something else\"}\n");
}

TEST(RequestHandler, ForbidsWhatNoPageNeeds)
{
    Asked asked;
    RequestHandler handler = handlerFor(asked);
    for (Request const& request : {Request{"GET", "/", {host(), cookie()}, ""}, Request{"GET", "/", {host()}, ""},
                                   Request{"GET", "/nothing", {host(), cookie()}, ""},
                                   Request{"PUT", "/api/config", {host(), cookie(), json()}, ""},
                                   Request{"GET", std::string("/?token=") + kToken, {host()}, ""}}) {
        Response const answer = handler.answer(request);
        EXPECT_EQ(headerOf(answer, "Content-Security-Policy"),
                  "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; connect-src "
                  "'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'");
        EXPECT_EQ(headerOf(answer, "X-Content-Type-Options"), "nosniff");
        EXPECT_EQ(headerOf(answer, "Referrer-Policy"), "no-referrer");
        EXPECT_EQ(headerOf(answer, "Cross-Origin-Resource-Policy"), "same-origin");
        EXPECT_EQ(headerOf(answer, "Cache-Control"), "no-store");
    }
}

TEST(RandomToken, IsLongAndNew)
{
    std::string const token = editor::randomToken();
    EXPECT_EQ(token.size(), 32U);
    EXPECT_EQ(token.find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_NE(token, editor::randomToken());
}

}  // namespace
