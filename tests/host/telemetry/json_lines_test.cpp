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
        {"time in quotes is read as the number it looks like", "{\"t\":\"2\"}", "2d|\n"},
        {"nested values stay", "{\"t\":0,\"o\":{\"b\":1},\"l\":[1,2]}", "0d|l={} o={}\n"},
        {"texts", "{\"t\":0,\"camera_name\":\"EO \\u00e9\"}", "0d|camera_name='EO \xC3\xA9'\n"},
        {"not an object", "{\"t\":0}\n[1]\n",
         "f.jsonl:2: not a JSON object; each line must look like {\"t\": 1.5, \"heading_deg\": 90}"},
        {"a number", "7", "f.jsonl:1: not a JSON object; each line must look like {\"t\": 1.5, \"heading_deg\": 90}"},
        {"time of another kind", "\n\n{\"t\":\"noon\"}",
         "f.jsonl:3: \"t\" is not a number; give the seconds from the start of the video, like \"t\": 1.5"},
        {"time that is true", "{\"t\":true}",
         "f.jsonl:1: \"t\" is not a number; give the seconds from the start of the video, like \"t\": 1.5"},
        {"two objects on a line", "{\"t\":0} {\"t\":1}",
         "f.jsonl:1: not a JSON object: Unexpected characters at the end of JSON; mend the JSON there"},
        {"a cut object", "{\"t\":0}\n{\"a\":1",
         "f.jsonl:2: not a JSON object: Unterminated JSON object (index 6) near \"{\"a\":1\"; mend the JSON there"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(describe(row.text), row.expected);
    }
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
