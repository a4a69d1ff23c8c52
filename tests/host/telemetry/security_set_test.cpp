// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Security sets: worked bytes, texts of two bytes a character, marking lines, and how long a set holds.
#include "telemetry/security_set.h"

#include "klv_bytes.h"
#include "payload_text.h"
#include "telemetry/telemetry.h"
#include "telemetry/wide_text.h"

#include <gtest/gtest.h>

#include <string>

namespace telemetry {
namespace {

std::string keysText(char const* hex)
{
    auto const keys = readSecuritySet(fromHex(hex));
    return keys.has_value() ? payloadText(*keys) : "damaged";
}

TEST(SecuritySet, WorkedBytes)
{
    struct Row {
        char const* name;
        char const* bytes;
        char const* expected;
    };
    Row const rows[] = {
        {"the level alone", "01 01 01",
         "security_classification='UNCLASSIFIED' security_classification_code=1 security_line='UNCLASSIFIED'"},
        {"the smallest valid set",
         "01 01 01 02 01 0D 03 04 2F 2F 55 53 0C 01 0D 0D 0A 00 55 00 53 00 3B 00 43 00 41 16 02 00 0C",
         "security_classification='UNCLASSIFIED' security_classification_code=1 security_country='//US' "
         "security_country_method=13 security_country_method_text='GENC two letter' "
         "security_line='UNCLASSIFIED' security_object_country='US;CA' security_object_country_method=13 "
         "security_object_country_method_text='GENC two letter' security_version=12"},
        {"empty texts, an old item and one that nobody knows",
         "01 01 01 02 01 01 58 01 01 03 04 2F 2F 43 41 04 00 05 00 06 02 43 41 15 10 00000000000000000000000000000000 "
         "16 02 00 05",
         "security_classification='UNCLASSIFIED' security_classification_code=1 security_country='//CA' "
         "security_country_method=1 security_country_method_text='ISO-3166 two letter' "
         "security_line='//CA UNCLASSIFIED//REL TO CA' security_releasing='CA' security_version=5"},
        {"every text",
         "04 09 53 43 49 2F 53 48 49 2F 2F 05 01 61 07 01 62 08 01 63 09 01 64 0A 08 32 30 35 31 30 35 30 35 0B 01 65 "
         "0E 01 66 17 0A 32 30 32 30 2D 30 34 2D 32 35 18 0A 32 30 32 30 2D 30 34 2D 32 36",
         "security_caveats='a' security_classified_by='b' security_comments='f' "
         "security_country_method_date='2020-04-25' security_declassification_date='20510505' "
         "security_derived_from='c' security_line='UNKNOWN//SCI/SHI//a' security_marking_system='e' "
         "security_object_country_method_date='2020-04-26' security_reason='d' security_sci='SCI/SHI//'"},
        {"the two methods are numbered differently", "02 01 03 0C 01 03",
         "security_country_method=3 security_country_method_text='FIPS 10-4 two letter' security_line='UNKNOWN' "
         "security_object_country_method=3 security_object_country_method_text='ISO-3166 numeric'"},
        {"no such method", "02 01 40 0C 01 40",
         "security_country_method=64 security_line='UNKNOWN' security_object_country_method=64 "
         "security_object_country_method_text='GENC administrative subdivision'"},
        {"method in too many bytes", "02 02 01 02", ""},
        {"level 0 is none", "01 01 00",
         "security_classification='UNKNOWN' security_classification_code=0 security_line='UNKNOWN'"},
        {"level 6 is none", "01 01 06",
         "security_classification='UNKNOWN' security_classification_code=6 security_line='UNKNOWN'"},
        {"the highest level", "01 01 05",
         "security_classification='TOP SECRET' security_classification_code=5 security_line='TOP SECRET'"},
        {"nothing", "", ""},
        {"only what nobody knows", "58 01 01", ""},
        {"an item past the end", "01 01 01 03 05 41", "damaged"},
        {"a tag alone", "01 01 01 03", "damaged"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(keysText(row.bytes), row.expected);
    }
}

TEST(SecuritySet, WideTexts)
{
    struct Row {
        char const* name;
        char const* bytes;
        char const* text;
        char const* written;
    };
    Row const rows[] = {
        {"big-endian", "00 55 00 53", "US", "00 55 00 53"},
        {"ASCII by mistake", "55 53", "US", "00 55 00 53"},
        {"longer ASCII", "55 53 3B 43 41 4E", "US;CAN", "00 55 00 53 00 3B 00 43 00 41 00 4E"},
        {"odd number", "55 53 41", "USA", "00 55 00 53 00 41"},
        {"a mark", "FE FF 00 55", "U", "00 55"},
        {"a mark of the other order", "FF FE 55 00", "U", "00 55"},
        {"only a mark", "FE FF", "", ""},
        {"beyond ASCII", "00 C9 56 FD", "\xC3\x89\xE5\x9B\xBD", "00 C9 56 FD"},
        {"looks like ASCII but for the mark", "FE FF 55 53", "\xE5\x95\x93", "FE FF 55 53"},
        {"two marks", "FE FF FE FF", "\xEF\xBB\xBF", "FE FF FE FF"},
        {"a pair", "D8 3D DE 00", "\xF0\x9F\x98\x80", "D8 3D DE 00"},
        {"halves", "DE 00 D8 3D", "\xEF\xBF\xBD\xEF\xBF\xBD", "FF FD FF FD"},
        {"a half before a letter", "D8 3D 00 55", "\xEF\xBF\xBDU", "FF FD 00 55"},
        {"nothing", "", "", ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(readWideText(fromHex(row.bytes)), row.text);
        EXPECT_EQ(writeWideText(row.text), fromHex(row.written));
    }
}

TEST(SecuritySet, MarkingLines)
{
    struct Row {
        char const* name;
        SwJsonObject keys;
        char const* line;
    };
    Row const rows[] = {
        {"nothing known", {}, "UNKNOWN"},
        {"release only",
         {{"security_classification", "SECRET"}, {"security_releasing", "USA GBR"}},
         "SECRET//REL TO USA, GBR"},
        {"release as others write it",
         {{"security_classification", "SECRET"}, {"security_releasing", " USA;GBR,CAN "}},
         "SECRET//REL TO USA, GBR, CAN"},
        {"release written out",
         {{"security_classification", "SECRET"}, {"security_releasing", "REL TO USA, CAN"}},
         "SECRET//REL TO USA, CAN"},
        {"a country that begins like it",
         {{"security_classification", "SECRET"}, {"security_releasing", "RELX"}},
         "SECRET//REL TO RELX"},
        {"American", {{"security_classification", "UNCLASSIFIED"}, {"security_country", "//USA"}}, "UNCLASSIFIED"},
        {"American by number", {{"security_classification", "SECRET"}, {"security_country", "//840"}}, "SECRET"},
        {"of another country",
         {{"security_classification", "RESTRICTED"}, {"security_country", "//AUS"}},
         "//AUS RESTRICTED"},
        {"country without slashes",
         {{"security_classification", "RESTRICTED"}, {"security_country", "AUS"}},
         "//AUS RESTRICTED"},
        {"all groups",
         {{"security_classification", "TOP SECRET"},
          {"security_country", "//US"},
          {"security_sci", "AA/BB//"},
          {"security_caveats", "CC"},
          {"security_releasing", "USA"}},
         "TOP SECRET//AA/BB//CC//REL TO USA"},
        {"slashes that stand for nothing", {{"security_classification", "SECRET"}, {"security_sci", "//"}}, "SECRET"},
        {"blanks that stand for nothing",
         {{"security_classification", "SECRET"}, {"security_caveats", "  "}, {"security_releasing", " "}},
         "SECRET"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(markingLine(row.keys), row.line);
    }
}

TEST(SecuritySet, ComesBackFromItsKeys)
{
    for (char const* const hex :
         {"01 01 04 02 01 10 03 04 2F 2F 55 53 0C 01 40 0D 0A 00 55 00 53 00 3B 00 43 00 41 16 02 00 0C",
          "01 01 09 0D 04 FE FF 55 53", "04 02 2F 2F 0A 01 FF"}) {
        SCOPED_TRACE(hex);
        auto const keys = readSecuritySet(fromHex(hex));
        ASSERT_TRUE(keys.has_value());
        auto const back = readSecuritySet(writeSecuritySet(*keys));
        ASSERT_TRUE(back.has_value());
        EXPECT_EQ(payloadText(*back), payloadText(*keys));
    }
    EXPECT_TRUE(writeSecuritySet({{"heading_deg", 1.5}}).empty());
}

/// A security set of one level under its own universal key.
Bytes aloneSet(std::uint8_t level)
{
    return join(Bytes(kSt0102Key.begin(), kSt0102Key.end()), {3, 1, 1, level});
}

/// "level line" of every packet of one unit.
std::string levels(KlvDecoder& decoder, Bytes const& unit)
{
    std::string text;
    for (Packet const& packet : decoder.decode(unit, 1.5)) {
        EXPECT_EQ(packet.timeSeconds, 1.5);
        text += (text.empty() ? "" : " ") + std::string(packet.payload.contains("klv_version") ? "packet:" : "set:") +
                packet.payload["security_line"].stringRef();
    }
    return text;
}

TEST(SecuritySet, HoldsUntilTheNextOne)
{
    Bytes const bare = packetOf(fromHex("41 01 11"));
    Bytes const secret = packetOf(fromHex("30 03 01 01 04 41 01 11"));
    Bytes const empty = packetOf(fromHex("30 00 41 01 11"));
    KlvDecoder decoder;
    EXPECT_EQ(levels(decoder, bare), "packet:");
    EXPECT_EQ(levels(decoder, secret), "packet:SECRET");
    EXPECT_EQ(levels(decoder, bare), "packet:SECRET") << "senders need not repeat it";
    EXPECT_EQ(levels(decoder, empty), "packet:SECRET");
    EXPECT_EQ(levels(decoder, aloneSet(5)), "") << "it must not hide the packet before it";
    EXPECT_EQ(levels(decoder, bare), "packet:TOP SECRET");
    EXPECT_EQ(levels(decoder, join(join(aloneSet(3), bare), secret)), "packet:CONFIDENTIAL packet:SECRET");
    EXPECT_EQ(decoder.counts().packets, 7U);
    EXPECT_EQ(decoder.counts().foreignKeys, 0U);
}

TEST(SecuritySet, AloneInItsStreamIsAPacket)
{
    KlvDecoder decoder;
    EXPECT_EQ(levels(decoder, aloneSet(1)), "set:UNCLASSIFIED");
    EXPECT_EQ(levels(decoder, aloneSet(4)), "set:SECRET");
    EXPECT_EQ(levels(decoder, packetOf(fromHex("41 01 11"))), "packet:SECRET");
    EXPECT_EQ(decoder.counts().packets, 3U);
}

TEST(SecuritySet, ASetTakesThePlaceOfTheOneBeforeWholly)
{
    KlvDecoder decoder;
    levels(decoder, packetOf(fromHex("30 07 01 01 04 06 02 55 53 41 01 11")));
    EXPECT_EQ(levels(decoder, packetOf(fromHex("30 03 01 01 04 41 01 11"))), "packet:SECRET");
}

TEST(SecuritySet, IsReadOnlyForThoseWhoWantIt)
{
    Bytes const packet = packetOf(fromHex("30 03 01 01 04 41 01 11"));
    Bytes const onlySet = packetOf(fromHex("30 03 01 01 04"));
    Bytes const nothing = packetOf(fromHex("41 00"));
    KlvDecoder others(KeySelection::namedIn(R"({"overlay":[{"formatString":"%klv_version"}]})"));
    KlvDecoder line(KeySelection::namedIn(R"({"overlay":[{"formatString":"%security_line"}]})"));
    KlvDecoder level(KeySelection::namedIn(R"({"overlay":[{"formatString":"%{security_classification}"}]})"));
    EXPECT_EQ(payloadText(others.decode(packet, 0.0).at(0).payload), "klv_version=17");
    EXPECT_EQ(levels(line, packet), "packet:SECRET");
    EXPECT_EQ(level.decode(packet, 0.0).at(0).payload["security_classification"].stringRef(), "SECRET");
    for (KlvDecoder* const decoder : {&others, &line, &level}) {
        EXPECT_TRUE(decoder->decode(nothing, 0.0).at(0).payload.empty()) << "what was before does not fill it";
        EXPECT_FALSE(decoder->decode(onlySet, 0.0).at(0).payload.empty());
    }
}

// The marking before a damaged set stayed, which may have been lower.
TEST(SecuritySet, OneThatCannotBeReadEndsTheMarkingBefore)
{
    KlvDecoder decoder;
    EXPECT_EQ(levels(decoder, packetOf(fromHex("30 03 01 01 01 41 01 11"))), "packet:UNCLASSIFIED");
    SwJsonObject const payload = decoder.decode(packetOf(fromHex("30 03 01 05 04 41 01 11")), 0.0).at(0).payload;
    EXPECT_EQ(payload["security_classification"].stringRef(), "UNKNOWN");
    EXPECT_EQ(payload["security_line"].stringRef(), "UNKNOWN");
    EXPECT_EQ(levels(decoder, packetOf(fromHex("41 01 11"))), "packet:UNKNOWN") << "until the next set";
    EXPECT_EQ(levels(decoder, packetOf(fromHex("30 03 01 01 04 41 01 11"))), "packet:SECRET");
}

TEST(SecuritySet, DamagedOnesAreCounted)
{
    KlvDecoder decoder;
    EXPECT_EQ(levels(decoder, packetOf(fromHex("30 03 01 05 04 41 01 11"))), "packet:UNKNOWN");
    EXPECT_EQ(decoder.counts().damagedSets, 1U);
    EXPECT_EQ(decoder.counts().truncated, 0U);
    Bytes damaged = aloneSet(4);
    damaged[18] = 9;
    EXPECT_EQ(levels(decoder, damaged), "");
    Bytes cut = aloneSet(4);
    cut[16] = 0x7F;
    EXPECT_EQ(levels(decoder, join(cut, packetOf(fromHex("41 01 11")))), "packet:UNKNOWN")
        << "its length swallows nothing";
    EXPECT_EQ(decoder.counts().truncated, 2U);
    EXPECT_EQ(decoder.counts().packets, 2U);
}

}  // namespace
}  // namespace telemetry
