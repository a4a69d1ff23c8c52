// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Selection of a frame's telemetry: grouping by producer, merging, and the counters of the fallback line.
// Seen from outside: a block with an empty template lists the merged keys and values.
#include "StanagOverlayPlugin.h"

#include "recording_imaging.h"
#include "test_clock.h"
#include "test_host.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

class Selection : public testing::Test {
protected:
    Selection()
    {
        test_clock::setNowNs(1);
        plugin_.init(host_.init());
        plugin_.enableDebug(true);
        plugin_.setConfig(R"({"overlay":[{}]})");
        host_.deliverBy([this](std::uint64_t frame, std::string const& key) {
            asked_.push_back(std::to_string(frame) + " " + key);
            return payloads_[key];
        });
    }

    /// An input that delivers `payload` under its own key.
    void input(std::string const& key, std::string const& producer, char const* payload, bool lookback = false)
    {
        payloads_[key] = SwAny(jsonObject(payload));
        host_.addInput({key, producer, 0, lookback});
    }

    /// The listing that is drawn, or the fallback line when nothing is.
    std::string select()
    {
        testing::internal::CaptureStderr();
        plugin_.render(host_.context());
        std::string line = testing::internal::GetCapturedStderr();
        std::string const drawn = recording::journal().text({"drawText"});
        constexpr char const* kBefore = "drawText 10 10 16 0 0 \"";
        constexpr char const* kAfter = "\" on 1920x1080\n";
        if (drawn.empty()) {
            return line;
        }
        EXPECT_EQ(line, "");
        return drawn.substr(std::string(kBefore).size(),
                            drawn.size() - std::string(kBefore).size() - std::string(kAfter).size());
    }

    TestHost host_;
    StanagOverlayPlugin plugin_;
    std::map<std::string, SwAny> payloads_;
    std::vector<std::string> asked_;
};

std::string fallbackLine(int missing, int lookback)
{
    return "[StanagOverlay][Fallback] frame=1 decision=skip miss_count=1 providers_missing=" + std::to_string(missing) +
           " providers_using_lookback=" + std::to_string(lookback) + "\n";
}

using Names = std::vector<std::string>;

}  // namespace

TEST_F(Selection, UndeclaredProducersMergeInByteOrder)
{
    input("b", "", R"({"x":"from b"})");
    input("a", "", R"({"x":"from a"})");
    EXPECT_EQ(select(), "x: from a");
}

TEST_F(Selection, DeclaredProducersComeFirst)
{
    input("b", "", R"({"x":"from b"})");
    input("a", "", R"({"x":"from a"})");
    host_.declare("b");
    EXPECT_EQ(select(), "x: from b");
}

TEST_F(Selection, DeclaredProducersKeepTheirOrder)
{
    host_.declare("z");
    host_.declare("y");
    input("y", "", R"({"x":"from y"})");
    input("z", "", R"({"x":"from z"})");
    EXPECT_EQ(select(), "x: from z");
}

TEST_F(Selection, LaterProducersFillInWhatIsMissing)
{
    input("a", "", R"({"x":1,"y":1})");
    input("b", "", R"({"w":2,"x":2,"z":2})");
    input("c", "", R"({"v":3,"w":3,"z":3})");
    EXPECT_EQ(select(), "v: 3\\nw: 2\\nx: 1\\ny: 1\\nz: 2");
}

TEST_F(Selection, ProducerNameTakesPrecedenceOverPayloadKey)
{
    input("a", "second", R"({"x":"from a"})");
    input("b", "first", R"({"x":"from b"})");
    EXPECT_EQ(select(), "x: from b");
    EXPECT_EQ(asked_, (Names{"1 b", "1 a"}));
}

TEST_F(Selection, AnInputWithoutAnyNameIsIgnored)
{
    host_.addInput({"", "", 0, false});
    input("a", "", R"({"x":1})");
    EXPECT_EQ(select(), "x: 1");
    EXPECT_EQ(asked_, Names{"1 a"});
}

TEST_F(Selection, AnInputWithoutPayloadKeyIsNotAskedFor)
{
    host_.addInput({"", "producer", 0, false});
    EXPECT_EQ(select(), fallbackLine(0, 0));
    EXPECT_EQ(asked_, Names{});
}

TEST_F(Selection, AnEmptyPayloadDoesNotReplaceAnEarlierOne)
{
    input("first", "p", R"({"x":1})");
    input("second", "p", "{}");
    EXPECT_EQ(select(), "x: 1");
}

TEST_F(Selection, TheLastPayloadOfAProducerWinsWhole)
{
    input("first", "p", R"({"x":1})");
    input("second", "p", R"({"y":2})");
    EXPECT_EQ(select(), "y: 2");
}

TEST_F(Selection, TheFrameOfAnInputIsAskedFor)
{
    payloads_["current"] = payloads_["earlier"] = SwAny(jsonObject(R"({"x":1})"));
    host_.addInput({"current", "", 0, false});
    host_.addInput({"earlier", "", 17, false});
    host_.sameContext(23);
    select();
    EXPECT_EQ(asked_, (Names{"23 current", "17 earlier"}));
}

TEST_F(Selection, TheEmptyKeyIsLeftOut)
{
    input("a", "", R"({"":1,"x":1})");
    input("b", "", R"({"":2,"y":2})");
    EXPECT_EQ(select(), "x: 1\\ny: 2");
}

TEST_F(Selection, TheEmptyKeyCannotBeLookedUp)
{
    plugin_.setConfig(R"({"overlay":[{"formatString":"%{}"}]})");
    input("a", "", R"({"":1,"x":1})");
    input("b", "", R"({"":2,"y":2})");
    EXPECT_EQ(select(), "--");
}

TEST_F(Selection, ValuesOfEveryKindArePassedOn)
{
    input("a", "", R"({"a":1,"b":1.5,"c":"word","d":true,"e":null,"f":{"g":1},"h":[1]})");
    EXPECT_EQ(select(), "a: 1\\nb: 1.500000\\nc: word\\nd: true\\ne: null\\nf: {}\\nh: {}");
}

TEST_F(Selection, NoInputAtAllCountsNothing)
{
    EXPECT_EQ(select(), fallbackLine(0, 0));
}

TEST_F(Selection, InputsOfAnotherTypeAreNotSeen)
{
    payloads_["a"] = SwAny(jsonObject(R"({"x":1})"));
    host_.context().inputsByType["other.v1"].inputs = {{"a", "", 0, false}};
    EXPECT_EQ(select(), fallbackLine(0, 0));
    EXPECT_EQ(asked_, Names{});
}

TEST_F(Selection, DeclaredProducersWithoutInputAreMissing)
{
    host_.declare("a");
    host_.declare("b");
    host_.declare("a");  // named twice, counted once
    EXPECT_EQ(select(), fallbackLine(2, 0));
}

TEST_F(Selection, AProducerWithOnlyEmptyPayloadsIsNeitherMissingNorLookback)
{
    host_.declare("a");
    input("a", "", "{}", true);
    EXPECT_EQ(select(), fallbackLine(0, 0));
}

TEST_F(Selection, LookbackCountsOncePerProducer)
{
    // Only an empty key: found, yet the merged object stays empty and the line shows the counters.
    input("a1", "a", R"({"":1})", true);
    input("a2", "a", R"({"":1})", true);
    EXPECT_EQ(select(), fallbackLine(0, 1));
}

TEST_F(Selection, OneLookbackInputMakesTheProducerOne)
{
    input("a1", "a", R"({"":1})", true);
    input("a2", "a", R"({"":1})", false);
    input("b1", "b", R"({"":1})", true);
    input("c1", "c", R"({"":1})", false);
    host_.declare("d");
    EXPECT_EQ(select(), fallbackLine(1, 2));
}

// Former bug: the flag was read after the payloads had been fetched.
TEST_F(Selection, LookbackIsWhatTheInputsSayBeforeTheirPayloadsAreFetched)
{
    for (bool const before : {false, true}) {
        SCOPED_TRACE(before);
        TestHost host;
        StanagOverlayPlugin plugin;
        plugin.init(host.init());
        plugin.enableDebug(true);
        host.addInput({"a", "", 0, before});
        host.deliverBy([&host, before](std::uint64_t, std::string const&) {
            host.context().inputsByType["stanag.v1"].inputs[0].fromLookback = !before;
            return SwAny(jsonObject(R"({"":1})"));
        });
        testing::internal::CaptureStderr();
        plugin.render(host.context());
        EXPECT_EQ(testing::internal::GetCapturedStderr(), fallbackLine(0, before ? 1 : 0));
    }
}

TEST_F(Selection, APayloadThatIsAnArrayContributesNothing)
{
    payloads_["a"] = SwAny(std::string("[1,2]"));
    host_.addInput({"a", "", 0, false});
    EXPECT_EQ(select(), "Root is not a JSON object.\n" + fallbackLine(0, 0));
}

TEST_F(Selection, WithoutAccessorOrCallablePayloadsAreEmpty)
{
    input("a", "", R"({"x":1})");
    host_.context().payloadAccessor = nullptr;
    EXPECT_EQ(select(), fallbackLine(0, 0));
    PayloadAccessor const withoutCallable;
    host_.context().payloadAccessor = &withoutCallable;
    plugin_.enableDebug(false);
    EXPECT_EQ(select(), "");
    EXPECT_EQ(asked_, Names{});
}

TEST_F(Selection, AViewWithNullInputsAndEmptyNamesIsUsedWithCare)
{
    // A host may fill the cache itself.
    payloads_["a"] = SwAny(jsonObject(R"({"x":1})"));
    RenderInput const input{"a", "", 0, false};
    ProducerView view;
    view.producers = {"", "a", "only null", "no inputs"};
    view.inputsByProducer["a"] = {nullptr, &input, nullptr};
    view.inputsByProducer["only null"] = {nullptr};
    view.inputsByProducer["no inputs"] = {};
    host_.context().producerViews["stanag.v1"] = view;
    EXPECT_EQ(select(), "x: 1");
    payloads_["a"] = SwAny();
    recording::journal().clear();
    EXPECT_EQ(select(), fallbackLine(1, 0));
}
