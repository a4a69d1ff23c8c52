// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The reading thread with a real socket: what comes stands in the queue, and its end is quick whenever it is asked for.
#include "clips.h"
#include "live_stream.h"
#include "media/live_input.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using media::LiveInput;
using media::LiveItem;
using media::StreamKind;

TEST(LiveInput, OpensAgainAfterTheInputIsLost)
{
    media_test::TempFolder const folder;
    clip_test::makeClip({folder.file("a.ts"), 64, 48, 300, "mpeg2video"});
    int const port = live_test::freePort();
    LiveInput input({live_test::addressOf(port), 0.0, false});
    auto sender = std::make_unique<live_test::Sender>(port, folder.file("a.ts"));
    auto const until = Clock::now() + std::chrono::seconds(20);
    int pictures = 0;
    std::uint64_t opening = 0;
    std::string lost;
    while (Clock::now() < until && opening < 2) {
        std::optional<LiveItem> const item = input.queue().pop(Clock::now() + std::chrono::milliseconds(50));
        if (item && item->packet && item->kind == StreamKind::Video) {
            opening = item->program->opening;
            EXPECT_EQ(item->program->stream(item->program->video).codecpar->codec_id, AV_CODEC_ID_MPEG2VIDEO);
            ++pictures;
        }
        if (item && !item->packet) {
            lost = item->lostBecause;
            sender = std::make_unique<live_test::Sender>(port, folder.file("a.ts"));
        }
        if (pictures == 20) {
            sender.reset();
        }
    }
    EXPECT_EQ(opening, 2U);
    EXPECT_GE(pictures, 21);
    EXPECT_EQ(lost, live_test::addressOf(port) + ": nothing comes any more");
}

TEST(LiveInput, ProgramsAndTablesComeWithThePackets)
{
    media_test::TempFolder const folder;
    clip_test::ClipSpec spec{folder.file("a.ts"), 64, 48, 300, "mpeg2video"};
    spec.klvStreams = {std::vector<SwJsonObject>(300, SwJsonObject{{"heading_deg", SwJsonValue(1)}})};
    clip_test::makeClip(spec);
    int const port = live_test::freePort();
    LiveInput input({live_test::addressOf(port), 0.0, false});
    live_test::Sender const sender(port, folder.file("a.ts"));
    std::shared_ptr<media::LiveProgram const> program;
    auto const until = Clock::now() + std::chrono::seconds(20);
    while (Clock::now() < until && (!program || program->tables.services.empty())) {
        std::optional<LiveItem> const item = input.queue().pop(Clock::now() + std::chrono::milliseconds(50));
        program = item && item->packet ? item->program : program;
    }
    ASSERT_TRUE(program);
    EXPECT_TRUE(program->isTransportStream);
    EXPECT_EQ(program->kinds, (std::vector<StreamKind>{StreamKind::Video, StreamKind::Klv}));
    EXPECT_EQ(program->stream(1).id, 0x101);
    EXPECT_FALSE(program->isInCells(1));
    ASSERT_EQ(program->container->nb_programs, 1U);
    EXPECT_EQ(program->container->programs[0]->id, 1);
    EXPECT_EQ(program->container->programs[0]->pmt_pid, 0x1000);
    EXPECT_EQ(program->container->programs[0]->nb_stream_indexes, 2U);
    EXPECT_EQ(program->tables.association->mapPids, (std::map<int, int>{{1, 0x1000}}));
    ASSERT_EQ(program->tables.maps.count(1), 1U);
    EXPECT_EQ(program->tables.maps.at(1).streams.at(1).pid, 0x101);
    EXPECT_FALSE(program->tables.services.empty());
}

TEST(LiveInput, EndsAtOnceWhileItWaits)
{
    auto const begin = Clock::now();
    {
        LiveInput const input({live_test::addressOf(live_test::freePort()), 0.0, false});
    }
    EXPECT_LT(Clock::now() - begin, std::chrono::seconds(1));
}

TEST(LiveInput, SaysWhyItGaveUp)
{
    LiveInput input({"tcp://127.0.0.1:" + std::to_string(live_test::freePort()), 0.5, false});
    auto const until = Clock::now() + std::chrono::seconds(10);
    while (!input.queue().ended() && Clock::now() < until) {
        input.queue().pop(Clock::now() + std::chrono::milliseconds(20));
    }
    EXPECT_TRUE(input.queue().ended());
    EXPECT_NE(input.queue().failure().find("cannot be opened: Connection refused"), std::string::npos);
    EXPECT_NE(input.queue().failure().find("; gave up after 0.500 s without a picture"), std::string::npos);
}

}  // namespace
