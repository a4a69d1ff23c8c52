// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Which keys a configuration can name, and what is made of packets when only these are wanted.
#include "telemetry/key_selection.h"
#include "telemetry/st0601_table.h"
#include "telemetry/telemetry.h"

#include "klv_bytes.h"
#include "payload_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace telemetry {
namespace {

TEST(KeySelection, WantsWhatAConfigurationNames)
{
    struct Row {
        char const* name;
        char const* config;
        bool heading;  ///< whether heading_deg is wanted
        bool pitch;    ///< whether pitch_deg is wanted
    };
    Row const rows[] = {
        {"placeholder", R"({"overlay":[{"formatString":"HDG %heading_deg."}]})", true, false},
        {"placeholder in braces", R"({"overlay":[{"formatString":"%{heading_deg}"}]})", true, false},
        {"several", R"({"overlay":[{"formatString":"%heading_deg"},{"formatString":"%pitch_deg"}]})", true, true},
        {"condition", R"({"overlay":[{"formatString":"x","condition":{"key":"heading_deg"}}]})", true, false},
        {"member name", R"({"overlay":[{"formatString":"x","formats":{"heading_deg":{}}}]})", true, false},
        {"escaped letters", R"({"overlay":[{"formatString":"%\u0068eading\u005fdeg"}]})", true, false},
        {"inside a longer name", R"({"overlay":[{"formatString":"%platform_pitch_deg"}]})", false, true},
        {"text that is no placeholder", R"({"overlay":[{"formatString":"heading_deg"}]})", true, false},
        {"deep in what nobody reads", R"({"overlay":[{"formatString":"x"}],"a":[[{"b":["pitch_deg"]}]]})", false, true},
        {"nothing", R"({"overlay":[{"formatString":"x"}]})", false, false},
        {"name in two pieces", R"({"overlay":[{"formatString":"heading"},{"formatString":"_deg"}]})", false, false},
        {"empty template lists all", R"({"overlay":[{"formatString":"x"},{"formatString":""}]})", true, true},
        {"missing template lists all", R"({"overlay":[{}]})", true, true},
        {"template that is a number lists all", R"({"overlay":[{"formatString":"12"}]})", true, true},
        {"template of another kind lists all", R"({"overlay":[{"formatString":["x"]}]})", true, true},
        {"no block", R"({"overlay":[]})", false, false},
        {"blocks that are none", R"({"overlay":[1,"",[],null]})", false, false},
        {"no blocks at all", "{}", false, false},
        {"root is no object", "[{}]", false, false},
        {"unreadable", R"({"overlay":[{"formatString":"%heading_deg")", false, false},
        {"empty", "", false, false},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        KeySelection const keys = KeySelection::namedIn(row.config);
        EXPECT_EQ(keys.wants("heading_deg"), row.heading);
        EXPECT_EQ(keys.wants("pitch_deg"), row.pitch);
    }
    EXPECT_TRUE(KeySelection().wants("heading_deg"));
}

KeySelection wanting(std::string const& key)
{
    return KeySelection::namedIn(R"({"overlay":[{"formatString":"%{)" + key + R"(}"}]})");
}

std::string decodeText(KlvDecoder&& decoder, Bytes const& items)
{
    auto const packets = decoder.decode(packetOf(items), std::nullopt);
    return packets.size() == 1 ? payloadText(packets[0].payload) : "no packet";
}

TEST(KlvDecoder, MakesTheWantedKeysElseOne)
{
    struct Row {
        char const* name;
        char const* wanted;
        char const* items;
        char const* expected;
    };
    Row const rows[] = {
        {"the first key stands for a packet", "mission_id", "41 01 11 7B 01 07", "klv_version=17"},
        {"it is the first usable one", "mission_id", "41 00 7B 01 07 7C 01 03", "nav_sat_count=7"},
        {"no key at all", "mission_id", "41 00", ""},
        {"wanted key behind it", "nav_sat_count", "41 01 11 7C 01 03 7B 01 07", "nav_sat_count=7"},
        {"second key of the heading", "yaw_deg", "41 01 11 05 02 00 00", "yaw_deg=0d"},
        {"flag of the flags, which it is made of", "laser_range_enabled", "41 01 11 2F 01 31",
         "generic_flags=49 laser_range_enabled=true"},
        {"full pitch before the short one", "pitch_deg", "41 01 11 06 02 7F FF 5A 04 7F FF FF FF", "pitch_deg=90d"},
        {"short pitch beside the full one", "platform_pitch_deg", "41 01 11 06 02 7F FF 5A 04 7F FF FF FF",
         "pitch_deg=90d platform_pitch_deg=20d"},
        {"short roll beside the full one", "platform_roll_deg", "41 01 11 07 02 7F FF 5B 04 7F FF FF FF",
         "platform_roll_deg=50d roll_deg=90d"},
        {"short pitch alone", "pitch_deg", "41 01 11 06 02 7F FF", "pitch_deg=20d"},
        {"only a short pitch that nobody wants", "klv_version", "06 02 7F FF", "pitch_deg=20d"},
        {"cut item that nobody wants", "klv_version", "41 01 11 05 09", "no packet"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(decodeText(KlvDecoder(wanting(row.wanted)), fromHex(row.items)), row.expected);
    }
}

/// Items of all kinds in any order, some twice, some without a usable value.
Bytes randomItems(std::mt19937& random)
{
    Bytes items;
    std::size_t const wanted = random() % 110;
    while (items.size() < wanted) {
        TableRow const& row = st0601Table()[random() % st0601Table().size()];
        bool const oneByteTag = row.tag < 128;
        std::size_t const length = random() % 8 == 0 ? random() % 5 : std::max(row.width, 1U);
        items = join(items, oneByteTag ? Bytes{static_cast<std::uint8_t>(row.tag)}
                                       : Bytes{0x81, static_cast<std::uint8_t>(row.tag & 0x7FU)});
        items.push_back(static_cast<std::uint8_t>(length));
        for (std::size_t i = 0; i < length; ++i) {
            items.push_back(static_cast<std::uint8_t>(random()));
        }
    }
    return items;
}

/// Every key that the table or the mapping gives.
std::vector<std::string> allKeys()
{
    std::vector<std::string> keys = {std::string(kYawKey), std::string(kLaserKey), std::string(kShortPitchKey),
                                     std::string(kShortRollKey)};
    for (TableRow const& row : st0601Table()) {
        keys.emplace_back(row.key);
    }
    return keys;
}

TEST(KlvDecoder, WantedKeysAreThoseOfAllKeys)
{
    std::mt19937 random(20);
    std::vector<std::string> const keys = allKeys();
    KlvDecoder whole;
    KlvDecoder part;
    KeySelection wanted;
    for (int round = 0; round < 20000; ++round) {
        // Decoders live on over a few packets, cut ones among them.
        if (round % 8 == 0) {
            wanted = wanting(keys[random() % keys.size()] + "} %{" + keys[random() % keys.size()]);
            part = KlvDecoder(wanted);
        }
        Bytes items = randomItems(random);
        items.resize(items.size() - (random() % 4 == 0 ? std::min<std::size_t>(items.size(), 1) : 0));
        Bytes const packet = packetOf(items);
        auto const all = whole.decode(packet, 1.0);
        KlvDecoder fresh;
        auto const again = fresh.decode(packet, 1.0);
        ASSERT_EQ(all.size(), again.size()) << round;
        auto const some = part.decode(packet, 1.0);
        ASSERT_EQ(all.size(), some.size()) << round;
        if (all.empty()) {
            continue;
        }
        ASSERT_EQ(payloadText(all[0].payload), payloadText(again[0].payload)) << round;
        ASSERT_EQ(all[0].payload.empty(), some[0].payload.empty()) << round;
        for (std::string const& key : keys) {
            if (wanted.wants(key)) {
                ASSERT_EQ(valueText(all[0].payload[key]), valueText(some[0].payload[key])) << round << " " << key;
            }
        }
    }
}

}  // namespace
}  // namespace telemetry
