// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// JSON Lines: which lines count, what the time is, how failures read.
#include "telemetry/telemetry.h"

#include "payload_text.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace telemetry {
namespace {

std::string describe(std::string_view text)
{
    try {
        std::string lines;
        for (Packet const& packet : parseJsonLines(text, "f.jsonl")) {
            lines += packet.timeSeconds.has_value() ? valueText(*packet.timeSeconds) : "none";
            lines += packet.stream.empty() ? "" : " of " + packet.stream;
            lines += packet.checksum == Checksum::Absent ? "" : std::string(" sum ") + toText(packet.checksum);
            lines += "|" + payloadText(packet.payload) + "\n";
        }
        return lines;
    } catch (std::runtime_error const& error) {
        return error.what();
    }
}

TEST(JsonLines, Rows)
{
    struct Row {
        char const* name;
        std::string_view text;
        char const* expected;
    };
    Row const rows[] = {
        {"nothing", "", ""},
        {"blank lines", "\n  \n\t\r\n", ""},
        {"one line", "{\"t\":1.5,\"heading_deg\":90.25}", "1.5d|heading_deg=90.25d\n"},
        {"two lines, the last without its end", "{\"t\":0}\n{\"t\":1,\"a\":true}", "0d|\n1d|a=true\n"},
        {"carriage returns", "{\"t\":0,\"a\":1}\r\n{\"t\":1,\"a\":2}\r\n", "0d|a=1\n1d|a=2\n"},
        {"byte order mark", "\xEF\xBB\xBF{\"t\":0}\n", "0d|\n"},
        {"blank line between", "{\"t\":0}\n\n{\"t\":1}\n", "0d|\n1d|\n"},
        {"negative time", "{\"t\":-2}", "-2d|\n"},
        {"without time", "{\"a\":1}", "none|a=1\n"},
        {"time of null", "{\"t\":null,\"a\":1}", "none|a=1\n"},
        {"nested values stay", "{\"t\":0,\"o\":{\"b\":1},\"l\":[1,2]}", "0d|l={} o={}\n"},
        {"texts", "{\"t\":0,\"camera_name\":\"EO \\u00e9\"}", "0d|camera_name='EO \xC3\xA9'\n"},
        {"not an object", "{\"t\":0}\n[1]\n",
         "f.jsonl:2: not a JSON object; each line must look like {\"t\": 1.5, \"heading_deg\": 90}"},
        {"a number", "7", "f.jsonl:1: not a JSON object; each line must look like {\"t\": 1.5, \"heading_deg\": 90}"},
        {"time of another kind", "\n\n{\"t\":\"noon\"}",
         "f.jsonl:3: \"t\" is not a number; give the seconds from the start of the video, like \"t\": 1.5"},
        {"time that is true", "{\"t\":true}",
         "f.jsonl:1: \"t\" is not a number; give the seconds from the start of the video, like \"t\": 1.5"},
        {"time in quotes is a text", "{\"t\":\"2\"}",
         "f.jsonl:1: \"t\" is not a number; give the seconds from the start of the video, like \"t\": 1.5"},
        {"two objects on a line", "{\"t\":0} {\"t\":1}",
         "f.jsonl:1: not a JSON object: column 9: syntax error while parsing value - unexpected '{'; expected end of "
         "input; mend the JSON there"},
        {"a cut object", "{\"t\":0}\n{\"a\":1",
         "f.jsonl:2: not a JSON object: column 7: syntax error while parsing object - unexpected end of input; "
         "expected "
         "'}'; mend the JSON there"},
        {"a bad word", "{\"t\":0,\"a\":tru}",
         "f.jsonl:1: not a JSON object: column 15: syntax error while parsing value - invalid literal; mend the JSON "
         "there"},
        {"a number beyond doubles", "{\"t\":0,\"a\":1e999}",
         "f.jsonl:1: not a JSON object: a number is too large; mend the JSON there"},
        {"bytes that are not UTF-8", "{\"t\":0,\"a\":\"\xC3(\"}",
         "f.jsonl:1: not a JSON object: column 14: syntax error while parsing value - invalid string: ill-formed UTF-8 "
         "byte; mend the JSON there"},
        // Former bugs.
        {"a second byte order mark", "\xEF\xBB\xBF\xEF\xBB\xBF{\"t\":0}",
         "f.jsonl:1: not a JSON object: column 1: a byte order mark where a value should begin; mend the JSON there"},
        {"a byte order mark in a later line", "{\"t\":0}\n\xEF\xBB\xBF{\"t\":1}",
         "f.jsonl:2: not a JSON object: column 1: a byte order mark where a value should begin; mend the JSON there"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(describe(row.text), row.expected);
    }
}

TEST(JsonLines, ValuesStayAsTheyAreWritten)
{
    struct Row {
        char const* written;
        char const* taken;
    };
    Row const rows[] = {
        // Texts that look like numbers, words or times.
        {"\"00123\"", "a='00123'"},
        {"\"123\"", "a='123'"},
        {"\"0x1F\"", "a='0x1F'"},
        {"\"true\"", "a='true'"},
        {"\"null\"", "a='null'"},
        {"\"1e5\"", "a='1e5'"},
        {"\" 7 \"", "a=' 7 '"},
        {"\"\"", "a=''"},
        {"\"A\\u00e9\\/\\\"\"", "a='A\xC3\xA9/\"'"},
        // Integers as far as 64 bits reach, doubles beyond and for everything with a point or an exponent.
        {"7", "a=7"},
        {"-0", "a=0"},
        {"9223372036854775807", "a=9223372036854775807"},
        {"-9223372036854775808", "a=-9223372036854775808"},
        {"9223372036854775808", "a=9.2233720368547758e+18d"},
        {"18446744073709551616", "a=1.8446744073709552e+19d"},
        {"7.0", "a=7d"},
        {"1e3", "a=1000d"},
        {"0.1", "a=0.10000000000000001d"},
        {"1e-400", "a=0d"},
        {"true", "a=true"},
        {"false", "a=false"},
        {"null", "a=null"},
        {"1,\"a\":2", "a=2"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.written);
        EXPECT_EQ(describe(std::string("{\"t\":0,\"a\":") + row.written + "}"), "0d|" + std::string(row.taken) + "\n");
    }
}

TEST(JsonLines, TakeWhatTheProgramLists)
{
    struct Row {
        char const* name;
        std::string_view text;
        char const* expected;
    };
    Row const rows[] = {
        {"as listed", R"({"packet": 0, "pts": 1.5, "checksum": "ok", "payload": {"a": 1, "t": 9}})",
         "1.5d sum ok|a=1 t=9\n"},
        {"with a stream", R"({"packet": 3, "pts": 2, "checksum": "bad", "payload": {}, "stream": "0x1f1"})",
         "2d of 0x1f1 sum bad|\n"},
        {"its time counted from the first picture wins",
         R"({"packet": 0, "pts": 1.5, "checksum": "absent", "payload": {"a": 1}, "stream": "0x101", "t": 0.5})",
         "0.5d of 0x101|a=1\n"},
        {"without time", R"({"packet": 0, "pts": null, "checksum": "ok", "payload": {"a": 1}})", "none sum ok|a=1\n"},
        {"a time of another kind", R"({"pts": "1.5", "payload": {"a": 1}})",
         "f.jsonl:1: \"pts\" is not a number; give the seconds from the start of the video, like \"t\": 1.5"},
        {"a key that is called payload", R"({"t": 1, "payload": {"mass_kg": 3}})", "1d|payload={}\n"},
        {"keys that are called so", R"({"t": 1, "pts": 2, "payload": 3})", "1d|payload=3 pts=2\n"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(describe(row.text), row.expected);
    }
}

TEST(JsonLines, OnlyTheFirstPacketIsLastingUnlessItWasListed)
{
    auto const lasting = [](std::string_view text) {
        std::string flags;
        for (Packet const& packet : parseJsonLines(text, "f.jsonl")) {
            flags += packet.lasting ? 'y' : 'n';
        }
        return flags;
    };
    EXPECT_EQ(lasting("\n{\"a\":1}\n{\"t\":0}\n{\"t\":1}\n"), "ynn");
    EXPECT_EQ(lasting("{\"t\":0}\n{\"pts\":0,\"payload\":{\"b\":1}}\n"), "yn");
    EXPECT_EQ(lasting("{\"pts\":0,\"payload\":{\"b\":1}}\n{\"t\":0}\n"), "nn");
}

TEST(JsonLines, NestingOfAnyDepthIsRead)
{
    constexpr std::size_t kLevels = 200000;
    std::string const lists = std::string(kLevels, '[') + std::string(kLevels, ']');
    std::string objects;
    for (std::size_t level = 0; level < kLevels; ++level) {
        objects += "{\"o\":";
    }
    objects += "1" + std::string(kLevels, '}');
    EXPECT_EQ(describe("{\"t\":0,\"l\":" + lists + ",\"o\":" + objects + "}"), "0d|l={} o={}\n");
    EXPECT_EQ(
        describe("{\"t\":0,\"l\":" + std::string(kLevels, '[')),
        "f.jsonl:1: not a JSON object: column 200012: syntax error while parsing value - unexpected end of input; "
        "expected '[', '{', or a literal; mend the JSON there");
}

TEST(JsonLines, FailuresStayOnOneLine)
{
    std::string const failure = describe("{\"t\":0,\"a\":\v\v?}");
    EXPECT_EQ(failure.find("f.jsonl:1: not a JSON object: "), 0U);
    for (char const c : failure) {
        EXPECT_GE(static_cast<unsigned char>(c), 0x20U);
    }
}

}  // namespace
}  // namespace telemetry
