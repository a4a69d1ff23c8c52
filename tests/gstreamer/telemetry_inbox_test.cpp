// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The meeting of telemetry and pictures: what is chosen, who waits for what and for how long.
#include "telemetry_inbox.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace {

using gst_overlay::TelemetryInbox;
using Source = TelemetryInbox::Source;
using Taken = TelemetryInbox::Taken;
using namespace std::chrono_literals;

constexpr auto kLong = 60s;

std::vector<std::uint8_t> heading(double degrees)
{
    return telemetry::encodeKlv({{"heading_deg", degrees}});
}

class Inbox : public testing::Test {
protected:
    Inbox()
    {
        inbox.addProducer(0, "klv_0");
        inbox.open();
    }

    void bring(double degrees, std::optional<double> seconds, TelemetryInbox::Id id = 0)
    {
        EXPECT_EQ(inbox.add(id, heading(degrees), seconds), Taken::Yes);
    }

    /// "klv_0 90" and so on, for a picture at this time; headings are whole degrees here.
    std::string chosen(double seconds, std::optional<double> maxAge = {})
    {
        std::string text;
        for (frame::Choice const& choice : inbox.choose(seconds, ++frames, maxAge)) {
            text += (text.empty() ? "" : ", ") + choice.producer + " " +
                    std::to_string(std::lround((*choice.payload)["heading_deg"].toDouble()));
        }
        return text;
    }

    /// Whether a picture at this time is held up.
    bool waits(double seconds, Source source)
    {
        auto held = std::async(std::launch::async, [&] { return inbox.waitFor(seconds, kLong, source); });
        bool const waiting = held.wait_for(50ms) == std::future_status::timeout;
        inbox.startPictureFlush();
        held.wait();
        inbox.finishPictureFlush();
        return waiting;
    }

    TelemetryInbox inbox;
    std::uint64_t frames = 0;
};

TEST_F(Inbox, GivesTheNewestPacketThatIsNotLater)
{
    bring(10, 1.0);
    bring(20, 2.0);
    EXPECT_EQ(chosen(0.9), "");
    EXPECT_EQ(chosen(1.0), "klv_0 10");
    EXPECT_EQ(chosen(1.9), "klv_0 10");
    EXPECT_EQ(chosen(2.5), "klv_0 20");
    EXPECT_EQ(inbox.newestSeconds(), 2.0);
}

TEST_F(Inbox, LeavesOutWhatIsTooOld)
{
    bring(10, 1.0);
    EXPECT_EQ(chosen(6.0, 5.0), "klv_0 10");
    EXPECT_EQ(chosen(6.1, 5.0), "");
    EXPECT_EQ(inbox.newestSeconds(), 1.0);
}

TEST_F(Inbox, ProducersWithLowerNumbersComeFirst)
{
    inbox.addProducer(7, "klv_7");
    inbox.addProducer(3, "klv_3");
    bring(70, 1.0, 7);
    bring(30, 1.0, 3);
    bring(10, 1.0, 0);
    EXPECT_EQ(chosen(1.0), "klv_0 10, klv_3 30, klv_7 70");
    EXPECT_EQ(inbox.producers(), (std::vector<std::string>{"klv_0", "klv_3", "klv_7"}));
    inbox.removeProducer(3);
    EXPECT_EQ(chosen(1.0), "klv_0 10, klv_7 70");
}

TEST_F(Inbox, PacketsWithoutTimeBelongToTheNewestPicture)
{
    bring(10, {});
    EXPECT_TRUE(inbox.waitFor(3.0, kLong, Source::Recording));
    EXPECT_EQ(chosen(3.0), "klv_0 10");
    bring(20, {});
    EXPECT_EQ(chosen(3.04), "klv_0 20");
    EXPECT_EQ(inbox.newestSeconds(), 3.0);
}

TEST_F(Inbox, ARecordingsPictureWaitsUntilNothingEarlierCanCome)
{
    EXPECT_TRUE(waits(1.0, Source::Recording));
    bring(10, 0.5);
    EXPECT_TRUE(waits(1.0, Source::Recording));
    bring(20, 1.0);
    EXPECT_FALSE(waits(1.0, Source::Recording));
    EXPECT_TRUE(waits(1.04, Source::Recording));
    inbox.advance(0, 1.2);
    EXPECT_FALSE(waits(1.2, Source::Recording));
    EXPECT_TRUE(waits(1.24, Source::Recording));
    inbox.end(0);
    EXPECT_FALSE(waits(9.0, Source::Recording));
    inbox.begin(0);
    EXPECT_TRUE(waits(9.0, Source::Recording));
}

TEST_F(Inbox, ALivePictureWaitsForWhatIsDueOnly)
{
    EXPECT_FALSE(waits(1.0, Source::Live));
    bring(10, 1.0);
    bring(20, 1.1);
    EXPECT_FALSE(waits(1.16, Source::Live));
    EXPECT_TRUE(waits(1.2, Source::Live));
    bring(30, 1.2);
    EXPECT_FALSE(waits(1.2, Source::Live));
}

TEST_F(Inbox, NobodyWaitsAgainForAProducerThatKeptThemInVain)
{
    bring(10, 1.0);
    bring(20, 1.1);
    EXPECT_TRUE(inbox.waitFor(1.2, 1ms, Source::Live));
    EXPECT_FALSE(waits(1.3, Source::Live));
    bring(30, 1.3);
    EXPECT_TRUE(waits(1.6, Source::Live));
}

TEST_F(Inbox, ARecordingIsWaitedForPatientlyOnce)
{
    auto const began = std::chrono::steady_clock::now();
    EXPECT_TRUE(inbox.waitFor(1.0, 1ms, Source::Recording));
    EXPECT_GE(std::chrono::steady_clock::now() - began, gst_overlay::kRecordingPatience);
    bring(10, 1.0);
    EXPECT_FALSE(waits(1.04, Source::Recording));
}

TEST_F(Inbox, ZeroNeverWaits)
{
    EXPECT_TRUE(inbox.waitFor(1.0, 0ns, Source::Recording));
    EXPECT_TRUE(waits(1.0, Source::Recording));
}

TEST_F(Inbox, APacketThatComesLetsThePictureGo)
{
    auto held = std::async(std::launch::async, [&] { return inbox.waitFor(1.0, kLong, Source::Recording); });
    bring(10, 0.9);
    EXPECT_EQ(held.wait_for(20ms), std::future_status::timeout);
    bring(20, 1.0);
    EXPECT_TRUE(held.get());
    EXPECT_EQ(chosen(1.0), "klv_0 20");
}

TEST_F(Inbox, AProducerThatIsFarAheadIsHeldUpUntilPicturesCome)
{
    for (std::size_t packet = 0; packet < gst_overlay::kMostAhead; ++packet) {
        bring(static_cast<double>(packet % 360), static_cast<double>(packet) + 1.0);
    }
    auto held = std::async(std::launch::async, [&] { return inbox.add(0, heading(5), 5000.0); });
    EXPECT_EQ(held.wait_for(20ms), std::future_status::timeout);
    EXPECT_EQ(chosen(1.0), "klv_0 0");
    EXPECT_EQ(held.get(), Taken::Yes);
    EXPECT_EQ(chosen(1024.0), "klv_0 303");
    EXPECT_EQ(chosen(5000.0), "klv_0 5");
}

/// What ends the wait of a producer, and what it is then told.
TEST_F(Inbox, WhoIsHeldUpIsLetGo)
{
    struct Row {
        char const* name;
        void (*act)(TelemetryInbox&);
        Taken told;
    };
    for (Row const& row : {Row{"flush", [](TelemetryInbox& it) { it.startFlush(0); }, Taken::Flushing},
                           Row{"end of the pictures", [](TelemetryInbox& it) { it.endPictures(); }, Taken::Ended},
                           Row{"release", [](TelemetryInbox& it) { it.removeProducer(0); }, Taken::Flushing},
                           Row{"stop", [](TelemetryInbox& it) { it.close(); }, Taken::Flushing}}) {
        TelemetryInbox full;
        full.addProducer(0, "klv_0");
        full.open();
        for (std::size_t packet = 0; packet < gst_overlay::kMostAhead; ++packet) {
            EXPECT_EQ(full.add(0, heading(1), static_cast<double>(packet)), Taken::Yes);
        }
        auto held = std::async(std::launch::async, [&] { return full.add(0, heading(5), 5000.0); });
        EXPECT_EQ(held.wait_for(20ms), std::future_status::timeout) << row.name;
        row.act(full);
        EXPECT_EQ(held.get(), row.told) << row.name;
    }
}

TEST_F(Inbox, AFlushForgetsWhatItsProducerHasBrought)
{
    inbox.addProducer(1, "klv_1");
    bring(10, 1.0, 0);
    bring(20, 1.0, 1);
    inbox.startFlush(0);
    EXPECT_EQ(inbox.add(0, heading(1), 1.0), Taken::Flushing);
    inbox.finishFlush(0);
    EXPECT_EQ(chosen(1.0), "klv_1 20");
    bring(30, 1.0, 0);
    EXPECT_EQ(chosen(1.0), "klv_0 30, klv_1 20");
}

TEST_F(Inbox, IsAsNewWhenItOpensAgain)
{
    bring(10, 1.0);
    inbox.endPictures();
    inbox.close();
    EXPECT_FALSE(inbox.waitFor(1.0, kLong, Source::Recording));
    inbox.open();
    EXPECT_EQ(chosen(1.0), "");
    bring(20, 1.0);
    EXPECT_EQ(chosen(1.0), "klv_0 20");
}

TEST_F(Inbox, ManyThreadsMeet)
{
    constexpr int kProducers = 4;
    constexpr int kPictures = 300;
    std::vector<std::thread> threads;
    for (TelemetryInbox::Id id = 1; id < kProducers; ++id) {
        inbox.addProducer(id, "klv_" + std::to_string(id));
    }
    for (TelemetryInbox::Id id = 0; id < kProducers; ++id) {
        threads.emplace_back([this, id] {
            for (int packet = 0; packet < kPictures; ++packet) {
                EXPECT_EQ(inbox.add(id, heading(packet), packet), Taken::Yes);
            }
            inbox.end(id);
        });
    }
    for (int picture = 0; picture < kPictures; ++picture) {
        ASSERT_TRUE(inbox.waitFor(picture, kLong, Source::Recording));
        std::string const all = std::to_string(picture);
        EXPECT_EQ(chosen(picture), "klv_0 " + all + ", klv_1 " + all + ", klv_2 " + all + ", klv_3 " + all);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace
