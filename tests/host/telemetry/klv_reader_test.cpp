// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Framing: BER lengths, BER-OID tags, universal keys, resynchronisation, checksum.
#include "telemetry/klv_reader.h"

#include "klv_bytes.h"

#include <gtest/gtest.h>

#include <string>

namespace telemetry {
namespace {

Bytes const kForeignKey = fromHex("060E2B34 02010101 0E010102 01010000");

Bytes const kSecurityKey = fromHex("060E2B34 02030101 0E010303 02000000");

/// What a unit holds as text: "St0601(3)" is a packet with 3 bytes of value.
std::string describe(Bytes const& unit)
{
    std::string text;
    KlvReader reader(unit);
    while (auto const packet = reader.next()) {
        text += text.empty() ? "" : " ";
        switch (packet->kind) {
        case KlvKind::St0601:
            text += "St0601(" + std::to_string(packet->bytes.size() - packet->valueOffset) + ")";
            break;
        case KlvKind::Security:
            text += "Security(" + std::to_string(packet->bytes.size() - packet->valueOffset) + ")";
            break;
        case KlvKind::Foreign:
            text += "Foreign";
            break;
        case KlvKind::Truncated:
            text += "Truncated";
            break;
        }
    }
    return text;
}

/// The items of a packet as text: "5:2@19" is tag 5 with 2 bytes of data from byte 19 of the packet on.
std::string describeItems(Bytes const& packetBytes)
{
    KlvReader reader(packetBytes);
    auto const packet = reader.next();
    if (!packet.has_value()) {
        return "no packet";
    }
    std::string text;
    KlvItemReader items(*packet);
    while (auto const item = items.next()) {
        text += text.empty() ? "" : " ";
        text += std::to_string(item->tag) + ":" + std::to_string(item->data.size()) + "@" +
                std::to_string(item->dataOffset);
    }
    return text + (items.damaged() ? " damaged" : "");
}

struct LengthRow {
    char const* name;
    char const* hex;
    std::optional<std::uint64_t> length;
    std::size_t behind;
};

TEST(BerLength, Rows)
{
    LengthRow const rows[] = {
        {"short zero", "00", 0, 1},
        {"short largest", "7F", 127, 1},
        {"indefinite form", "80", std::nullopt, 1},
        {"one byte", "81 80", 128, 2},
        {"one byte, not minimal", "81 0F", 15, 2},
        {"two bytes, not minimal", "82 01 0F", 271, 3},
        {"two bytes, leading zero", "82 00 90", 144, 3},
        {"two bytes, not needed at all", "82 00 0F", 15, 3},
        {"four bytes", "84 00 01 00 00", 65536, 5},
        {"eight bytes", "88 FF FF FF FF FF FF FF FF", 0xFFFFFFFFFFFFFFFFU, 9},
        {"ten bytes of which two are zero", "8A 00 00 00 00 00 00 00 00 00 07", 7, 11},
        {"nine bytes that count", "89 01 00 00 00 00 00 00 00 00", std::nullopt, 9},
        {"cut off", "82 01", std::nullopt, 1},
        {"nothing", "", std::nullopt, 0},
    };
    for (LengthRow const& row : rows) {
        SCOPED_TRACE(row.name);
        std::size_t position = 0;
        EXPECT_EQ(readBerLength(fromHex(row.hex), position), row.length);
        EXPECT_EQ(position, row.behind);
    }
}

struct TagRow {
    char const* name;
    char const* hex;
    std::optional<std::uint32_t> tag;
    std::size_t behind;
};

TEST(BerOid, Rows)
{
    TagRow const rows[] = {
        {"one byte", "41", 65, 1},
        {"largest of one byte", "7F", 127, 1},
        {"smallest of two bytes", "81 00", 128, 2},
        {"130", "81 02", 130, 2},
        {"142", "81 0E", 142, 2},
        {"three bytes", "81 80 00", 16384, 3},
        {"leading zero group", "80 05", 5, 2},
        {"largest of 32 bits but one", "8F FF FF FF 7E", 0xFFFFFFFEU, 5},
        {"too large", "9F FF FF FF 7F", 0xFFFFFFFFU, 5},
        {"much too large", "FF FF FF FF FF FF FF FF 01", 0xFFFFFFFFU, 9},
        {"cut off", "81", std::nullopt, 1},
        {"nothing", "", std::nullopt, 0},
    };
    for (TagRow const& row : rows) {
        SCOPED_TRACE(row.name);
        std::size_t position = 0;
        EXPECT_EQ(readBerOid(fromHex(row.hex), position), row.tag);
        EXPECT_EQ(position, row.behind);
    }
}

TEST(KlvChecksum, Rows)
{
    struct Row {
        char const* name;
        char const* hex;
        std::uint16_t sum;
    };
    Row const rows[] = {
        {"nothing", "", 0},
        {"a left-over byte counts high", "12", 0x1200},
        {"one pair", "12 34", 0x1234},
        {"two pairs", "12 34 00 01", 0x1235},
        {"carry out of the low half", "00 FF 00 01", 0x0100},
        {"wraps at 65536", "FF FF 00 02", 0x0001},
        {"odd number of bytes", "01 02 FF", 0x0002},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(klvChecksum(fromHex(row.hex)), row.sum);
    }
}

TEST(KlvReader, UnitsOfAllShapes)
{
    Bytes const packet = packetOf(fromHex("08 01 93"));
    Bytes const foreign = join(kForeignKey, fromHex("03 AA BB CC"));
    struct Row {
        char const* name;
        Bytes unit;
        char const* expected;
    };
    Row const rows[] = {
        {"nothing", {}, ""},
        {"one packet", packet, "St0601(3)"},
        {"packet without items", join(key(), {0}), "St0601(0)"},
        {"two packets", join(packet, packet), "St0601(3) St0601(3)"},
        {"bytes before the key", join(fromHex("00 00 01 BD 06 0E 2B"), packet), "St0601(3)"},
        {"bytes between and behind", join(join(packet, fromHex("01 02 03")), join(packet, fromHex("06 0E 2B 34"))),
         "St0601(3) St0601(3)"},
        {"access unit header", join(fromHex("00 00 DF 00 14"), packet), "St0601(3)"},
        {"non-minimal length", join(key(), fromHex("82 00 03 08 01 93")), "St0601(3)"},
        {"long form of one byte", join(key(), fromHex("81 03 08 01 93")), "St0601(3)"},
        {"foreign key, then a packet", join(foreign, packet), "Foreign St0601(3)"},
        {"security set, then a packet", join(join(kSecurityKey, fromHex("03 01 01 01")), packet),
         "Security(3) St0601(3)"},
        {"security set that runs past the end", join(join(kSecurityKey, {0x7F}), packet), "Truncated St0601(3)"},
        {"key of another set of the same kind",
         join(fromHex("060E2B34 02030101 0E010303 03000000"), fromHex("03 01 01 01")), "Foreign"},
        {"foreign key only", foreign, "Foreign"},
        {"foreign key around an ST 0601 key is skipped by its outer length", join(join(kForeignKey, {20}), packet),
         "Foreign"},
        {"foreign key that runs past the end hides nothing", join(join(kForeignKey, {0x7F}), join(foreign, packet)),
         "Foreign St0601(3)"},
        {"last byte of the key differs", join(join(fromHex("060E2B34020B01010E01030101000001"), {0}), packet),
         "Foreign St0601(3)"},
        {"one byte short", Bytes(packet.begin(), packet.end() - 1), "Truncated"},
        {"key without length", key(), "Truncated"},
        {"indefinite length", join(key(), fromHex("80 08 01 93 00 00")), "Truncated"},
        {"length of 64 bits", join(key(), fromHex("88 FF FF FF FF FF FF FF FF 08 01 93")), "Truncated"},
        {"too long a length hides no later packet", join(join(key(), {0x7F}), packet), "Truncated St0601(3)"},
        {"key of 15 bytes", Bytes(packet.begin(), packet.begin() + 15), ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(describe(row.unit), row.expected);
    }
}

TEST(KlvItemReader, ItemsOfAllShapes)
{
    struct Row {
        char const* name;
        Bytes packet;
        char const* expected;
    };
    Row const rows[] = {
        {"no item", packetOf({}), ""},
        {"two items", packetOf(fromHex("05 02 71 C2 41 01 11")), "5:2@19 65:1@23"},
        {"two-byte tag", packetOf(fromHex("81 06 02 37 00")), "134:2@20"},
        {"no value", packetOf(fromHex("0B 00 41 01 11")), "11:0@19 65:1@21"},
        {"long form of an item's length", packetOf(fromHex("05 81 02 71 C2")), "5:2@20"},
        {"leading zeros of an item's length", packetOf(fromHex("05 82 00 02 71 C2")), "5:2@21"},
        {"item that runs past the packet", packetOf(fromHex("41 01 11 05 03 71 C2")), "65:1@19 damaged"},
        {"tag without length", packetOf(fromHex("41 01 11 05")), "65:1@19 damaged"},
        {"cut-off tag", packetOf(fromHex("41 01 11 81")), "65:1@19 damaged"},
        {"length beyond the packet although the unit goes on",
         join(packetOf(fromHex("05 05 71")), fromHex("0000000000")), " damaged"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(describeItems(row.packet), row.expected);
    }
}

TEST(KlvItemReader, StaysAtTheEndAfterDamage)
{
    Bytes const bytes = packetOf(fromHex("05 03 71 C2"));
    KlvReader reader(bytes);
    KlvItemReader items(*reader.next());
    EXPECT_FALSE(items.next().has_value());
    EXPECT_FALSE(items.next().has_value());
    EXPECT_TRUE(items.damaged());
}

}  // namespace
}  // namespace telemetry
