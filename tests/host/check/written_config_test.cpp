// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What stands in a file, before anything is made of it.
#include "check/written_config.h"
#include "sw_number_text.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using check::readAsWritten;

SwJsonValue scalar(std::string const& text)
{
    return readAsWritten("[" + text + "]").toArray()[0];
}

TEST(WrittenConfig, KeepsEveryScalarAsItStands)
{
    SwJsonValue const root =
        readAsWritten(R"( {"a" : 12.50, "b":"12.50","c":[true,"tr\u0075e" , null,-1e5],"d":{"":""}} )");
    SwJsonObject const& object = root.toObject();
    EXPECT_EQ(object.size(), 4U);
    EXPECT_EQ(check::literalText(object["a"]), "12.50");
    EXPECT_FALSE(check::isQuoted(object["a"]));
    EXPECT_EQ(check::literalText(object["b"]), "12.50");
    EXPECT_TRUE(check::isQuoted(object["b"]));
    SwJsonArray const& list = object["c"].toArray();
    ASSERT_EQ(list.size(), 4U);
    EXPECT_EQ(check::literalText(list[0]), "true");
    EXPECT_FALSE(check::isQuoted(list[0]));
    EXPECT_EQ(check::literalText(list[1]), "true");
    EXPECT_TRUE(check::isQuoted(list[1]));
    EXPECT_EQ(check::literalText(list[2]), "null");
    EXPECT_EQ(check::literalText(list[3]), "-1e5");
    EXPECT_EQ(check::literalText(object["d"].toObject()[""]), "");
    EXPECT_TRUE(check::isQuoted(object["d"].toObject()[""]));
    EXPECT_FALSE(check::isQuoted(object["d"]));
}

TEST(WrittenConfig, ReadsWhatTheReaderTolerates)
{
    SwJsonValue const root = readAsWritten("{\"a\\\"\\\\\"\v:\f\"x\\\\\",\"l\":[1,\"2\",],\"m\":{\"n\":3,},}");
    EXPECT_EQ(check::literalText(root.toObject()["a\"\\"]), "x\\");
    EXPECT_EQ(root.toObject()["l"].toArray().size(), 2U);
    EXPECT_EQ(check::literalText(root.toObject()["m"].toObject()["n"]), "3");
    EXPECT_TRUE(readAsWritten("{\"a\":").isNull());
    EXPECT_TRUE(readAsWritten("\"").isNull());
    EXPECT_TRUE(readAsWritten("\"\\").isNull());
    EXPECT_TRUE(readAsWritten("").isNull());
}

TEST(WrittenConfig, FindsMembersThatStandMoreThanOnce)
{
    using Places = std::vector<std::string>;
    EXPECT_EQ(check::repeatedMembers(R"({"a":{"b":1,"c":{},"b":2,"\u0062":"b"},"d":[{"b":1},{"b":2}],"b":"a"})"),
              (Places{"a.b", "a.b"}));
    EXPECT_EQ(
        check::repeatedMembers(R"({"overlay":[0,{"formats":{"k":{"decimals":1,"decimals":2,},"k":{}}}],"overlay":[]})"),
        (Places{"overlay[1].formats.k.decimals", "overlay[1].formats.k", "overlay"}));
    EXPECT_EQ(check::repeatedMembers(R"({"a":"b\":","x":"a","l":["a","a",{"{":"}","[":"]"}]})"), Places());
    EXPECT_EQ(check::repeatedMembers(R"([[[[[{"a":1,"a":2}]]]]])"), Places{"[0][0][0][0][0].a"});
    EXPECT_EQ(check::repeatedMembers(R"([[[[[[{"a":1,"a":2}],0,{"a":1,"a":2}]]]]])"), Places{"[0][0][0][0][2].a"})
        << "not the deeper one";
    EXPECT_EQ(check::repeatedMembers("]}\"a\":"), Places()) << "no JSON";
}

TEST(WrittenConfig, LiteralNumbersAreWholeFiniteTexts)
{
    EXPECT_EQ(check::literalNumber(scalar("16")), 16.0);
    EXPECT_EQ(check::literalNumber(scalar("\"16\"")), 16.0);
    EXPECT_EQ(check::literalNumber(scalar("\"0x10\"")), 16.0);
    EXPECT_EQ(check::literalNumber(scalar("\"010\"")), 10.0);
    EXPECT_EQ(check::literalNumber(scalar("\" 5\"")), 5.0);
    EXPECT_EQ(check::literalNumber(scalar("1.5e1")), 15.0);
    for (char const* const text :
         {"\"\"", "\"5 \"", "\"12 m\"", "\"inf\"", "\"nan\"", "true", "null", "{}", "[]", "\"1,5\"", "\"5\\u0000\""}) {
        EXPECT_EQ(check::literalNumber(scalar(text)), std::nullopt) << text;
    }
    EXPECT_EQ(check::literalLongNumber(scalar("\"0xFFFFFFFFFFFFFFFF\"")), 18446744073709551615.0L);
}

TEST(WrittenConfig, TheSameNumberInOtherDigitsMeansTheSame)
{
    EXPECT_TRUE(check::meansTheSame(scalar("1.5"), "1.500000"));
    EXPECT_TRUE(check::meansTheSame(scalar("\"N/A\""), "N/A"));
    EXPECT_TRUE(check::meansTheSame(scalar("\"007\""), "7"));
    EXPECT_FALSE(check::meansTheSame(scalar("\"010\""), "8"));
    EXPECT_FALSE(check::meansTheSame(scalar("0.0000001"), "0.000000"));
    EXPECT_FALSE(check::meansTheSame(scalar("{}"), "{}"));
    EXPECT_FALSE(check::meansTheSame(scalar("\"abc\""), "abd"));
}

TEST(WrittenConfig, ShowsOneLineThatIsNotTooLong)
{
    EXPECT_EQ(check::shown(scalar("12.50")), "12.50");
    EXPECT_EQ(check::shown(scalar("\"12.50\"")), "\"12.50\"");
    EXPECT_EQ(check::shown(scalar("\"a\\nb\\\"\"")), "\"a\\nb\\\"\"");
    EXPECT_EQ(check::shown(scalar("{}")), "an object");
    EXPECT_EQ(check::shown(scalar("[1]")), "an array");
    EXPECT_EQ(check::shown(scalar("\"" + std::string(41, 'x') + "\"")), "\"" + std::string(40, 'x') + "\"...");
    EXPECT_EQ(check::shown(scalar("\"" + std::string(40, 'x') + "\"")), "\"" + std::string(40, 'x') + "\"");
    EXPECT_EQ(check::shown(scalar("\"\xFF\"")), "\"\xEF\xBF\xBD\"");
}

TEST(NumberText, HasTheDigitsThatReadBack)
{
    EXPECT_EQ(sw_text::numberText(1.5), "1.5");
    EXPECT_EQ(sw_text::numberText(600000.0), "600000");
    EXPECT_EQ(sw_text::numberText(1e22), "1e+22");
    EXPECT_EQ(sw_text::numberText(0.1), "0.1");
    EXPECT_EQ(sw_text::numberText(static_cast<double>(0.1F)), "0.10000000149011612");
    EXPECT_EQ(sw_text::numberText(1.0 / 3.0), "0.3333333333333333");
    EXPECT_EQ(sw_text::numberText(-2147483648.0), "-2147483648");
}

}  // namespace
