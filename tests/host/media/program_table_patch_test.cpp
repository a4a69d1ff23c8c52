// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A muxer's tables with the identity of the input's.
#include "media/program_table_patch.h"

#include "transport_bytes.h"

#include <gtest/gtest.h>

namespace {

using media::Bytes;
using transport_test::bytes;
using transport_test::joined;
using transport_test::packet;

/// Stream 0x1234: program 1 has its map on 0x30, with a descriptor of its own; video 0x100, KLV 0x101.
media::TransportTables sourceTables()
{
    media::TransportTables tables;
    tables.association = media::ProgramAssociation{0x1234, 3, {{1, 0x30}}};
    media::ProgramMap map = media::readProgramMap(transport_test::synchronousMap()).value();
    map.version = 9;
    map.descriptors = bytes("25 02 01 00");
    map.streams[0].descriptors = bytes("28 04 42 C0 1E 3F 52 01 07");
    tables.maps[1] = map;
    return tables;
}

Bytes sectionPacket(Bytes const& table, int pid)
{
    return packet(pid, joined(Bytes{0}, table));
}

/// The first section in the packets of a PID.
Bytes sectionOf(Bytes const& packets, int pid)
{
    media::SectionCollector collector;
    for (std::size_t at = 0; at < packets.size(); at += media::kTransportPacket) {
        auto const one = std::span(packets).subspan(at, media::kTransportPacket);
        if (media::viewOf(one).pid == pid) {
            for (auto const& section : collector.add(one, 0)) {
                return section.bytes;
            }
        }
    }
    return {};
}

TEST(ProgramTablePatch, GivesTablesTheInputsIdentity)
{
    media::ProgramTablePatch patch({sourceTables(), {1}, {0x101}, {}});
    Bytes const video = packet(0x100, Bytes(100, 1));
    Bytes const out = patch.pass(joined(sectionPacket(transport_test::associationBytes(), 0),
                                        sectionPacket(transport_test::plainMap(), 0x1000), video));
    ASSERT_EQ(out.size(), 3 * media::kTransportPacket);
    EXPECT_EQ(Bytes(out.end() - 188, out.end()), video);

    auto const association = media::readAssociation(sectionOf(out, 0)).value();
    EXPECT_EQ(association.transportStream, 0x1234);
    EXPECT_EQ(association.version, 3);
    EXPECT_EQ(association.mapPids, (std::map<int, int>{{1, 0x30}}));

    auto const map = media::readProgramMap(sectionOf(out, 0x30)).value();
    EXPECT_EQ(map.version, 9);
    EXPECT_EQ(map.clockPid, 0x100);
    EXPECT_EQ(map.descriptors, bytes("25 02 01 00"));
    EXPECT_EQ(map.streams.at(0).type, 0x1B);
    EXPECT_EQ(map.streams.at(0).descriptors, bytes("52 01 07")) << "not how the old pictures were coded";
    EXPECT_EQ(map.streams.at(1).type, 0x15);
    EXPECT_EQ(map.streams.at(1).descriptors, transport_test::synchronousDescriptors());
}

TEST(ProgramTablePatch, TakesPiecesOfAnyLength)
{
    Bytes const in = joined(sectionPacket(transport_test::associationBytes(), 0),
                            sectionPacket(transport_test::plainMap(), 0x1000), packet(0x100, Bytes(100, 1)));
    Bytes const whole = media::ProgramTablePatch({sourceTables(), {1}, {0x101}, {}}).pass(in);
    media::ProgramTablePatch patch({sourceTables(), {1}, {0x101}, {}});
    Bytes pieces;
    for (std::uint8_t const byte : in) {
        pieces = joined(pieces, patch.pass(Bytes{byte}));
    }
    EXPECT_EQ(pieces, whole);
}

TEST(ProgramTablePatch, WritesALongMapIntoMorePacketsAndCountsOn)
{
    media::TransportTables tables = sourceTables();
    tables.maps[1].descriptors = joined(bytes("25 C8"), Bytes(200, 1));
    media::ProgramTablePatch patch({tables, {1}, {0x101}, {}});
    Bytes const in =
        joined(sectionPacket(transport_test::associationBytes(), 0), sectionPacket(transport_test::plainMap(), 0x1000));
    Bytes const once = patch.pass(in);
    Bytes const out = joined(once, patch.pass(in));
    ASSERT_EQ(out.size(), 6 * media::kTransportPacket);
    EXPECT_EQ(media::readProgramMap(sectionOf(out, 0x30)).value().descriptors, tables.maps[1].descriptors);
    for (std::size_t const number : {1U, 2U, 4U, 5U}) {
        EXPECT_EQ(out[number * 188 + 3], 0x10 + (number < 3 ? number - 1 : number - 2)) << number;
    }
}

TEST(ProgramTablePatch, DescribesServicesAsTheInputDid)
{
    Bytes service = bytes("42 F0 18 00 01 C1 00 00 FF 01 FF 00 01 FC 80 07 48 05 01 01 50 01 42 00 00 00 00");
    media::setSectionSum(service);
    Bytes const in = joined(sectionPacket(transport_test::associationBytes(), 0), sectionPacket(service, 0x11));
    EXPECT_EQ(media::ProgramTablePatch({sourceTables(), {1}, {}, {}}).pass(in).size(), media::kTransportPacket)
        << "it did not";
    media::TransportTables tables = sourceTables();
    tables.services = service;
    tables.services[22] = 'X';
    media::setSectionSum(tables.services);
    EXPECT_EQ(sectionOf(media::ProgramTablePatch({tables, {1}, {}, {}}).pass(in), 0x11), tables.services);
}

TEST(ProgramTablePatch, SetsUnitIds)
{
    media::ProgramTablePatch patch({sourceTables(), {1}, {}, {{0x101, 0xBD}}});
    Bytes const unit = bytes("00 00 01 FC 00 05 84 80 00 11 22");
    Bytes changed = unit;
    changed[3] = 0xBD;
    EXPECT_EQ(patch.pass(packet(0x101, unit)), packet(0x101, changed));
    EXPECT_EQ(patch.pass(packet(0x101, unit, false)), packet(0x101, unit, false)) << "no unit begins here";
    EXPECT_EQ(patch.pass(packet(0x102, unit)), packet(0x102, unit)) << "another stream";
}

TEST(ProgramTablePatch, LearnsServicesAndUnitIdsOnTheWay)
{
    Bytes service = bytes("42 F0 18 00 01 C1 00 00 FF 01 FF 00 01 FC 80 07 48 05 01 01 50 01 42 00 00 00 00");
    media::setSectionSum(service);
    Bytes later = service;
    later[22] = 'X';
    media::setSectionSum(later);
    media::ProgramTablePatch patch({sourceTables(), {1}, {}, {}});
    EXPECT_EQ(patch.pass(sectionPacket(service, 0x11)), Bytes()) << "none was sent yet";
    patch.learnServices(service);
    patch.learnServices(later);
    EXPECT_EQ(sectionOf(patch.pass(sectionPacket(service, 0x11)), 0x11), service) << "the first one stays";
    Bytes const unit = bytes("00 00 01 FC 00 05 84 80 00 11 22");
    EXPECT_EQ(patch.pass(packet(0x101, unit)), packet(0x101, unit));
    patch.learnUnitId(0x101, 0xBD);
    patch.learnUnitId(0x101, 0xC0);
    Bytes changed = unit;
    changed[3] = 0xBD;
    EXPECT_EQ(patch.pass(packet(0x101, unit)), packet(0x101, changed)) << "the first one stays";
}

TEST(ProgramTablePatch, LeavesTablesThatItCannotReadAsTheyAre)
{
    Bytes damaged = transport_test::plainMap();
    damaged.back() ^= 1U;
    media::ProgramTablePatch patch({sourceTables(), {1}, {0x101}, {}});
    Bytes const out =
        patch.pass(joined(sectionPacket(transport_test::associationBytes(), 0), sectionPacket(damaged, 0x1000)));
    EXPECT_EQ(sectionOf(out, 0x30), damaged);
}

}  // namespace
