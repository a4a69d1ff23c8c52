// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Tables of recorded streams read and written, and sections taken from packets and put into them.
#include "media/program_tables.h"

#include "transport_bytes.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using media::Bytes;
using transport_test::bytes;
using transport_test::joined;

TEST(SectionSum, OfAWholeSectionIsNothing)
{
    EXPECT_EQ(media::sectionSum(transport_test::synchronousMap()), 0U);
    EXPECT_EQ(media::sectionSum(transport_test::associationBytes()), 0U);
    EXPECT_EQ(media::sectionSum({}), 0xFFFFFFFFU);
}

TEST(ReadAssociation, GivesProgramsAndTheirMaps)
{
    auto const association = media::readAssociation(transport_test::associationBytes());
    ASSERT_TRUE(association.has_value());
    EXPECT_EQ(association->transportStream, 1);
    EXPECT_EQ(association->version, 0);
    EXPECT_EQ(association->mapPids, (std::map<int, int>{{1, 0x1000}}));
    EXPECT_EQ(media::writeAssociation(*association), transport_test::associationBytes());
}

TEST(ReadProgramMap, GivesStreamsWithTheirDescriptors)
{
    auto const map = media::readProgramMap(transport_test::synchronousMap());
    ASSERT_TRUE(map.has_value());
    EXPECT_EQ(map->program, 1);
    EXPECT_EQ(map->clockPid, 0x100);
    EXPECT_TRUE(map->descriptors.empty());
    ASSERT_EQ(map->streams.size(), 2U);
    EXPECT_EQ(map->streams[0].type, 0x1B);
    EXPECT_EQ(map->streams[0].pid, 0x100);
    EXPECT_EQ(map->streams[1].type, 0x15);
    EXPECT_EQ(map->streams[1].pid, 0x101);
    EXPECT_EQ(map->streams[1].descriptors, transport_test::synchronousDescriptors());
}

TEST(WriteProgramMap, GivesTheBytesThatWereRead)
{
    EXPECT_EQ(media::writeProgramMap(media::readProgramMap(transport_test::plainMap()).value()),
              transport_test::plainMap());
    // Two kinds of telemetry and a registered video.
    Bytes const four = bytes(
        "02 B0 4F 00 01 C1 00 00 E1 00 F0 00 24 E1 00 F0 06 05 04 48 45 56 43 15 E1 01 F0 1C 05 04 4B 4C 56 41 26 09 "
        "01 00 FF 4B 4C 56 41 00 0F 27 09 C0 00 00 C0 00 00 C0 00 00 06 E1 02 F0 06 05 04 4B 4C 56 41 06 E1 03 F0 06 "
        "05 04 4B 4C 56 41 72 58 5A A4");
    EXPECT_EQ(media::writeProgramMap(media::readProgramMap(four).value()), four);
}

TEST(WriteProgramMap, LongerThanASectionIsNone)
{
    media::ProgramMap map;
    map.streams.push_back({0x06, 0x101, Bytes(1003)});
    EXPECT_EQ(media::writeProgramMap(map).size(), 1024U);
    map.streams[0].descriptors.push_back(0);
    EXPECT_TRUE(media::writeProgramMap(map).empty());
}

TEST(ReadProgramMap, RefusesWhatIsDamaged)
{
    Bytes damaged = transport_test::synchronousMap();
    damaged[14] ^= 1U;
    EXPECT_FALSE(media::readProgramMap(damaged)) << "sum";
    Bytes longer = transport_test::plainMap();
    longer[21] = 0x07;  // descriptors run into the sum
    media::setSectionSum(longer);
    EXPECT_FALSE(media::readProgramMap(longer));
    Bytes later = transport_test::plainMap();
    later[5] &= 0xFEU;  // of a program that begins later
    media::setSectionSum(later);
    EXPECT_FALSE(media::readProgramMap(later));
    EXPECT_FALSE(media::readProgramMap(transport_test::associationBytes()));
    EXPECT_FALSE(media::readProgramMap({}));
}

TEST(KeepServices, LeavesOutThoseOfOtherPrograms)
{
    // Services 1 ("A" by "P") and 2 ("B" by "P").
    Bytes section =
        bytes("42 F0 1F 00 01 C1 00 00 FF 01 FF 00 01 FC 80 07 48 05 01 01 50 01 41 00 02 FC 80 07 48 05 01 01 "
              "50 01 42 00 00 00 00");
    section[2] = static_cast<std::uint8_t>(section.size() - 3);
    media::setSectionSum(section);
    ASSERT_TRUE(media::isServices(section));
    EXPECT_EQ(media::keepServices(section, {1, 2}), section);
    Bytes one = bytes("42 F0 18 00 01 C1 00 00 FF 01 FF 00 02 FC 80 07 48 05 01 01 50 01 42 00 00 00 00");
    media::setSectionSum(one);
    EXPECT_EQ(media::keepServices(section, {2}), one);
    EXPECT_TRUE(media::keepServices(section, {3}).empty());
    EXPECT_TRUE(media::keepServices({}, {1}).empty());
}

TEST(NamesFormat, LooksIntoRegistrationAndMetadata)
{
    constexpr std::array<char, 4> kKlv = {'K', 'L', 'V', 'A'};
    EXPECT_TRUE(media::namesFormat(bytes("05 04 4B 4C 56 41"), kKlv));
    EXPECT_TRUE(media::namesFormat(bytes("0A 01 00 26 09 01 00 FF 4B 4C 56 41 00 0F"), kKlv));
    EXPECT_FALSE(media::namesFormat(bytes("0A 04 4B 4C 56 41"), kKlv));
    EXPECT_FALSE(media::namesFormat(bytes("05 04 4B 4C 56"), kKlv)) << "cut off";
    EXPECT_FALSE(media::namesFormat({}, kKlv));
}

TEST(DescriptorsTagged, KeepsTheirOrder)
{
    constexpr std::array<std::uint8_t, 2> kTags = {0x52, 0x0A};
    EXPECT_EQ(media::descriptorsTagged(bytes("0A 01 65 28 02 01 02 52 01 07"), kTags), bytes("0A 01 65 52 01 07"));
}

TEST(PacketsOf, CutsALongSectionAndCountsOn)
{
    Bytes section(300, 7);
    std::uint8_t counter = 15;
    Bytes const packets = media::packetsOf(section, 0x1ABC, counter);
    ASSERT_EQ(packets.size(), 2 * media::kTransportPacket);
    EXPECT_EQ(Bytes(packets.begin(), packets.begin() + 5), bytes("47 5A BC 1F 00"));
    EXPECT_EQ(Bytes(packets.begin() + 188, packets.begin() + 192), bytes("47 1A BC 10"));
    EXPECT_EQ(packets[188 + 4 + 300 - 183 - 1], 7);
    EXPECT_EQ(packets[188 + 4 + 300 - 183], 0xFF);
    EXPECT_EQ(counter, 1);
}

TEST(SectionCollector, PutsTogetherWhatPacketsOfWrites)
{
    media::ProgramMap map;
    map.program = 7;
    map.streams.push_back({0x06, 0x101, Bytes(600)});
    Bytes const section = media::writeProgramMap(map);
    std::uint8_t counter = 0;
    Bytes const packets = media::packetsOf(section, 0x20, counter);
    media::SectionCollector collector;
    std::vector<media::SectionCollector::Section> found;
    for (std::size_t at = 0; at < packets.size(); at += media::kTransportPacket) {
        EXPECT_TRUE(found.empty());
        found = collector.add(std::span(packets).subspan(at, media::kTransportPacket), 1000 + at);
        EXPECT_EQ(collector.openSince(), found.empty() ? std::optional<std::uint64_t>(1000) : std::nullopt);
    }
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].bytes, section);
    EXPECT_EQ(found[0].places[0], 1005U) << "behind header and pointer";
    EXPECT_EQ(found[0].places[183], 1000U + 188 + 4);
}

TEST(SectionCollector, FindsTwoSectionsInOnePacketAndOneThatEndsInTheNext)
{
    Bytes const first = transport_test::associationBytes();
    Bytes const second = transport_test::synchronousMap();
    Bytes const third(second.begin(), second.begin() + 20);
    Bytes const rest(second.begin() + 20, second.end());
    media::SectionCollector collector;
    auto found = collector.add(transport_test::packet(5, joined(Bytes{0}, first, second, third)), 0);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].bytes, first);
    EXPECT_EQ(found[1].bytes, second);
    Bytes const pointer = {static_cast<std::uint8_t>(rest.size())};
    found = collector.add(transport_test::packet(5, joined(pointer, rest, first)), 188);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].bytes, second);
    EXPECT_EQ(found[1].bytes, first);
}

}  // namespace
