// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The forgiving reader of configurations. A row gives one block's members and the fields that must differ
// from a default record afterwards; everything else must be as if the row were empty.
#include "stanag_overlay_config.h"

#include "config_changes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <locale>
#include <string>

namespace stanag_overlay {
namespace {

struct Row {
    char const* name;
    std::string item;  ///< one item of the "overlay" array
    char const* expected;
};

std::vector<OverlayCfg> parse(std::string const& text)
{
    return OverlayConfigParser().parse(text);
}

void check(std::vector<Row> const& rows)
{
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        auto const records = parse("{\"overlay\":[" + row.item + "]}");
        ASSERT_EQ(records.size(), 1U) << row.item;
        EXPECT_EQ(changes(records.front()), row.expected) << row.item;
    }
}

// Rows about one member of one format entry.
void checkFormat(std::vector<Row> rows)
{
    for (Row& row : rows) {
        row.item = R"({"formats":{"k":)" + row.item + "}}";
    }
    check(rows);
}

struct DocumentRow {
    char const* name;
    std::string text;
    std::size_t records;
};

TEST(ConfigParser, Documents)
{
    std::vector<DocumentRow> const rows = {
        {"empty text", "", 0},
        {"blanks only", "  \n", 0},
        {"empty object", "{}", 0},
        {"overlay is an object", R"({"overlay":{}})", 0},
        {"overlay is null", R"({"overlay":null})", 0},
        {"overlay is a text", R"({"overlay":"[{}]"})", 0},
        {"overlay is a number", R"({"overlay":1})", 0},
        {"overlay in another letter case", R"({"Overlay":[{}]})", 0},
        {"root is an array", "[1,2]", 0},
        {"root is an array of blocks", R"([{"overlay":[{}]}])", 0},
        {"root is a text", R"("overlay")", 0},
        {"root is a number", "12", 0},
        {"root is null", "null", 0},
        {"broken text", R"({"overlay":[{})", 0},
        {"text after the root", R"({"overlay":[]}x)", 0},
        {"text after a root with blocks", R"({"overlay":[{}]} x)", 0},
        {"a second root", R"({"overlay":[{}]}{})", 0},
        {"no blocks", R"({"overlay":[]})", 0},
        {"blanks after the root", "{\"overlay\":[{}]} \t\n\v\f\r ", 1},
        {"blanks around everything", " { \"overlay\" : [ { } , { } ] } ", 2},
        {"trailing commas", R"({"overlay":[{},],})", 1},
        {"items that are no objects", R"({"overlay":[1,"a",{}]})", 1},
        {"odd items between blocks", R"({"overlay":[{},null,[],{},true,1.5,{}]})", 3},
        {"unknown members at the root", R"({"version":3,"overlay":[{}],"x":{}})", 1},
        {"the last of two overlays wins", R"({"overlay":[{}],"overlay":[{},{}]})", 2},
        {"the last of two overlays wins when it is odd", R"({"overlay":[{}],"overlay":1})", 0},
        {"a zero byte after the root", std::string("{\"overlay\":[{}]}\0", 17), 0},
    };
    for (DocumentRow const& row : rows) {
        SCOPED_TRACE(row.name);
        testing::internal::CaptureStderr();
        auto const records = parse(row.text);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(records.size(), row.records) << row.text;
        for (OverlayCfg const& record : records) {
            EXPECT_EQ(changes(record), "");
        }
    }
}

TEST(ConfigParser, RoomIsReservedForAllItemsAtOnce)
{
    EXPECT_EQ(parse(R"({"overlay":[{},1,"a",{},null]})").capacity(), 5U);
}

TEST(ConfigParser, BlocksStandInTheOrderOfTheirItems)
{
    auto const records = parse(R"({"overlay":[{"formatString":"b"},2,{"formatString":"a"},{}]})");
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].formatString, "b");
    EXPECT_EQ(records[1].formatString, "a");
    EXPECT_EQ(records[2].formatString, "");
}

TEST(ConfigParser, Texts)
{
    check({
        {"template", R"({"formatString":"Alt: %alt m\n%%"})", "formatString=\"Alt: %alt m\n%%\""},
        {"template that looks like a number", R"({"formatString":"42"})", ""},
        {"template that looks like a literal", R"({"formatString":"true"})", ""},
        {"template of another kind", R"({"formatString":["a"]})", ""},
        {"template null", R"({"formatString":null})", ""},
        {"placeholder", R"({"missingPlaceholder":"n/a"})", "missingPlaceholder=\"n/a\""},
        {"empty placeholder", R"({"missingPlaceholder":""})", "missingPlaceholder=\"\""},
        {"placeholder that is a number", R"({"missingPlaceholder":0})", ""},
        {"placeholder that looks like a number", R"({"missingPlaceholder":"0"})", ""},
        {"unknown member", R"({"formatstring":"a","extra":{"textSize":20}})", ""},
    });
}

TEST(ConfigParser, TextSize)
{
    check({
        {"below", R"({"textSize":2})", "textSize=6"},
        {"lower bound", R"({"textSize":6})", "textSize=6"},
        {"inside", R"({"textSize":7})", "textSize=7"},
        {"upper bound", R"({"textSize":256})", "textSize=256"},
        {"just above", R"({"textSize":257})", "textSize=256"},
        {"above", R"({"textSize":1000})", "textSize=256"},
        {"negative", R"({"textSize":-40})", "textSize=6"},
        {"fraction is cut", R"({"textSize":12.9})", "textSize=12"},
        {"negative fraction is cut toward zero", R"({"textSize":-0.9})", "textSize=6"},
        {"whole double", R"({"textSize":20.0})", "textSize=20"},
        {"true is 1", R"({"textSize":true})", "textSize=6"},
        {"text", R"({"textSize":"big"})", "textSize=6"},
        {"text that is a number", R"({"textSize":"20"})", "textSize=20"},
        {"text that is a number with a point", R"({"textSize":"20.75"})", "textSize=20"},
        {"text that only looks like a number", R"({"textSize":"2e1"})", "textSize=6"},
        {"null", R"({"textSize":null})", "textSize=6"},
        {"object", R"({"textSize":{}})", "textSize=6"},
        {"array", R"({"textSize":[20]})", "textSize=6"},
        {"low 32 bits of an integer", R"({"textSize":4294967316})", "textSize=20"},
        {"bit 31 is the sign", R"({"textSize":2147483648})", "textSize=6"},
        {"low 32 bits of a whole double", R"({"textSize":4294967316.0})", "textSize=20"},
        {"huge whole double saturates, then its low bits are -1", R"({"textSize":1e300})", "textSize=6"},
        {"huge negative whole double", R"({"textSize":-1e300})", "textSize=6"},
        {"large double with a fraction saturates", R"({"textSize":4294967316.5})", "textSize=256"},
        {"large negative double with a fraction", R"({"textSize":-4294967316.5})", "textSize=6"},
        {"infinite after the narrowing of a text", R"({"textSize":"1000000000000000000000000000000000000000.0"})",
         "textSize=256"},
    });
}

TEST(ConfigParser, Thickness)
{
    check({
        {"below", R"({"thickness":0})", ""},
        {"inside", R"({"thickness":2})", "thickness=2"},
        {"upper bound", R"({"thickness":16})", "thickness=16"},
        {"above", R"({"thickness":17})", "thickness=16"},
        {"fraction", R"({"thickness":3.99})", "thickness=3"},
        {"true", R"({"thickness":true})", ""},
        {"text", R"({"thickness":"fat"})", ""},
        {"null", R"({"thickness":null})", ""},
    });
}

TEST(ConfigParser, Decimals)
{
    check({
        {"above", R"({"decimals":20})", "decimals=12"},
        {"upper bound", R"({"decimals":12})", "decimals=12"},
        {"zero", R"({"decimals":0})", "decimals=0"},
        {"lower bound", R"({"decimals":-1})", ""},
        {"below", R"({"decimals":-2})", ""},
        {"fraction toward zero", R"({"decimals":-0.9})", "decimals=0"},
        {"false", R"({"decimals":false})", "decimals=0"},
        {"true", R"({"decimals":true})", "decimals=1"},
        {"text", R"({"decimals":"two"})", "decimals=0"},
        {"text that is a number", R"({"decimals":"2"})", "decimals=2"},
        {"null", R"({"decimals":null})", "decimals=0"},
    });
}

TEST(ConfigParser, TrimTrailingZeros)
{
    check({
        {"true", R"({"trimTrailingZeros":true})", ""},
        {"false", R"({"trimTrailingZeros":false})", "trimTrailingZeros=false"},
        {"zero", R"({"trimTrailingZeros":0})", "trimTrailingZeros=false"},
        {"non-zero integer", R"({"trimTrailingZeros":-3})", ""},
        {"integer with empty low bits", R"({"trimTrailingZeros":4294967296})", ""},
        {"zero double", R"({"trimTrailingZeros":0.0})", "trimTrailingZeros=false"},
        {"negative zero", R"({"trimTrailingZeros":-0.0})", "trimTrailingZeros=false"},
        {"small double", R"({"trimTrailingZeros":0.001})", ""},
        {"negative double", R"({"trimTrailingZeros":-0.5})", ""},
        {"text that is a literal", R"({"trimTrailingZeros":"true"})", ""},
        {"text false", R"({"trimTrailingZeros":"false"})", "trimTrailingZeros=false"},
        {"text in capitals", R"({"trimTrailingZeros":"TRUE"})", "trimTrailingZeros=false"},
        {"text yes", R"({"trimTrailingZeros":"yes"})", "trimTrailingZeros=false"},
        {"null", R"({"trimTrailingZeros":null})", "trimTrailingZeros=false"},
        {"object", R"({"trimTrailingZeros":{}})", "trimTrailingZeros=false"},
        {"array", R"({"trimTrailingZeros":[1]})", "trimTrailingZeros=false"},
    });
}

TEST(ConfigParser, Colours)
{
    check({
        {"orange text", R"({"textColor":"#FF8000"})", "textG=128 textB=0"},
        {"lower case", R"({"textColor":"#0a0b0c"})", "textR=10 textG=11 textB=12"},
        {"no sharp", R"({"textColor":"FF8000"})", ""},
        {"seven bytes without a sharp", R"({"textColor":"xFF8000"})", ""},
        {"too short", R"({"textColor":"#FF800"})", ""},
        {"too long", R"({"textColor":"#FF80000"})", ""},
        {"empty", R"({"textColor":""})", ""},
        {"sharp only", R"({"textColor":"#"})", ""},
        {"short text that is read as a number", R"({"textColor":"1234567"})", ""},
        {"other kind", R"({"textColor":16744448})", ""},
        {"stops at the first other byte", R"({"textColor":"#12zzzz"})", "textR=0 textG=0 textB=18"},
        {"no digit is black", R"({"textColor":"#zzzzzz"})", "textR=0 textG=0 textB=0"},
        {"leading blanks are skipped", R"({"textColor":"#  12ab"})", "textR=0 textG=18 textB=171"},
        {"blanks only are black", R"({"textColor":"#      "})", "textR=0 textG=0 textB=0"},
        {"prefix is taken", R"({"textColor":"#0x12ab"})", "textR=0 textG=18 textB=171"},
        {"prefix in capitals", R"({"textColor":"#0X12AB"})", "textR=0 textG=18 textB=171"},
        {"prefix without digits", R"({"textColor":"#0xzzzz"})", "textR=0 textG=0 textB=0"},
        {"plus sign", R"({"textColor":"#+12345"})", "textR=1 textG=35 textB=69"},
        {"minus sign wraps", R"({"textColor":"#-00001"})", ""},
        {"minus two", R"({"textColor":"#-00002"})", "textB=254"},
        {"no grouping commas", R"({"textColor":"#12,345"})", "textR=0 textG=0 textB=18"},
        {"background", R"({"bgColor":"#010203"})", "bgR=1 bgG=2 bgB=3"},
        {"background with a letter beyond f", R"({"bgColor":"#01020g"})", "bgG=16 bgB=32"},
        {"background of another form", R"({"bgColor":"red"})", ""},
        {"both", R"({"bgColor":"#0000ff","textColor":"#000001"})", "textR=0 textG=0 textB=1 bgB=255"},
        {"an odd text colour leaves the background alone", R"({"textColor":"#123456","bgColor":5})",
         "textR=18 textG=52 textB=86"},
    });
}

TEST(ConfigParser, ColoursAreReadWithoutTheGlobalLocalesGrouping)
{
    struct Grouped : std::numpunct<char> {
        char do_thousands_sep() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale const before = std::locale::global(std::locale(std::locale::classic(), new Grouped));
    auto const records = parse(R"({"overlay":[{"textColor":"#12,345"}]})");
    std::locale::global(before);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(changes(records.front()), "textR=0 textG=0 textB=18");
}

TEST(ConfigParser, Position)
{
    check({
        {"outside on both sides", R"({"position":{"x":1.5,"y":-2}})", "posX=1 posY=0"},
        {"inside", R"({"position":{"x":0.25,"y":0.75}})", "posX=0.25 posY=0.75"},
        {"single precision", R"({"position":{"x":0.1}})", "posX=0.100000001"},
        {"bounds", R"({"position":{"x":0,"y":1}})", "posX=0 posY=1"},
        {"y only", R"({"position":{"y":0.5}})", "posY=0.5"},
        {"a text is 0, not the default", R"({"position":{"x":"left"}})", "posX=0"},
        {"a text that is a number", R"({"position":{"x":"0.5"}})", "posX=0.5"},
        {"true", R"({"position":{"x":true,"y":false}})", "posX=1 posY=0"},
        {"null, object", R"({"position":{"x":null,"y":{}}})", "posX=0 posY=0"},
        {"array", R"({"position":{"x":[0.5]}})", "posX=0"},
        {"integers are not narrowed to 32 bits", R"({"position":{"x":4294967296,"y":-4294967295}})", "posX=1 posY=0"},
        {"huge", R"({"position":{"x":1e300,"y":-1e300}})", "posX=1 posY=0"},
        {"unknown members", R"({"position":{"X":0.5,"z":1}})", ""},
        {"empty object", R"({"position":{}})", ""},
        {"array instead of an object", R"({"position":[0.5,0.5]})", ""},
        {"text instead of an object", R"({"position":"0.5"})", ""},
        {"null instead of an object", R"({"position":null})", ""},
    });
}

TEST(ConfigParser, Opacity)
{
    check({
        {"text", R"({"bgAlpha":"half"})", ""},
        {"true", R"({"bgAlpha":true})", ""},
        {"false", R"({"bgAlpha":false})", ""},
        {"null", R"({"bgAlpha":null})", ""},
        {"object", R"({"bgAlpha":{}})", ""},
        {"array", R"({"bgAlpha":[1]})", ""},
        {"above", R"({"bgAlpha":7})", "bgAlpha=1"},
        {"just above", R"({"bgAlpha":1.0001})", "bgAlpha=1"},
        {"below", R"({"bgAlpha":-0.25})", "bgAlpha=0"},
        {"zero", R"({"bgAlpha":0})", "bgAlpha=0"},
        {"inside", R"({"bgAlpha":0.8})", "bgAlpha=0.800000012"},
        {"a text that is a number", R"({"bgAlpha":"0.25"})", "bgAlpha=0.25"},
        {"integers are not narrowed to 32 bits", R"({"bgAlpha":4294967296})", "bgAlpha=1"},
        {"huge", R"({"bgAlpha":1e300})", "bgAlpha=1"},
    });
}

TEST(ConfigParser, UpdateEveryNFrames)
{
    check({
        {"zero", R"({"updateEveryNFrames":0})", ""},
        {"negative", R"({"updateEveryNFrames":-5})", ""},
        {"inside", R"({"updateEveryNFrames":30})", "updateEveryNFrames=30"},
        {"upper bound", R"({"updateEveryNFrames":120})", "updateEveryNFrames=120"},
        {"above", R"({"updateEveryNFrames":500})", "updateEveryNFrames=120"},
        {"fraction is cut", R"({"updateEveryNFrames":2.7})", "updateEveryNFrames=2"},
        {"fraction below 1", R"({"updateEveryNFrames":0.7})", ""},
        {"negative fraction", R"({"updateEveryNFrames":-2.7})", ""},
        {"double above", R"({"updateEveryNFrames":120.5})", "updateEveryNFrames=120"},
        {"huge double", R"({"updateEveryNFrames":1e300})", "updateEveryNFrames=120"},
        {"a whole double is not narrowed", R"({"updateEveryNFrames":4294967301.0})", "updateEveryNFrames=120"},
        {"huge negative double", R"({"updateEveryNFrames":-1e300})", ""},
        {"an integer is narrowed", R"({"updateEveryNFrames":4294967301})", "updateEveryNFrames=5"},
        {"bit 31 is the sign", R"({"updateEveryNFrames":2147483648})", ""},
        {"null", R"({"updateEveryNFrames":null})", ""},
        {"true", R"({"updateEveryNFrames":true})", ""},
        {"text", R"({"updateEveryNFrames":"often"})", ""},
        {"array", R"({"updateEveryNFrames":[5]})", ""},
    });
}

TEST(ConfigParser, Formats)
{
    check({
        {"not an object", R"({"formats":[{"k":{}}]})", ""},
        {"entry that is a number", R"({"formats":{"k":2}})", ""},
        {"entries of every odd kind", R"({"formats":{"a":null,"b":true,"c":1.5,"d":"x","e":[{}]}})", ""},
        {"empty entry", R"({"formats":{"k":{}}})", "formats[k]{}"},
        {"keys as they are written", R"({"formats":{"Alt M":{}," a":{},"":{},"12":{}}})",
         "formats[]{} formats[ a]{} formats[12]{} formats[Alt M]{}"},
        {"only the last of two entries of one name", R"({"formats":{"k":{"decimals":1},"k":{"date":true}}})",
         "formats[k]{date=true}"},
        {"a block's own members do not reach its formats",
         R"({"missingPlaceholder":"?","decimals":2,"formats":{"k":{}}})",
         "decimals=2 missingPlaceholder=\"?\" formats[k]{}"},
        {"unknown members", R"({"formats":{"k":{"Decimals":1,"unit":"m"}}})", "formats[k]{}"},
    });
}

TEST(ConfigParser, FormatDecimalsAreNotClamped)
{
    checkFormat({
        {"beyond the block's bound", R"({"decimals":20})", "formats[k]{decimals=20}"},
        {"negative", R"({"decimals":-7})", "formats[k]{decimals=-7}"},
        {"fraction", R"({"decimals":2.9})", "formats[k]{decimals=2}"},
        {"true", R"({"decimals":true})", "formats[k]{decimals=1}"},
        {"text", R"({"decimals":"few"})", "formats[k]{decimals=0}"},
        {"null", R"({"decimals":null})", "formats[k]{decimals=0}"},
        {"low 32 bits", R"({"decimals":4294967297})", "formats[k]{decimals=1}"},
        {"low 32 bits of a whole double", R"({"decimals":4294967298.0})", "formats[k]{decimals=2}"},
        {"largest", R"({"decimals":2147483647})", "formats[k]{decimals=2147483647}"},
        {"bit 31 is the sign", R"({"decimals":2147483648})", "formats[k]{decimals=-2147483648}"},
        {"low 32 bits of a negative whole double", R"({"decimals":-1e15})", "formats[k]{decimals=1530494976}"},
        {"large fraction saturates", R"({"decimals":4294967296.5})", "formats[k]{decimals=2147483647}"},
        {"large negative fraction saturates", R"({"decimals":-4294967296.5})", "formats[k]{decimals=-2147483648}"},
    });
}

TEST(ConfigParser, FormatSwitches)
{
    checkFormat({
        {"date on", R"({"date":true})", "formats[k]{date=true}"},
        {"date 1", R"({"date":1})", "formats[k]{date=true}"},
        {"date 0.5", R"({"date":0.5})", "formats[k]{date=true}"},
        {"date text true", R"({"date":"true"})", "formats[k]{date=true}"},
        {"date text yes", R"({"date":"yes"})", "formats[k]{}"},
        {"date null", R"({"date":null})", "formats[k]{}"},
        {"trim on", R"({"trimTrailingZeros":true})", "formats[k]{trimTrailingZeros=true}"},
        {"trim 2", R"({"trimTrailingZeros":2})", "formats[k]{trimTrailingZeros=true}"},
        {"trim array", R"({"trimTrailingZeros":[true]})", "formats[k]{}"},
    });
}

TEST(ConfigParser, FormatDates)
{
    checkFormat({
        {"pattern", R"({"dateFormat":"%H"})", "formats[k]{dateFormat=\"%H\"}"},
        {"empty pattern", R"({"dateFormat":""})", "formats[k]{dateFormat=\"\"}"},
        {"pattern of every other kind is its text", R"({"dateFormat":1.5})", "formats[k]{dateFormat=\"1.500000\"}"},
        {"pattern integer", R"({"dateFormat":7})", "formats[k]{dateFormat=\"7\"}"},
        {"pattern bool", R"({"dateFormat":true})", "formats[k]{dateFormat=\"true\"}"},
        {"pattern null", R"({"dateFormat":null})", "formats[k]{dateFormat=\"null\"}"},
        {"pattern object", R"({"dateFormat":{"a":1}})", "formats[k]{dateFormat=\"{}\"}"},
        {"pattern array", R"({"dateFormat":["%H"]})", "formats[k]{dateFormat=\"{}\"}"},
        {"unit s", R"({"timestampUnit":"s"})", "formats[k]{timestampUnit=0}"},
        {"unit ms", R"({"timestampUnit":"ms"})", "formats[k]{}"},
        {"unit us", R"({"timestampUnit":"us"})", "formats[k]{timestampUnit=2}"},
        {"unit in capitals", R"({"timestampUnit":"US"})", "formats[k]{}"},
        {"unit with a blank", R"({"timestampUnit":"s "})", "formats[k]{}"},
        {"unit of another kind", R"({"timestampUnit":0})", "formats[k]{}"},
        {"zone local", R"({"timezone":"local"})", "formats[k]{localTime=true}"},
        {"zone utc", R"({"timezone":"utc"})", "formats[k]{}"},
        {"zone in capitals", R"({"timezone":"Local"})", "formats[k]{}"},
        {"zone of another kind", R"({"timezone":true})", "formats[k]{}"},
    });
}

TEST(ConfigParser, FormatPlaceholderAndInvalidValues)
{
    checkFormat({
        {"placeholder", R"({"missingPlaceholder":"?"})", "formats[k]{missingPlaceholder=\"?\"}"},
        {"empty placeholder", R"({"missingPlaceholder":""})", "formats[k]{missingPlaceholder=\"\"}"},
        {"placeholder of another kind", R"({"missingPlaceholder":7})", "formats[k]{}"},
        {"every scalar kind by its text", R"({"invalidValues":["N/A",0,-1.5,true,null]})",
         "formats[k]{invalidValues=[\"N/A\",\"0\",\"-1.500000\",\"true\",\"null\"]}"},
        {"containers are skipped", R"({"invalidValues":[{},[],1]})", "formats[k]{invalidValues=[\"1\"]}"},
        {"texts that look like numbers are numbers", R"({"invalidValues":["0.5","007","1e5",""]})",
         "formats[k]{invalidValues=[\"0.500000\",\"7\",\"1e5\",\"\"]}"},
        {"no array", R"({"invalidValues":0})", "formats[k]{}"},
        {"object", R"({"invalidValues":{"a":0}})", "formats[k]{}"},
        {"empty array", R"({"invalidValues":[]})", "formats[k]{}"},
    });
}

TEST(ConfigParser, FormatDurations)
{
    checkFormat({
        {"hold", R"({"holdLastMs":1500})", "formats[k]{holdLastNs=1500000000}"},
        {"hold too long", R"({"holdLastMs":1000000})", "formats[k]{holdLastNs=600000000000}"},
        {"hold at the bound", R"({"holdLastMs":600000})", "formats[k]{holdLastNs=600000000000}"},
        {"hold negative", R"({"holdLastMs":-5})", "formats[k]{}"},
        {"hold true", R"({"holdLastMs":true})", "formats[k]{holdLastNs=1000000}"},
        {"hold false", R"({"holdLastMs":false})", "formats[k]{}"},
        {"hold text", R"({"holdLastMs":"soon"})", "formats[k]{}"},
        {"hold text that is a number", R"({"holdLastMs":"250"})", "formats[k]{holdLastNs=250000000}"},
        {"hold null", R"({"holdLastMs":null})", "formats[k]{}"},
        {"hold fraction", R"({"holdLastMs":2.9})", "formats[k]{holdLastNs=2000000}"},
        {"hold negative fraction", R"({"holdLastMs":-0.9})", "formats[k]{}"},
        {"hold low 32 bits", R"({"holdLastMs":4294967297})", "formats[k]{holdLastNs=1000000}"},
        {"hold bit 31", R"({"holdLastMs":2147483648})", "formats[k]{}"},
        {"hold double without narrowing", R"({"holdLastMs":4294967297.0})", "formats[k]{holdLastNs=600000000000}"},
        {"hold huge double", R"({"holdLastMs":1e300})", "formats[k]{holdLastNs=600000000000}"},
        {"hold huge negative double", R"({"holdLastMs":-1e300})", "formats[k]{}"},
        {"refresh", R"({"refreshEveryMs":1000})", "formats[k]{refreshEveryNs=1000000000}"},
        {"refresh too long", R"({"refreshEveryMs":600001})", "formats[k]{refreshEveryNs=600000000000}"},
        {"refresh array", R"({"refreshEveryMs":[5]})", "formats[k]{}"},
        {"both", R"({"refreshEveryMs":1,"holdLastMs":2})", "formats[k]{holdLastNs=2000000 refreshEveryNs=1000000}"},
    });
}

TEST(ConfigParser, FormatBounds)
{
    checkFormat({
        {"both", R"({"minValue":-1.5,"maxValue":9})", "formats[k]{hasMin=true hasMax=true minValue=-1.5 maxValue=9}"},
        {"equal bounds are none", R"({"minValue":5,"maxValue":5})", "formats[k]{minValue=5 maxValue=5}"},
        {"equal bounds of two kinds", R"({"minValue":true,"maxValue":1.0})", "formats[k]{minValue=1 maxValue=1}"},
        {"crossed bounds stay", R"({"minValue":9,"maxValue":1})",
         "formats[k]{hasMin=true hasMax=true minValue=9 maxValue=1}"},
        {"zero alone", R"({"minValue":0})", "formats[k]{hasMin=true}"},
        {"text abc", R"({"minValue":"abc"})", "formats[k]{}"},
        {"empty text", R"({"maxValue":""})", "formats[k]{}"},
        {"null is 0", R"({"minValue":null})", "formats[k]{hasMin=true}"},
        {"object is 0", R"({"maxValue":{}})", "formats[k]{hasMax=true}"},
        {"array is 0", R"({"maxValue":[7]})", "formats[k]{hasMax=true}"},
        {"true is 1", R"({"maxValue":true})", "formats[k]{hasMax=true maxValue=1}"},
        {"false is 0", R"({"minValue":false})", "formats[k]{hasMin=true}"},
        {"text with text after the number", R"({"minValue":"5 m"})", "formats[k]{hasMin=true minValue=5}"},
        {"text with blanks before the number", R"({"minValue":" \t-2.5x"})", "formats[k]{hasMin=true minValue=-2.5}"},
        {"text with an exponent", R"({"minValue":"1e3"})", "formats[k]{hasMin=true minValue=1000}"},
        {"hexadecimal text", R"({"minValue":"0x10"})", "formats[k]{hasMin=true minValue=16}"},
        {"text that overflows", R"({"minValue":"1e999"})", "formats[k]{}"},
        {"text that underflows", R"({"minValue":"1e-999"})", "formats[k]{}"},
        {"text that loses digits to its smallness", R"({"minValue":"1e-310"})", "formats[k]{}"},
        {"infinite text is stored without its flag", R"({"maxValue":"inf"})", "formats[k]{maxValue=inf}"},
        {"not-a-number text is stored without its flag", R"({"maxValue":"nan"})", "formats[k]{maxValue=nan}"},
        {"low 32 bits of an integer", R"({"minValue":4294967297})", "formats[k]{hasMin=true minValue=1}"},
        {"bit 31 is the sign", R"({"minValue":2147483648})", "formats[k]{hasMin=true minValue=-2.14748365e+09}"},
        {"low 32 bits of a whole double", R"({"maxValue":4294967298.0})", "formats[k]{hasMax=true maxValue=2}"},
        {"whole double beyond 64 bits", R"({"maxValue":1e300})", "formats[k]{hasMax=true maxValue=-1}"},
        {"negative whole double beyond 64 bits", R"({"maxValue":-1e300})", "formats[k]{hasMax=true}"},
        {"a fraction is not narrowed", R"({"maxValue":4294967298.5})",
         "formats[k]{hasMax=true maxValue=4.2949673e+09}"},
        {"infinite double is stored without its flag", R"({"maxValue":"1000000000000000000000000000000000000000.0"})",
         "formats[k]{maxValue=inf}"},
        {"a quoted fraction is single precision", R"({"minValue":"0.1"})",
         "formats[k]{hasMin=true minValue=0.100000001}"},
    });
}

TEST(ConfigParser, BoundsThatDifferInTheTenthDigitStay)
{
    auto const records = OverlayConfigParser().parse(
        R"({"overlay":[{"formats":{"k":{"minValue":1.0000000001,"maxValue":1.0000000002}}}]})");
    FormatSpec const& spec = records.at(0).formats.at("k");
    EXPECT_TRUE(spec.hasMin);
    EXPECT_TRUE(spec.hasMax);
    EXPECT_EQ(spec.minValue, 1.0000000001);
    EXPECT_EQ(spec.maxValue, 1.0000000002);
}

TEST(ConfigParser, AnInfiniteBoundDoesNotClearTheOther)
{
    checkFormat({
        {"flagless upper bound", R"({"minValue":3,"maxValue":"abc"})", "formats[k]{hasMin=true minValue=3}"},
        {"flagless lower bound", R"({"minValue":"inf","maxValue":3})",
         "formats[k]{hasMax=true minValue=inf maxValue=3}"},
    });
}

TEST(ConfigParser, EverythingAtOnce)
{
    check({{"all members",
            R"({"formatString":"%a","decimals":3,"trimTrailingZeros":false,"missingPlaceholder":"-",
                "condition":{"key":"c","value":1,"showAfterMs":5},
                "formats":{"a":{"decimals":1,"holdLastMs":10},"t":{"date":true,"timestampUnit":"us"}},
                "textColor":"#010203","textSize":30,"thickness":4,"position":{"x":0.5,"y":0.25},
                "bgColor":"#040506","bgAlpha":0.25,"updateEveryNFrames":10})",
            "thickness=4 textR=1 textG=2 textB=3 textSize=30 posX=0.5 posY=0.25 bgR=4 bgG=5 bgB=6 bgAlpha=0.25 "
            "formatString=\"%a\" decimals=3 trimTrailingZeros=false missingPlaceholder=\"-\" "
            "condition{enabled=true key=\"c\" op=1 value=\"1\" showAfterNs=5000000} "
            "formats[a]{decimals=1 holdLastNs=10000000} formats[t]{date=true timestampUnit=2} updateEveryNFrames=10"}});
}

TEST(ConfigParser, TheReadersCoercionLinesAppear)
{
    testing::internal::CaptureStderr();
    auto const records = parse(R"({"overlay":[{"textSize":"99999999999","decimals":"."}]})");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Invalid int conversion in SwString: 99999999999\n"
                                                      "Invalid float conversion in SwString: .\n")
        << "members are read in the order of the text";
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(changes(records.front()), "textSize=6 decimals=0");
}

}  // namespace
}  // namespace stanag_overlay
