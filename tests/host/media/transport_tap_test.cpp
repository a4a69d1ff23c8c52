// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the tap learns of a stream, and which bytes it changes: the types of synchronous telemetry, nothing else.
#include "media/transport_tap.h"

#include "transport_bytes.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using media::Bytes;
using transport_test::bytes;
using transport_test::joined;

Bytes section(Bytes const& table)
{
    return joined(Bytes{0}, table);
}

/// Association, map and some video, so often.
Bytes stream(Bytes const& map, int times = 3)
{
    Bytes all;
    for (int number = 0; number < times; ++number) {
        all = joined(all, transport_test::packet(0, section(transport_test::associationBytes())),
                     transport_test::packet(0x1000, section(map)),
                     transport_test::packet(0x100, Bytes(100, static_cast<std::uint8_t>(number))));
    }
    return all;
}

/// What comes out when `piece` bytes come in at a time.
Bytes through(media::TransportTap& tap, Bytes const& in, std::size_t piece)
{
    Bytes out;
    Bytes some(777);
    auto const takeAll = [&] {
        while (std::size_t const got = tap.take(some)) {
            out.insert(out.end(), some.begin(), some.begin() + static_cast<std::ptrdiff_t>(got));
        }
    };
    for (std::size_t at = 0; at < in.size(); at += piece) {
        tap.push(std::span(in).subspan(at, std::min(piece, in.size() - at)));
        takeAll();
    }
    tap.end();
    takeAll();
    return out;
}

/// The recorded map with its type as FFmpeg has to see it; the reserved bits of the video's PID stay as they are.
Bytes shownMap()
{
    Bytes map = transport_test::synchronousMap();
    map[17] = 0x06;
    media::setSectionSum(map);
    return map;
}

TEST(TransportTap, ShowsSynchronousTelemetryAsPrivateDataWhateverThePieces)
{
    for (std::size_t const piece : {1U, 100U, 188U, 1316U, 100000U}) {
        SCOPED_TRACE(piece);
        media::TransportTap tap;
        EXPECT_EQ(through(tap, stream(transport_test::synchronousMap()), piece), stream(shownMap()));
        EXPECT_EQ(tap.tables().association.value().mapPids, (std::map<int, int>{{1, 0x1000}}));
        EXPECT_EQ(tap.tables().maps.at(1).streams.at(1).type, 0x15) << "what was sent";
        EXPECT_EQ(tap.tables().maps.at(1).streams.at(1).descriptors, transport_test::synchronousDescriptors());
    }
}

TEST(TransportTap, LeavesAllElseAlone)
{
    media::ProgramMap unknown = media::readProgramMap(transport_test::synchronousMap()).value();
    unknown.streams[1].descriptors = bytes("05 04 58 59 5A 5A");
    Bytes damaged = transport_test::synchronousMap();
    damaged.back() ^= 1U;
    Bytes noise(5000);
    for (std::size_t index = 0; index < noise.size(); ++index) {
        noise[index] = static_cast<std::uint8_t>(index * index >> 3U);
    }
    struct Row {
        char const* name;
        Bytes in;
    };
    for (Row const& row :
         {Row{"asynchronous", stream(transport_test::plainMap())},
          Row{"another format", stream(media::writeProgramMap(unknown))}, Row{"damaged table", stream(damaged)},
          Row{"no transport stream", noise}, Row{"one packet", transport_test::packet(0x100, Bytes(10))},
          Row{"a few bytes", Bytes(10, 0x47)}, Row{"nothing", {}}}) {
        SCOPED_TRACE(row.name);
        media::TransportTap tap;
        EXPECT_EQ(through(tap, row.in, 100), row.in);
    }
}

TEST(TransportTap, FollowsAMapOverPacketsWithOthersBetween)
{
    media::ProgramMap map = media::readProgramMap(transport_test::synchronousMap()).value();
    map.descriptors = joined(bytes("25 C8"), Bytes(200, 1));
    std::uint8_t counter = 0;
    auto const inTwo = [&](media::ProgramMap const& sent) {
        Bytes const packets = media::packetsOf(media::writeProgramMap(sent), 0x1000, counter);
        counter = 0;
        EXPECT_EQ(packets.size(), 2 * media::kTransportPacket);
        Bytes const between = transport_test::packet(0x100, Bytes(50, 9));
        return joined(stream(transport_test::plainMap(), 2), Bytes(packets.begin(), packets.begin() + 188), between,
                      Bytes(packets.begin() + 188, packets.end()), between);
    };
    media::ProgramMap shown = map;
    shown.streams[1].type = 0x06;
    media::TransportTap tap;
    EXPECT_EQ(through(tap, inTwo(map), 188), inTwo(shown));
}

TEST(TransportTap, FindsPacketsAfterDamageAndOfOtherLengths)
{
    Bytes const good = stream(transport_test::synchronousMap(), 4);
    Bytes const shown = stream(shownMap(), 4);
    Bytes const dirt = bytes("01 02 47 03");
    media::TransportTap tap;
    EXPECT_EQ(through(tap, joined(dirt, good, dirt, good), 500), joined(dirt, shown, dirt, shown));

    auto const stamped = [](Bytes const& packets) {
        Bytes all;
        for (std::size_t at = 0; at < packets.size(); at += media::kTransportPacket) {
            all = joined(all, Bytes(4, 0x11),
                         Bytes(packets.begin() + static_cast<std::ptrdiff_t>(at),
                               packets.begin() + static_cast<std::ptrdiff_t>(at + media::kTransportPacket)));
        }
        return all;
    };
    media::TransportTap other;
    EXPECT_EQ(through(other, stamped(good), 500), stamped(shown));
}

TEST(TransportTap, GoesOnElsewhereAfterAJump)
{
    Bytes const good = stream(transport_test::synchronousMap());
    media::TransportTap tap;
    tap.push(std::span(good).first(400));
    tap.jump();
    EXPECT_EQ(through(tap, good, 188), stream(shownMap()));
}

TEST(TransportTap, GivesUpOnWhatIsSomethingElse)
{
    media::TransportTap tap;
    Bytes const other(70000, 0);
    EXPECT_EQ(through(tap, other, 4096), other);
    EXPECT_TRUE(tap.isIdle());
}

}  // namespace
