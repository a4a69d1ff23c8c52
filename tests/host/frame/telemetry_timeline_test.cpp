// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Which telemetry belongs to which frame.
#include "frame/telemetry_timeline.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using frame::Choice;
using frame::TelemetryTimeline;

SwJsonObject payload(int number)
{
    return {{"n", SwJsonValue(number)}};
}

/// "producer=n" per choice, with the frame that got the packet first and "*" for lookback.
std::string textOf(std::vector<Choice> const& choices)
{
    std::string text;
    for (Choice const& choice : choices) {
        text += (text.empty() ? "" : " ") + choice.producer + "=" + std::to_string((*choice.payload)["n"].toInt()) +
                "@" + std::to_string(choice.payloadFrame) + (choice.fromLookback ? "*" : "");
    }
    return text;
}

TEST(TelemetryTimeline, GivesTheNewestPacketAtOrBeforeTheFrame)
{
    TelemetryTimeline timeline;
    std::size_t const producer = timeline.addProducer("klv");
    for (int number = 0; number < 4; ++number) {
        timeline.add(producer, number * 0.1, payload(number));
    }
    EXPECT_EQ(textOf(timeline.choose(-0.01, 1)), "");
    EXPECT_EQ(textOf(timeline.choose(0.0, 2)), "klv=0@2");
    EXPECT_EQ(textOf(timeline.choose(0.05, 3)), "klv=0@2");
    EXPECT_EQ(textOf(timeline.choose(0.29, 4)), "klv=2@4");
    EXPECT_EQ(textOf(timeline.choose(0.3, 5)), "klv=3@5");
}

TEST(TelemetryTimeline, CountsAsLookbackWhatIsOlderThanThePreviousFrame)
{
    TelemetryTimeline timeline;
    std::size_t const producer = timeline.addProducer("klv");
    timeline.add(producer, 1.0, payload(1));
    EXPECT_EQ(textOf(timeline.choose(1.0, 1)), "klv=1@1") << "no frame before it";
    EXPECT_EQ(textOf(timeline.choose(1.1, 2)), "klv=1@1") << "as old as the previous frame";
    EXPECT_EQ(textOf(timeline.choose(1.2, 3)), "klv=1@1*");
    timeline.add(producer, 1.2, payload(2));
    EXPECT_EQ(textOf(timeline.choose(1.3, 4)), "klv=2@4");
    EXPECT_EQ(textOf(timeline.choose(60.0, 5)), "klv=2@4*") << "a gap keeps the last packet";
}

TEST(TelemetryTimeline, TakesPacketsInAnyOrder)
{
    TelemetryTimeline timeline;
    std::size_t const producer = timeline.addProducer("klv");
    for (int const number : {0, 4, 2, 1, 3}) {
        timeline.add(producer, number * 0.04, payload(number));
    }
    for (int number = 0; number < 5; ++number) {
        std::uint64_t const frameNumber = static_cast<std::uint64_t>(number) + 1;
        EXPECT_EQ(textOf(timeline.choose(number * 0.04, frameNumber)),
                  "klv=" + std::to_string(number) + "@" + std::to_string(frameNumber));
    }
}

TEST(TelemetryTimeline, TakesAPacketThatArrivesLate)
{
    TelemetryTimeline timeline;
    std::size_t const producer = timeline.addProducer("klv");
    timeline.add(producer, 0.0, payload(0));
    timeline.choose(0.0, 1);
    timeline.choose(0.2, 2);
    timeline.add(producer, 0.1, payload(1));
    EXPECT_EQ(textOf(timeline.choose(0.3, 3)), "klv=1@3*");
}

TEST(TelemetryTimeline, PrefersTheLaterPacketOfOneMoment)
{
    TelemetryTimeline timeline;
    std::size_t const producer = timeline.addProducer("klv");
    timeline.add(producer, 1.0, payload(1));
    timeline.add(producer, 1.0, payload(2));
    EXPECT_EQ(textOf(timeline.choose(1.0, 1)), "klv=2@1");
}

TEST(TelemetryTimeline, TakesTimesWithinAMicrosecondForTheSameMoment)
{
    TelemetryTimeline timeline;
    std::size_t const producer = timeline.addProducer("klv");
    timeline.add(producer, 1.0000005, payload(1));
    timeline.add(producer, 1.000002, payload(2));
    EXPECT_EQ(textOf(timeline.choose(1.0, 1)), "klv=1@1");
}

TEST(TelemetryTimeline, KeepsProducersApart)
{
    TelemetryTimeline timeline;
    std::size_t const first = timeline.addProducer("a");
    std::size_t const second = timeline.addProducer("b");
    timeline.add(second, 0.0, payload(20));
    EXPECT_EQ(textOf(timeline.choose(0.0, 1)), "b=20@1");
    timeline.add(first, 0.1, payload(10));
    EXPECT_EQ(textOf(timeline.choose(0.1, 2)), "a=10@2 b=20@1");
    EXPECT_EQ(timeline.producers(), (std::vector<std::string>{"a", "b"}));
}

TEST(TelemetryTimeline, CompletesEachPacketOnceThatAFrameGets)
{
    TelemetryTimeline timeline;
    std::size_t const one = timeline.addProducer("one");
    std::vector<std::string> completed;
    timeline.setCompletion([&completed](std::string const& producer, SwJsonObject& payload) {
        completed.push_back(producer + std::to_string(payload["n"].toInt()));
        payload.insertOrAssign("tail", "T7");
    });
    timeline.add(one, 0.0, payload(1));
    timeline.add(one, 0.2, payload(2));
    timeline.add(one, 0.4, payload(3));
    std::vector<Choice> const first = timeline.choose(0.0, 1);
    timeline.choose(0.1, 2);
    timeline.choose(0.5, 3);
    EXPECT_EQ(*first.at(0).payload, (SwJsonObject{{"n", SwJsonValue(1)}, {"tail", SwJsonValue("T7")}}));
    EXPECT_EQ(completed, (std::vector<std::string>{"one1", "one3"})) << "no frame gets the second packet";
}

TEST(TelemetryTimeline, LeavesOutPacketsWithoutKeys)
{
    TelemetryTimeline timeline;
    std::size_t const producer = timeline.addProducer("klv");
    timeline.add(producer, 0.0, payload(1));
    timeline.add(producer, 0.1, SwJsonObject());
    EXPECT_EQ(textOf(timeline.choose(0.1, 1)), "klv=1@1");
}

TEST(TelemetryTimeline, TakesPacketsBeyondTheGreatestAgeForGone)
{
    TelemetryTimeline timeline;
    timeline.setMaxAge(0.5);
    std::size_t const first = timeline.addProducer("a");
    std::size_t const second = timeline.addProducer("b");
    timeline.add(first, 1.0, payload(1));
    timeline.add(second, 1.25, payload(2));
    EXPECT_EQ(textOf(timeline.choose(1.5, 1)), "a=1@1 b=2@1") << "as old as it may be";
    EXPECT_EQ(textOf(timeline.choose(1.5000005, 2)), "a=1@1* b=2@1*") << "within a microsecond";
    EXPECT_EQ(textOf(timeline.choose(1.51, 3)), "b=2@1*");
    EXPECT_EQ(textOf(timeline.choose(1.76, 4)), "");
    timeline.add(first, 1.9, payload(3));
    EXPECT_EQ(textOf(timeline.choose(2.0, 5)), "a=3@5") << "the next one is there again";
}

TEST(TelemetryTimeline, KnowsItsNewestPacketHoweverOld)
{
    TelemetryTimeline timeline;
    timeline.setMaxAge(0.5);
    std::size_t const first = timeline.addProducer("a");
    std::size_t const second = timeline.addProducer("b");
    timeline.add(first, 1.0, payload(1));
    timeline.add(second, 0.9, payload(2));
    timeline.choose(0.5, 1);
    EXPECT_EQ(timeline.newestSeconds(), std::nullopt) << "none before the frame";
    timeline.choose(0.95, 2);
    EXPECT_EQ(timeline.newestSeconds(), 0.9);
    timeline.choose(9.0, 3);
    EXPECT_EQ(timeline.newestSeconds(), 1.0);
}

TEST(TelemetryTimeline, HoldsNoMoreThanItsLimit)
{
    TelemetryTimeline timeline(3);
    std::size_t const producer = timeline.addProducer("klv");
    for (int number = 0; number < 10; ++number) {
        timeline.add(producer, 1000.0 + number, payload(number));
    }
    EXPECT_EQ(textOf(timeline.choose(1006.5, 1)), "");
    EXPECT_EQ(textOf(timeline.choose(1007.0, 2)), "klv=7@2");
    EXPECT_EQ(textOf(timeline.choose(2000.0, 3)), "klv=9@3");
}

}  // namespace
