// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Whatever comes in whatever order: the element does not crash, stall or lose a picture, and what it shows is what
// came last. Seeds are fixed; under the sanitizers it is the search for wrong memory.
#include "element_harness.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using gst_test::configShowing;
using gst_test::ElementHarness;
using gst_test::Feed;
using gst_test::kFrame;

/// One element and what was done with it.
class Life {
public:
    explicit Life(unsigned seed) : random_(seed), harness_(Feed::Live, 2, kSmall)
    {
        harness_.set("telemetry-timeout", "0");
        harness_.set("max-age", "0");
    }

    /// A few random acts in a row, then a picture whose text is known.
    void sequence()
    {
        int const acts = upTo(6);
        for (int act = 0; act < acts; ++act) {
            anything();
        }
        double const degrees = upTo(359);
        harness_.set("config", configShowing("H %heading_deg"));
        harness_.pushHeading(degrees, now_, 0);
        picture();
        EXPECT_EQ(harness_.texts(), "H " + std::to_string(static_cast<int>(degrees)));
    }

private:
    int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(random_); }

    void picture()
    {
        gst_harness_push(harness_.video(), gst_test::greyPicture(64, 48, now_));
        GstBuffer* const picture = gst_harness_pull(harness_.video());
        ASSERT_NE(picture, nullptr);
        EXPECT_EQ(GST_BUFFER_PTS(picture), now_);
        gst_buffer_unref(picture);
        now_ += kFrame;
    }

    GstClockTime nearby() { return now_ + static_cast<GstClockTime>(upTo(4)) * kFrame / 2; }

    void flush(GstHarness* harness, GstCaps* caps)
    {
        gst_harness_push_event(harness, gst_event_new_flush_start());
        gst_harness_push_event(harness, gst_event_new_flush_stop(TRUE));
        gst_harness_push_event(harness, gst_event_new_caps(caps));
        gst_caps_unref(caps);
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_TIME);
        gst_harness_push_event(harness, gst_event_new_segment(&segment));
    }

    void damaged()
    {
        std::vector<std::uint8_t> bytes = gst_test::klvOf({{"heading_deg", 10.0}, {"sensor_lat_deg", 1.0}});
        bytes[static_cast<std::size_t>(upTo(static_cast<int>(bytes.size()) - 1))] =
            static_cast<std::uint8_t>(upTo(255));
        bytes.resize(static_cast<std::size_t>(upTo(static_cast<int>(bytes.size()))));
        gst_harness_push(harness_.klv(1), gst_test::bufferOf(bytes, nearby()));
    }

    void property()
    {
        char const* const configs[] = {"{", "{}", R"({"overlay":[]})", R"({"overlay":[{}]})",
                                       R"({"overlay":[{"formatString":"%pan_deg","updateEveryNFrames":3}]})"};
        switch (upTo(5)) {
        case 0:
            harness_.set("config", configs[upTo(4)]);
            break;
        case 1:
            harness_.set("outline", std::to_string(upTo(32)));
            break;
        case 2:
            harness_.set("font", upTo(1) == 0 ? "No Such Family" : "");
            break;
        case 3:
            static_cast<void>(harness_.text("schema"));
            break;
        case 4:
            static_cast<void>(harness_.texts());
            break;
        default:
            g_object_set(harness_.element(), "config-file", "/nowhere/c.json", nullptr);
            break;
        }
        while (!harness_.takeMessage(GST_MESSAGE_ANY).empty()) {
        }
    }

    void anything()
    {
        switch (upTo(9)) {
        case 0:
        case 1:
            picture();
            break;
        case 2:
            harness_.pushKlv({{"pan_deg", 1.0 * upTo(90)}}, nearby(), 1);
            break;
        case 3:
            harness_.pushHeading(upTo(359), GST_CLOCK_TIME_NONE, 1);
            break;
        case 4:
            gst_harness_push_event(harness_.klv(1), gst_event_new_gap(nearby(), kFrame));
            break;
        case 5:
            damaged();
            break;
        case 6:
            property();
            break;
        case 7:
            flush(harness_.klv(static_cast<std::size_t>(upTo(1))), gst_caps_new_empty_simple("meta/x-klv"));
            break;
        case 8:
            flush(harness_.video(), gst_caps_from_string(kSmall));
            flush(harness_.klv(0), gst_caps_new_empty_simple("meta/x-klv"));
            now_ = 0;
            break;
        default:
            now_ += static_cast<GstClockTime>(upTo(3)) * GST_SECOND;
            break;
        }
        while (GstEvent* const event = gst_harness_try_pull_event(harness_.video())) {
            gst_event_unref(event);
        }
    }

    static constexpr char const* kSmall = "video/x-raw,format=NV12,width=64,height=48,framerate=25/1";

    std::mt19937 random_;
    ElementHarness harness_;
    GstClockTime now_ = 0;
};

TEST(ElementRandom, TenThousandSequencesShowWhatCameLast)
{
    constexpr unsigned kLives = 100;
    constexpr int kSequences = 100;
    for (unsigned seed = 0; seed < kLives; ++seed) {
        Life life(seed);
        for (int sequence = 0; sequence < kSequences; ++sequence) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", sequence " + std::to_string(sequence));
            life.sequence();
            if (testing::Test::HasFailure()) {
                return;
            }
        }
    }
}

TEST(ElementThreads, ManyElementsWithTheirOwnConfigurationsEachOnItsThread)
{
    gst_test::initGStreamer();
    std::vector<std::thread> threads;
    for (int number = 0; number < 6; ++number) {
        threads.emplace_back([number] {
            ElementHarness harness;
            std::string const name = "n" + std::to_string(number) + " ";
            harness.set("config", configShowing(name + "%heading_deg"));
            for (int frame = 0; frame < 50; ++frame) {
                GstClockTime const time = static_cast<GstClockTime>(frame) * kFrame;
                harness.pushHeading(frame, time);
                EXPECT_EQ(harness.textsAt(time), name + std::to_string(frame));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(ElementThreads, VideoTelemetryAndPropertiesFromThreadsOfTheirOwn)
{
    ElementHarness harness(Feed::Recording, 2);
    constexpr int kFrames = 300;
    std::vector<std::thread> threads;
    for (std::size_t pad = 0; pad < 2; ++pad) {
        threads.emplace_back([&harness, pad] {
            for (int packet = 0; packet < kFrames; ++packet) {
                EXPECT_EQ(harness.pushHeading(packet, static_cast<GstClockTime>(packet) * kFrame, pad), GST_FLOW_OK);
            }
            gst_harness_push_event(harness.klv(pad), gst_event_new_eos());
        });
    }
    threads.emplace_back([&harness] {
        for (int change = 0; change < kFrames; ++change) {
            harness.set("config",
                        configShowing("%heading_deg" + std::string(static_cast<std::size_t>(change % 3), '.')));
            static_cast<void>(harness.text("schema"));
            static_cast<void>(harness.texts());
            static_cast<void>(gst_harness_query_latency(harness.video()));
        }
    });
    for (int frame = 0; frame < kFrames; ++frame) {
        GstBuffer* const picture = harness.draw(static_cast<GstClockTime>(frame) * kFrame);
        ASSERT_NE(picture, nullptr);
        EXPECT_FALSE(gst_test::isGrey(picture));
        gst_buffer_unref(picture);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(harness.number("frames-drawn"), static_cast<guint64>(kFrames));
}

}  // namespace
