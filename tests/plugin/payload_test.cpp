// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Payload to object: what a payload holds, converts to, or spells.
#include "render_payload.h"

#include "flushed_cerr.h"
#include "test_host.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

/// Types of a host that the plugin was never compiled with.
struct HostTelemetry {
    int heading = 0;
};
struct ThrowsError {};
struct ThrowsInt {};
struct EmptyObjectButText {};
struct TextOnly {
    std::string text;
};
struct WrongResult {};
struct Unknown {};

class Payload : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        SwAny::registerAllType();
        SwAny::registerConversion<HostTelemetry, SwJsonObject>([](HostTelemetry const& telemetry) {
            SwJsonObject object;
            object["heading_deg"] = telemetry.heading;
            return object;
        });
        SwAny::registerConversion<ThrowsError, SwJsonObject>(
            [](ThrowsError const&) -> SwJsonObject { throw std::runtime_error("no telemetry"); });
        SwAny::registerConversion<ThrowsInt, SwJsonObject>([](ThrowsInt const&) -> SwJsonObject { throw 1; });
        SwAny::registerConversion<EmptyObjectButText, SwJsonObject>(
            [](EmptyObjectButText const&) { return SwJsonObject(); });
        SwAny::registerConversion<EmptyObjectButText, SwString>(
            [](EmptyObjectButText const&) { return SwString(R"({"from":"text"})"); });
        SwAny::registerConversion<TextOnly, SwString>([](TextOnly const& value) { return SwString(value.text); });
        SwAny::addConverter(SwAny::nameOf<WrongResult>(), SwAny::nameOf<SwJsonObject>(),
                            [](SwAny const&) { return SwAny(1); });
        SwAny::registerConversion<WrongResult, SwString>([](WrongResult const&) { return SwString(R"({"t":1})"); });
    }
};

std::string asText(SwJsonObject const& object)
{
    return SwJsonDocument(SwJsonValue(object)).toJson().toStdString();
}

constexpr char const* kNoObject = "Root is not a JSON object.\n";

std::string noRule(std::string const& from)
{
    return "No conversion rule registered from " + from + " to " + SwAny::nameOf<SwString>() + "\n";
}

}  // namespace

TEST_F(Payload, BecomesAnObject)
{
    struct Row {
        char const* name;
        SwAny payload;
        std::string expected;
        std::string expectedMessage;
    };
    std::vector<Row> const rows{
        {"object", SwAny(jsonObject(R"({"b":2,"a":1})")), R"({"a": 1,"b": 2})", ""},
        {"empty object", SwAny(SwJsonObject()), "{}", ""},
        {"host type with a conversion", SwAny(HostTelemetry{270}), R"({"heading_deg": 270})", ""},
        {"conversion throws", SwAny(ThrowsError()), "{}", ""},
        {"conversion throws no exception class", SwAny(ThrowsInt()), "{}", ""},
        {"conversion gives an empty object, text follows", SwAny(EmptyObjectButText()), R"({"from": "text"})", ""},
        {"conversion gives another type, text follows", SwAny(WrongResult()), R"({"t": 1})", ""},
        {"host type with a text form", SwAny(TextOnly{R"({"x":1})"}), R"({"x": 1})", ""},
        {"framework text", SwAny(SwString(R"({"a":1})")), R"({"a": 1})", ""},
        {"standard text", SwAny(std::string(R"({"a":1})")), R"({"a": 1})", ""},
        {"C text", SwAny(static_cast<char const*>(R"({"a":1})")), R"({"a": 1})", ""},
        {"null C text", SwAny(static_cast<char const*>(nullptr)), "{}", ""},
        {"text coerces its string values", SwAny(std::string(R"({"a":"12"})")), R"({"a": 12})", ""},
        {"white space after the object", SwAny(std::string("{\"a\":1} \t\r\n")), R"({"a": 1})", ""},
        {"more after the object", SwAny(std::string(R"({"a":1} {"b":2})")), "{}", ""},
        {"text that is no JSON", SwAny(std::string("no telemetry today")), "{}", ""},
        {"cut text", SwAny(std::string(R"({"a":1)")), "{}", ""},
        {"empty text", SwAny(std::string()), "{}", ""},
        {"empty object as text", SwAny(std::string("{}")), "{}", ""},
        {"array as text", SwAny(std::string(R"([{"a":1}])")), "{}", kNoObject},
        {"number as text", SwAny(std::string("42")), "{}", kNoObject},
        {"null as text", SwAny(std::string("null")), "{}", kNoObject},
        {"quoted as text", SwAny(std::string(R"("word")")), "{}", kNoObject},
        {"integer", SwAny(42), "{}", kNoObject},
        {"double", SwAny(2.5), "{}", kNoObject},
        {"bool", SwAny(true), "{}", kNoObject},
        {"array", SwAny(SwJsonArray{1, 2}), "{}", kNoObject},
        {"value that holds an object", SwAny(SwJsonValue(jsonObject(R"({"a":1})"))), R"({"a": 1})", ""},
        {"list of texts", SwAny(std::vector<std::string>{"a", "b"}), "{}", ""},
        {"empty payload", SwAny(), "{}", ""},
        {"object without a value", SwAny::fromRawPointer(SwAny::nameOf<SwJsonObject>(), nullptr), "{}", ""},
        {"type without conversions", SwAny(Unknown()), "{}", noRule(SwAny::nameOf<Unknown>())},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        testing::internal::CaptureStderr();
        std::string const fromShared = asText(render_payload::anyToJsonObject(row.payload));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), row.expectedMessage);
        EXPECT_EQ(fromShared, row.expected);

        SwAny owned = row.payload;
        testing::internal::CaptureStderr();
        std::string const fromOwned = asText(render_payload::anyToJsonObject(std::move(owned)));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), row.expectedMessage);
        EXPECT_EQ(fromOwned, row.expected);
    }
}

TEST_F(Payload, TheLineIsFlushedAtItsEnd)
{
    FlushedCerr const flushed;
    render_payload::anyToJsonObject(SwAny(std::string("[]")));
    EXPECT_EQ(flushed.text(), kNoObject);
}

TEST_F(Payload, SharedPayloadIsLeftAsItWas)
{
    SwAny const payload(jsonObject(R"({"a":[1,2]})"));
    render_payload::anyToJsonObject(payload);
    EXPECT_EQ(asText(payload.get<SwJsonObject>()), R"({"a": [1,2]})");
}

TEST_F(Payload, OwnedPayloadIsMovedOut)
{
    SwAny payload(jsonObject(R"({"a":[1,2]})"));
    SwJsonArray const* const before = &payload.get<SwJsonObject>()["a"].toArray();
    SwJsonObject const object = render_payload::anyToJsonObject(std::move(payload));
    EXPECT_EQ(&object["a"].toArray(), before);
}
