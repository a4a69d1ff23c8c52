// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The element by itself, driven by hand.
#include "element_harness.h"
#include "temp_folder.h"

#include <gst/base/gstaggregator.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using gst_test::configShowing;
using gst_test::ElementHarness;
using gst_test::Feed;
using gst_test::kFrame;

/// In the order of the alphabet.
std::string padNames(GstElement* element)
{
    std::set<std::string> names;
    gst_element_foreach_pad(
        element,
        [](GstElement*, GstPad* pad, gpointer data) -> gboolean {
            static_cast<std::set<std::string>*>(data)->insert(GST_PAD_NAME(pad));
            return TRUE;
        },
        &names);
    std::string text;
    for (std::string const& name : names) {
        text += name + " ";
    }
    return text;
}

std::string contentOf(GstEvent* event)
{
    GstStructure const* const structure = gst_event_get_structure(event);
    char* const text = structure == nullptr ? g_strdup("") : gst_structure_to_string(structure);
    std::string content = text;
    g_free(text);
    return content;
}

/// The events behind the element up to the first of this type, by their names.
std::string eventsUpTo(ElementHarness& harness, GstEventType last)
{
    std::string names;
    bool more = true;
    while (more) {
        GstEvent* const event = gst_harness_pull_event(harness.video());
        if (event == nullptr) {
            return names + "nothing";
        }
        more = GST_EVENT_TYPE(event) != last;
        names += std::string(GST_EVENT_TYPE_NAME(event)) + " ";
        gst_event_unref(event);
    }
    return names;
}

// Pads and caps

TEST(Element, HasAPadForEachTelemetryStreamThatIsAskedFor)
{
    ElementHarness harness(Feed::Live, 2);
    EXPECT_EQ(padNames(harness.element()), "klv_0 klv_1 sink src ");
    GstPad* const named = gst_element_request_pad_simple(harness.element(), "klv_7");
    GstPad* const next = gst_element_request_pad_simple(harness.element(), "klv_%u");
    EXPECT_EQ(padNames(harness.element()), "klv_0 klv_1 klv_7 klv_8 sink src ");
    for (GstPad* const pad : {named, next}) {
        gst_element_release_request_pad(harness.element(), pad);
        gst_object_unref(pad);
    }
    EXPECT_EQ(padNames(harness.element()), "klv_0 klv_1 sink src ");
}

TEST(Element, GivesOnTheCapsThatItGets)
{
    ElementHarness harness(Feed::Live, 0, "video/x-raw,format=NV12,width=33,height=17,framerate=0/1,colorimetry=bt601");
    gst_harness_push(harness.video(), gst_test::greyPicture(33, 17, 0));
    GstBuffer* const picture = gst_harness_pull(harness.video());
    EXPECT_TRUE(gst_test::isGrey(picture));
    gst_buffer_unref(picture);
    GstCaps* const caps = gst_pad_get_current_caps(harness.video()->sinkpad);
    char* const text = gst_caps_to_string(caps);
    EXPECT_STREQ(text, "video/x-raw, format=(string)NV12, width=(int)33, height=(int)17, framerate=(fraction)0/1, "
                       "colorimetry=(string)bt601");
    g_free(text);
    gst_caps_unref(caps);
}

TEST(Element, OffersWhatItsNeighbourTakesButNv12Only)
{
    gst_test::initGStreamer();
    GstElement* const element = gst_element_factory_make("stanagoverlay", nullptr);
    GstPad* const sink = gst_element_get_static_pad(element, "sink");
    for (auto const& [offered, isTaken] :
         {std::pair{"video/x-raw,format=NV12,width=7,height=9,framerate=30/1", true},
          std::pair{"video/x-raw,format=I420,width=8,height=8,framerate=30/1", false},
          std::pair{"video/x-raw(memory:GLMemory),format=NV12,width=8,height=8,framerate=30/1", false}}) {
        GstCaps* const caps = gst_caps_from_string(offered);
        EXPECT_EQ(gst_pad_query_accept_caps(sink, caps) != FALSE, isTaken) << offered;
        gst_caps_unref(caps);
    }
    gst_object_unref(sink);
    gst_object_unref(element);
}

TEST(Element, TakesANewSizeInMidStream)
{
    ElementHarness harness;
    harness.pushHeading(10, 0);
    EXPECT_EQ(harness.textsAt(0), "10");
    gst_harness_set_src_caps_str(harness.video(), "video/x-raw,format=NV12,width=642,height=482,framerate=25/1");
    gst_harness_push(harness.video(), gst_test::greyPicture(642, 482, kFrame));
    GstBuffer* const picture = gst_harness_pull(harness.video());
    EXPECT_FALSE(gst_test::isGrey(picture));
    EXPECT_EQ(gst_buffer_get_size(picture), 644U * 482 * 3 / 2);
    gst_buffer_unref(picture);
}

TEST(Element, DrawsWhereTheBufferSaysThatThePlanesLie)
{
    ElementHarness harness;
    harness.pushHeading(10, 0);
    GstBuffer* const plain = harness.draw(0);
    constexpr int kWidth = 320;
    constexpr int kHeight = 240;
    constexpr gsize kStride = 512;
    constexpr gsize kLead = 100;
    constexpr gsize kUv = kLead + kStride * kHeight + 77;
    constexpr gsize kSize = kUv + kStride * kHeight / 2;
    GstBuffer* const odd = gst_buffer_new_allocate(nullptr, kSize, nullptr);
    gst_buffer_memset(odd, 0, 128, kSize);
    GST_BUFFER_PTS(odd) = kFrame;
    std::size_t offsets[GST_VIDEO_MAX_PLANES] = {kLead, kUv};
    gint strides[GST_VIDEO_MAX_PLANES] = {kStride, kStride};
    gst_buffer_add_video_meta_full(odd, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_NV12, kWidth, kHeight, 2, offsets,
                                   strides);
    gst_harness_push(harness.video(), odd);
    GstBuffer* const drawn = gst_harness_pull(harness.video());
    EXPECT_EQ(drawn, odd);  // not copied
    GstMapInfo a;
    GstMapInfo b;
    gst_buffer_map(plain, &a, GST_MAP_READ);
    gst_buffer_map(drawn, &b, GST_MAP_READ);
    for (gsize row = 0; row < kHeight; ++row) {
        ASSERT_EQ(std::memcmp(a.data + row * kWidth, b.data + kLead + row * kStride, kWidth), 0) << row;
    }
    for (gsize row = 0; row < kHeight / 2; ++row) {
        ASSERT_EQ(std::memcmp(a.data + kWidth * kHeight + row * kWidth, b.data + kUv + row * kStride, kWidth), 0)
            << row;
    }
    // Nothing beside the planes.
    EXPECT_EQ(std::count(b.data, b.data + kLead, 128), static_cast<std::ptrdiff_t>(kLead));
    gst_buffer_unmap(plain, &a);
    gst_buffer_unmap(drawn, &b);
    gst_buffer_unref(plain);
    gst_buffer_unref(drawn);
}

TEST(Element, LeavesAPictureAloneThatOthersReadToo)
{
    ElementHarness harness;
    harness.pushHeading(10, 0);
    GstBuffer* const shared = gst_test::greyPicture(320, 240, 0);
    gst_buffer_ref(shared);
    gst_harness_push(harness.video(), shared);
    GstBuffer* const drawn = gst_harness_pull(harness.video());
    EXPECT_NE(drawn, shared);
    EXPECT_TRUE(gst_test::isGrey(shared));
    EXPECT_FALSE(gst_test::isGrey(drawn));
    gst_buffer_unref(shared);
    gst_buffer_unref(drawn);
}

TEST(Element, WithoutTelemetryAPictureIsGivenOnAsItIs)
{
    ElementHarness harness;
    GstBuffer* const picture = gst_test::greyPicture(320, 240, 0);
    gst_buffer_ref(picture);
    gst_harness_push(harness.video(), picture);
    GstBuffer* const same = gst_harness_pull(harness.video());
    EXPECT_EQ(same, picture);
    EXPECT_EQ(harness.number("frames-drawn"), 0U);
    gst_buffer_unref(same);
    gst_buffer_unref(picture);
}

// What passes beside pictures

TEST(Element, IsAnAggregatorWhoseTelemetryPadsAreAggregatorPadsToo)
{
    ElementHarness harness;
    EXPECT_TRUE(GST_IS_AGGREGATOR(harness.element()));
    GstPad* const pad = gst_element_get_static_pad(harness.element(), "klv_0");
    EXPECT_TRUE(GST_IS_AGGREGATOR_PAD(pad));
    gst_object_unref(pad);
}

TEST(Element, TheVideosEventsPassAsTheyAreAndInTheirOrder)
{
    ElementHarness harness;
    EXPECT_EQ(harness.textsAt(0), "");
    EXPECT_EQ(eventsUpTo(harness, GST_EVENT_SEGMENT), "stream-start caps segment ");
    GstHarness* const video = harness.video();
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    segment.rate = 2.0;
    segment.applied_rate = 0.5;
    segment.base = 7 * GST_SECOND;
    segment.start = segment.time = segment.position = 3 * GST_SECOND;
    segment.stop = 9 * GST_SECOND;
    std::vector<GstEvent*> const events = {
        gst_event_new_custom(GST_EVENT_CUSTOM_DOWNSTREAM, gst_structure_new_empty("before")),
        gst_event_new_segment(&segment),
        gst_event_new_custom(GST_EVENT_CUSTOM_DOWNSTREAM, gst_structure_new_empty("after")),
        gst_event_new_tag(gst_tag_list_new(GST_TAG_TITLE, "flight", nullptr)),
        gst_event_new_custom(GST_EVENT_CUSTOM_DOWNSTREAM_STICKY, gst_structure_new_empty("sticky")),
        gst_event_new_gap(3 * GST_SECOND, kFrame),
    };
    for (GstEvent* const event : events) {
        gst_harness_push_event(video, gst_event_ref(event));
    }
    GstBuffer* const picture = harness.draw(4 * GST_SECOND);
    EXPECT_EQ(GST_BUFFER_PTS(picture), 4 * GST_SECOND);
    gst_buffer_unref(picture);
    for (GstEvent* const sent : events) {
        GstEvent* const come = gst_harness_try_pull_event(video);
        ASSERT_NE(come, nullptr) << GST_EVENT_TYPE_NAME(sent);
        EXPECT_EQ(GST_EVENT_TYPE(come), GST_EVENT_TYPE(sent));
        EXPECT_EQ(gst_event_get_seqnum(come), gst_event_get_seqnum(sent));
        EXPECT_EQ(contentOf(come), contentOf(sent));
        gst_event_unref(come);
        gst_event_unref(sent);
    }
    EXPECT_EQ(gst_harness_events_in_queue(video), 0U);
    GstEvent* const kept = gst_pad_get_sticky_event(video->sinkpad, GST_EVENT_SEGMENT, 0);
    GstSegment const* come = nullptr;
    gst_event_parse_segment(kept, &come);
    EXPECT_TRUE(gst_segment_is_equal(come, &segment));
    gst_event_unref(kept);
}

TEST(Element, TheStreamKeepsItsName)
{
    ElementHarness harness(Feed::Live, 0);
    EXPECT_EQ(harness.textsAt(0), "");
    char* const before = gst_pad_get_stream_id(harness.video()->srcpad);
    char* const behind = gst_pad_get_stream_id(harness.video()->sinkpad);
    GstPad* const src = gst_element_get_static_pad(harness.element(), "src");
    char* const at = gst_pad_get_stream_id(src);
    EXPECT_STREQ(behind, before);
    EXPECT_STREQ(at, before);
    gst_object_unref(src);
    g_free(before);
    g_free(behind);
    g_free(at);
}

TEST(Element, APictureKeepsWhatItCarries)
{
    ElementHarness harness;
    harness.pushHeading(10, 0);
    GstBuffer* const picture = gst_test::greyPicture(320, 240, 40);
    GST_BUFFER_DTS(picture) = 30;
    GST_BUFFER_DURATION(picture) = 50;
    GST_BUFFER_OFFSET(picture) = 60;
    GST_BUFFER_OFFSET_END(picture) = 70;
    GST_BUFFER_FLAG_SET(picture, GST_BUFFER_FLAG_DISCONT | GST_BUFFER_FLAG_MARKER);
    gst_buffer_add_video_region_of_interest_meta(picture, "tank", 1, 2, 3, 4);
    gst_harness_push(harness.video(), picture);
    GstBuffer* const drawn = gst_harness_pull(harness.video());
    EXPECT_EQ(drawn, picture);  // not copied
    EXPECT_FALSE(gst_test::isGrey(drawn));
    EXPECT_EQ(GST_BUFFER_PTS(drawn), 40U);
    EXPECT_EQ(GST_BUFFER_DTS(drawn), 30U);
    EXPECT_EQ(GST_BUFFER_DURATION(drawn), 50U);
    EXPECT_EQ(GST_BUFFER_OFFSET(drawn), 60U);
    EXPECT_EQ(GST_BUFFER_OFFSET_END(drawn), 70U);
    EXPECT_TRUE(GST_BUFFER_FLAG_IS_SET(drawn, GST_BUFFER_FLAG_DISCONT | GST_BUFFER_FLAG_MARKER));
    EXPECT_NE(gst_buffer_get_video_region_of_interest_meta_id(drawn, 0), nullptr);
    gst_buffer_unref(drawn);
}

TEST(Element, APictureWithoutTimePasses)
{
    ElementHarness harness;
    harness.pushHeading(10, 0);
    EXPECT_EQ(harness.textsAt(GST_CLOCK_TIME_NONE), "10");
    EXPECT_EQ(harness.textsAt(GST_CLOCK_TIME_NONE), "10");
}

TEST(Element, AnAllocationIsForWhoComesBehind)
{
    ElementHarness harness(Feed::Live, 1);
    GstHarness* const video = harness.video();
    gst_harness_add_propose_allocation_meta(video, GST_VIDEO_META_API_TYPE, nullptr);
    EXPECT_EQ(harness.textsAt(0), "");
    GstCaps* const caps = gst_caps_from_string(ElementHarness::kCaps);
    GstQuery* const query = gst_query_new_allocation(caps, FALSE);
    EXPECT_TRUE(gst_pad_peer_query(video->srcpad, query));
    EXPECT_TRUE(gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr));
    gst_query_unref(query);
    gst_caps_unref(caps);
}

// Telemetry and time

TEST(Element, APictureShowsTheNewestTelemetryThatIsNotLater)
{
    ElementHarness harness;
    harness.pushHeading(10, kFrame);
    harness.pushHeading(20, 3 * kFrame);
    EXPECT_EQ(harness.textsAt(0), "");
    EXPECT_EQ(harness.textsAt(kFrame), "10");
    EXPECT_EQ(harness.textsAt(2 * kFrame), "10");
    EXPECT_EQ(harness.textsAt(3 * kFrame), "20");
    EXPECT_EQ(harness.number("frames-drawn"), 3U);
}

TEST(Element, TelemetryWithoutTimeBelongsToTheNewestPicture)
{
    ElementHarness harness(Feed::Recording);
    harness.pushHeading(10, GST_CLOCK_TIME_NONE);
    EXPECT_EQ(harness.textsAt(0), "10");
    harness.pushHeading(20, GST_CLOCK_TIME_NONE);
    EXPECT_EQ(harness.textsAt(kFrame), "20");
}

TEST(Element, TelemetryThatIsTooOldIsGone)
{
    ElementHarness harness;
    harness.set("max-age", "1000000000");
    harness.pushHeading(10, 0);
    EXPECT_EQ(harness.textsAt(GST_SECOND), "10");
    EXPECT_EQ(harness.textsAt(GST_SECOND + kFrame), "-");
    harness.set("max-age", "0");
    EXPECT_EQ(harness.textsAt(GST_SECOND + 2 * kFrame), "10");
}

TEST(Element, SeveralStreamsAreSeveralProducers)
{
    ElementHarness harness(Feed::Live, 2);
    harness.set("config", configShowing("%heading_deg %pan_deg"));
    harness.pushKlv({{"heading_deg", 20.0}, {"pan_deg", 90.0}}, 0, 1);
    EXPECT_EQ(harness.textsAt(0), "20 90");
    harness.pushHeading(10, 0, 0);
    EXPECT_EQ(harness.textsAt(kFrame), "10 90");
}

TEST(Element, TimesAreRunningTimes)
{
    ElementHarness harness;
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    segment.start = segment.time = 100 * GST_SECOND;
    gst_harness_push_event(harness.klv(), gst_event_new_segment(&segment));
    harness.pushHeading(10, 100 * GST_SECOND + kFrame);
    EXPECT_EQ(harness.textsAt(0), "");
    EXPECT_EQ(harness.textsAt(kFrame), "10");
}

TEST(Element, HoldsRunByTheTimesOfThePictures)
{
    ElementHarness harness;
    harness.set("config", R"({"overlay":[{"formatString":"%heading_deg %pan_deg","decimals":0,
        "formats":{"heading_deg":{"decimals":0,"holdLastMs":1000},"pan_deg":{"decimals":0}}}]})");
    harness.pushHeading(10, 0);
    harness.pushKlv({{"pan_deg", 90.0}}, kFrame);
    EXPECT_EQ(harness.textsAt(0), "10 --");
    EXPECT_EQ(harness.textsAt(kFrame), "10 90");
    EXPECT_EQ(harness.textsAt(GST_SECOND), "10 90");
    EXPECT_EQ(harness.textsAt(GST_SECOND + kFrame), "-- 90");
}

TEST(Element, ShowsTheHostsOwnKeys)
{
    ElementHarness harness;
    harness.set("config", R"({"overlay":[{"formatString":"%frame_index %telemetry_age_s %video_time_s"}]})");
    EXPECT_EQ(harness.textsAt(GST_SECOND), "");
    harness.pushHeading(10, GST_SECOND);
    EXPECT_EQ(harness.textsAt(GST_SECOND + 500 * GST_MSECOND), "1 0.500000 0.500000");
}

TEST(Element, ShowsDerivedKeysThatAreNamed)
{
    ElementHarness harness;
    harness.set("config", configShowing("%sensor_alt_ft"));
    harness.pushKlv({{"sensor_alt_m", 1000.0}}, 0);
    EXPECT_EQ(harness.textsAt(0).substr(0, 4), "3280");
}

TEST(Element, DamagedTelemetryIsPassedOver)
{
    ElementHarness harness;
    std::vector<std::uint8_t> cut = gst_test::klvOf({{"heading_deg", 10.0}});
    cut.resize(cut.size() / 2);
    EXPECT_EQ(gst_harness_push(harness.klv(), gst_test::bufferOf(cut, 0)), GST_FLOW_OK);
    EXPECT_EQ(gst_harness_push(harness.klv(), gst_test::bufferOf({}, 0)), GST_FLOW_OK);
    EXPECT_EQ(gst_harness_push(harness.klv(), gst_test::bufferOf(std::vector<std::uint8_t>(5000, 6), 0)), GST_FLOW_OK);
    EXPECT_EQ(harness.textsAt(0), "");
    harness.pushHeading(10, kFrame);
    EXPECT_EQ(harness.textsAt(kFrame), "10");
}

// Waiting

GstClockTime timeOf(std::function<void()> const& act)
{
    gint64 const began = g_get_monotonic_time();
    act();
    return static_cast<GstClockTime>(g_get_monotonic_time() - began) * GST_USECOND;
}

TEST(Element, ALivePictureWaitsForTelemetryThatIsDueAndNoLongerThanTheTimeout)
{
    ElementHarness harness(Feed::Live);
    harness.set("telemetry-timeout", "400000000");
    harness.pushHeading(10, 0);
    harness.pushHeading(20, kFrame);
    EXPECT_EQ(harness.textsAt(kFrame), "20");
    EXPECT_GE(timeOf([&] { EXPECT_EQ(harness.textsAt(2 * kFrame), "20"); }), 400 * GST_MSECOND);
    // It was in vain: nobody waits for the next packet until one has come.
    EXPECT_LT(timeOf([&] { EXPECT_EQ(harness.textsAt(3 * kFrame), "20"); }), 400 * GST_MSECOND);
}

TEST(Element, TelemetryThatNeverComesDoesNotStallARecording)
{
    ElementHarness harness(Feed::Recording, 3);
    EXPECT_GE(timeOf([&] { EXPECT_EQ(harness.textsAt(0), ""); }), GST_SECOND);
    EXPECT_LT(timeOf([&] { EXPECT_EQ(harness.textsAt(kFrame), ""); }), GST_SECOND);
}

TEST(Element, AGapTellsThatNothingComes)
{
    ElementHarness harness(Feed::Recording);
    harness.pushHeading(10, 0);
    gst_harness_push_event(harness.klv(), gst_event_new_gap(kFrame, kFrame));
    EXPECT_LT(timeOf([&] { EXPECT_EQ(harness.textsAt(2 * kFrame), "10"); }), 500 * GST_MSECOND);
    GstBuffer* const gap = gst_test::bufferOf({}, 3 * kFrame);
    GST_BUFFER_FLAG_SET(gap, GST_BUFFER_FLAG_GAP);
    gst_harness_push(harness.klv(), gap);
    EXPECT_LT(timeOf([&] { EXPECT_EQ(harness.textsAt(3 * kFrame), "10"); }), 500 * GST_MSECOND);
}

TEST(Element, TheEndOfTelemetryIsNotTheEndOfVideo)
{
    ElementHarness harness(Feed::Recording);
    harness.pushHeading(10, 0);
    gst_harness_push_event(harness.klv(), gst_event_new_eos());
    EXPECT_LT(timeOf([&] { EXPECT_EQ(harness.textsAt(kFrame), "10"); }), 500 * GST_MSECOND);
    EXPECT_EQ(gst_harness_events_in_queue(harness.video()), 3U);  // stream-start, caps, segment
}

TEST(Element, TheEndOfVideoIsTheEnd)
{
    ElementHarness harness;
    EXPECT_EQ(harness.textsAt(0), "");
    gst_harness_push_event(harness.video(), gst_event_new_eos());
    EXPECT_EQ(eventsUpTo(harness, GST_EVENT_EOS), "stream-start caps segment eos ");
    EXPECT_EQ(gst_harness_events_in_queue(harness.video()), 0U);
    EXPECT_EQ(harness.pushHeading(10, kFrame), GST_FLOW_EOS);
}

TEST(Element, ReportsTheTimeoutAsLatencyOfLivePictures)
{
    ElementHarness live(Feed::Live);
    live.set("telemetry-timeout", "70000000");
    EXPECT_EQ(gst_harness_query_latency(live.video()), 70 * GST_MSECOND);
    gst_harness_set_upstream_latency(live.video(), 30 * GST_MSECOND);
    EXPECT_EQ(gst_harness_query_latency(live.video()), 100 * GST_MSECOND);
    ElementHarness without(Feed::Live, 0);
    EXPECT_EQ(gst_harness_query_latency(without.video()), 0U);
    ElementHarness recording(Feed::Recording);
    EXPECT_EQ(gst_harness_query_latency(recording.video()), 0U);
}

TEST(Element, SaysWhenItsLatencyChanges)
{
    ElementHarness harness;
    while (!harness.takeMessage(GST_MESSAGE_LATENCY).empty()) {
    }
    harness.set("telemetry-timeout", "70000000");
    EXPECT_EQ(harness.takeMessage(GST_MESSAGE_LATENCY), "latency");
}

// Flushes and seeks

void flush(GstHarness* harness)
{
    gst_harness_push_event(harness, gst_event_new_flush_start());
    gst_harness_push_event(harness, gst_event_new_flush_stop(TRUE));
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    gst_harness_push_event(harness, gst_event_new_segment(&segment));
}

TEST(Element, AFlushForgetsTelemetryAndWhatWasHeld)
{
    ElementHarness harness;
    harness.set("config", R"({"overlay":[{"formatString":"%heading_deg %frame_index","decimals":0,
        "formats":{"heading_deg":{"decimals":0,"holdLastMs":60000}}}]})");
    harness.pushHeading(10, 10 * GST_SECOND);
    EXPECT_EQ(harness.textsAt(10 * GST_SECOND), "10 0");
    EXPECT_EQ(harness.textsAt(10 * GST_SECOND + kFrame), "10 1");
    flush(harness.klv());
    flush(harness.video());
    EXPECT_EQ(harness.textsAt(0), "");
    harness.pushKlv({{"pan_deg", 5.0}}, kFrame);
    EXPECT_EQ(harness.textsAt(kFrame), "-- 1");
    harness.pushHeading(30, 2 * kFrame);
    EXPECT_EQ(harness.textsAt(2 * kFrame), "30 2");
}

TEST(Element, AFlushOfVideoPassesAndTelemetryStays)
{
    ElementHarness harness(Feed::Live, 2);
    harness.pushHeading(10, 0, 1);
    EXPECT_EQ(harness.textsAt(0), "10");
    EXPECT_EQ(eventsUpTo(harness, GST_EVENT_SEGMENT), "stream-start caps segment ");
    flush(harness.video());
    EXPECT_EQ(harness.textsAt(kFrame), "10");
    EXPECT_EQ(eventsUpTo(harness, GST_EVENT_SEGMENT), "flush-start flush-stop segment ");
    EXPECT_EQ(gst_harness_events_in_queue(harness.video()), 0U);
}

TEST(Element, AFlushLetsAWaitingPictureGo)
{
    ElementHarness harness(Feed::Live, 2);
    harness.set("telemetry-timeout", "60000000000");
    harness.pushHeading(10, 0);
    harness.pushHeading(20, kFrame);
    EXPECT_EQ(harness.textsAt(kFrame), "20");
    gst_harness_push(harness.video(), gst_test::greyPicture(320, 240, 2 * kFrame));
    EXPECT_LT(timeOf([&] { flush(harness.video()); }), 10 * GST_SECOND);
    EXPECT_EQ(harness.textsAt(kFrame), "20");
    EXPECT_EQ(gst_harness_buffers_received(harness.video()), 2U);
}

TEST(Element, AFlushOfTelemetryAloneLeavesVideoGoing)
{
    ElementHarness harness;
    harness.pushHeading(10, 0);
    EXPECT_EQ(harness.textsAt(0), "10");
    flush(harness.klv());
    EXPECT_EQ(gst_harness_events_in_queue(harness.video()), 3U);
    harness.pushHeading(20, kFrame);
    EXPECT_EQ(harness.textsAt(kFrame), "20");
}

TEST(Element, ASeekGoesToVideoAndTelemetry)
{
    ElementHarness harness(Feed::Live, 2);
    gst_harness_push_upstream_event(harness.video(), gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH,
                                                                        GST_SEEK_TYPE_SET, 0, GST_SEEK_TYPE_NONE, -1));
    for (GstHarness* const source : {harness.video(), harness.klv(0), harness.klv(1)}) {
        bool sought = false;
        while (GstEvent* const event = gst_harness_try_pull_upstream_event(source)) {
            sought = sought || GST_EVENT_TYPE(event) == GST_EVENT_SEEK;
            gst_event_unref(event);
        }
        EXPECT_TRUE(sought);
    }
}

TEST(Element, QualityOfServiceGoesToTheVideosSource)
{
    ElementHarness harness;
    gst_harness_push_upstream_event(harness.video(), gst_event_new_qos(GST_QOS_TYPE_UNDERFLOW, 2.0, 5, 7));
    bool told = false;
    while (GstEvent* const event = gst_harness_try_pull_upstream_event(harness.video())) {
        told = told || GST_EVENT_TYPE(event) == GST_EVENT_QOS;
        gst_event_unref(event);
    }
    EXPECT_TRUE(told);
}

// Properties

TEST(Element, DefaultsOfProperties)
{
    gst_test::initGStreamer();
    GstElement* const element = gst_element_factory_make("stanagoverlay", nullptr);
    guint64 timeout = 0;
    guint64 maxAge = 0;
    double outline = -1;
    g_object_get(element, "telemetry-timeout", &timeout, "max-age", &maxAge, "outline", &outline, nullptr);
    EXPECT_EQ(timeout, 100 * GST_MSECOND);
    EXPECT_EQ(maxAge, 5 * GST_SECOND);
    EXPECT_EQ(outline, 0.0);
    gst_object_unref(element);
}

TEST(Element, TheNextPictureHasANewConfiguration)
{
    ElementHarness harness;
    harness.pushKlv({{"heading_deg", 10.0}, {"pan_deg", 90.0}}, 0);
    EXPECT_EQ(harness.textsAt(0), "10");
    harness.set("config", configShowing("pan %pan_deg"));
    EXPECT_EQ(harness.textsAt(kFrame), "pan 90");
}

TEST(Element, AConfigurationThatIsNoneLeavesTheOneBeforeAndWarns)
{
    ElementHarness harness;
    harness.pushHeading(10, 0);
    harness.set("config", "{");
    EXPECT_EQ(harness.takeMessage(GST_MESSAGE_WARNING).substr(0, 24), "config: line 1, column 2");
    harness.set("config", "{}");
    EXPECT_EQ(harness.takeMessage(GST_MESSAGE_WARNING), "config: \"overlay\" is missing; write {\"overlay\": [ ... ]}");
    EXPECT_EQ(harness.text("config"), configShowing("%heading_deg"));
    EXPECT_EQ(harness.textsAt(0), "10");
}

TEST(Element, ReadsItsConfigurationFromAFileWhenItIsSet)
{
    media_test::TempFolder const folder;
    std::string const path = folder.file("config.json");
    ElementHarness harness;
    harness.pushKlv({{"heading_deg", 10.0}}, 0);
    std::ofstream(path) << configShowing("file %heading_deg");
    g_object_set(harness.element(), "config-file", path.c_str(), nullptr);
    EXPECT_EQ(harness.textsAt(0), "file 10");
    EXPECT_EQ(harness.text("config-file"), path);
    EXPECT_EQ(harness.text("config"), configShowing("file %heading_deg"));

    std::ofstream(path) << configShowing("again %heading_deg");
    EXPECT_EQ(harness.textsAt(kFrame), "file 10");
    g_object_set(harness.element(), "config-file", path.c_str(), nullptr);
    EXPECT_EQ(harness.textsAt(2 * kFrame), "again 10");

    std::ofstream(path) << "[]";
    g_object_set(harness.element(), "config-file", path.c_str(), nullptr);
    EXPECT_EQ(harness.takeMessage(GST_MESSAGE_WARNING),
              path + ": the outermost value is no object; write {\"overlay\": [ ... ]}");
    g_object_set(harness.element(), "config-file", "/nowhere/c.json", nullptr);
    EXPECT_EQ(harness.takeMessage(GST_MESSAGE_WARNING),
              "/nowhere/c.json: cannot be read: No such file or directory; check the path");
    g_object_set(harness.element(), "config-file", "/", nullptr);
    EXPECT_EQ(harness.takeMessage(GST_MESSAGE_WARNING), "/: is a folder; give a configuration file");
    EXPECT_EQ(harness.text("config-file"), path);
    EXPECT_EQ(harness.textsAt(3 * kFrame), "again 10");
}

TEST(Element, AWarningWaitsUntilSomebodyHearsIt)
{
    gst_test::initGStreamer();
    GstElement* const element = gst_element_factory_make("stanagoverlay", nullptr);
    g_object_set(element, "config-file", "/nowhere/c.json", nullptr);
    GstBus* const bus = gst_bus_new();
    gst_element_set_bus(element, bus);
    EXPECT_EQ(gst_element_set_state(element, GST_STATE_READY), GST_STATE_CHANGE_SUCCESS);
    GstMessage* const message = gst_bus_pop_filtered(bus, GST_MESSAGE_WARNING);
    ASSERT_NE(message, nullptr);
    gst_message_unref(message);
    gst_element_set_state(element, GST_STATE_NULL);
    gst_element_set_bus(element, nullptr);
    gst_object_unref(bus);
    gst_object_unref(element);
}

TEST(Element, AFontThatIsNotInstalledLeavesTheOneBeforeAndWarns)
{
    ElementHarness harness;
    harness.pushHeading(10, 0);
    harness.set("font", "No Such Family");
    EXPECT_NE(harness.takeMessage(GST_MESSAGE_WARNING).find("No Such Family"), std::string::npos);
    EXPECT_EQ(harness.text("font"), "");
    EXPECT_EQ(harness.textsAt(0), "10");
}

TEST(Element, AnOutlineChangesThePicture)
{
    ElementHarness harness;
    harness.pushHeading(10, 0);
    GstBuffer* const plain = harness.draw(0);
    harness.set("outline", "9");
    GstBuffer* const rimmed = harness.draw(0);
    GstMapInfo map;
    gst_buffer_map(rimmed, &map, GST_MAP_READ);
    EXPECT_NE(gst_buffer_memcmp(plain, 0, map.data, map.size), 0);
    gst_buffer_unmap(rimmed, &map);
    gst_buffer_unref(plain);
    gst_buffer_unref(rimmed);
}

TEST(Element, TellsSchemaAndKeys)
{
    ElementHarness harness;
    EXPECT_NE(harness.text("schema").find("\"formatString\""), std::string::npos);
    EXPECT_EQ(harness.text("schema").find("\"pan_deg\""), std::string::npos);
    harness.pushKlv({{"heading_deg", 10.0}, {"pan_deg", 90.0}}, 0);
    EXPECT_EQ(harness.textsAt(0), "10");
    EXPECT_NE(harness.text("schema").find("\"pan_deg\""), std::string::npos);
    char** keys = nullptr;
    g_object_get(harness.element(), "available-keys", &keys, nullptr);
    char* const joined = g_strjoinv(" ", keys);
    EXPECT_NE(std::string(joined).find("heading_deg"), std::string::npos);
    EXPECT_NE(std::string(joined).find("pan_deg"), std::string::npos);
    g_free(joined);
    g_strfreev(keys);
}

TEST(Element, TellsTextsWithTheirBoxes)
{
    ElementHarness harness;
    harness.pushHeading(10, 0);
    EXPECT_EQ(harness.textsAt(0), "10");
    GstStructure* all = nullptr;
    g_signal_emit_by_name(harness.element(), "get-draws", &all);
    EXPECT_TRUE(gst_structure_has_name(all, "stanag-overlay-draws"));
    GValue const* const list = gst_structure_get_value(all, "draws");
    ASSERT_EQ(gst_value_list_get_size(list), 1U);
    auto const* const draw = static_cast<GstStructure const*>(g_value_get_boxed(gst_value_list_get_value(list, 0)));
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;
    EXPECT_TRUE(gst_structure_get(draw, "left", G_TYPE_INT, &left, "top", G_TYPE_INT, &top, "right", G_TYPE_INT, &right,
                                  "bottom", G_TYPE_INT, &bottom, nullptr));
    EXPECT_LT(left, right);
    EXPECT_LT(top, bottom);
    gst_structure_free(all);
}

// States

TEST(Element, WorksAgainAfterNull)
{
    ElementHarness harness;
    harness.pushHeading(10, 0);
    EXPECT_EQ(harness.textsAt(0), "10");
    gst_element_set_state(harness.element(), GST_STATE_NULL);
    EXPECT_EQ(harness.text("schema"), "");
    gst_element_set_state(harness.element(), GST_STATE_PLAYING);
    gst_harness_set_src_caps_str(harness.klv(), "meta/x-klv");
    gst_harness_set_src_caps_str(harness.video(), ElementHarness::kCaps);
    EXPECT_EQ(harness.textsAt(0), "");
    harness.pushHeading(20, kFrame);
    EXPECT_EQ(harness.textsAt(kFrame), "20");
    EXPECT_EQ(harness.number("frames-drawn"), 1U);
}

TEST(Element, AMissingPluginFailsTheChangeToReadyAndNamesThePlaces)
{
    gst_test::initGStreamer();
    setenv("STANAG_OVERLAY_PLUGIN", "/nowhere/plugin.so", 1);
    GstElement* const element = gst_element_factory_make("stanagoverlay", nullptr);
    GstBus* const bus = gst_bus_new();
    gst_element_set_bus(element, bus);
    EXPECT_EQ(gst_element_set_state(element, GST_STATE_READY), GST_STATE_CHANGE_FAILURE);
    unsetenv("STANAG_OVERLAY_PLUGIN");
    GstMessage* const message = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR);
    ASSERT_NE(message, nullptr);
    GError* error = nullptr;
    gst_message_parse_error(message, &error, nullptr);
    EXPECT_STREQ(error->message, "the plugin's library was not found (/nowhere/plugin.so); build the target "
                                 "stanag_overlay_plugin or let STANAG_OVERLAY_PLUGIN name the file");
    g_error_free(error);
    gst_message_unref(message);
    EXPECT_EQ(gst_element_set_state(element, GST_STATE_READY), GST_STATE_CHANGE_SUCCESS);
    gst_element_set_state(element, GST_STATE_NULL);
    gst_element_set_bus(element, nullptr);
    gst_object_unref(bus);
    gst_object_unref(element);
}

TEST(Element, APadThatIsReleasedTakesItsTelemetryAlong)
{
    ElementHarness harness(Feed::Live, 1);
    GstPad* const pad = gst_element_request_pad_simple(harness.element(), "klv_%u");
    harness.pushHeading(10, 0);
    EXPECT_EQ(harness.textsAt(0), "10");
    gst_element_release_request_pad(harness.element(), pad);
    gst_object_unref(pad);
    EXPECT_EQ(harness.textsAt(kFrame), "10");
}

}  // namespace
