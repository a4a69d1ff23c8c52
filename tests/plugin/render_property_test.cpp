// The plugin against the pass written plainly: random configurations, hosts, payloads and times, frame by
// frame, every host call, every message and every field of the state equal.
#include "StanagOverlayPlugin.h"

#include "plain_overlay_pass.h"
#include "random_overlays.h"
#include "recording_imaging.h"
#include "runtime_text.h"
#include "test_clock.h"
#include "test_host.h"

#include <gtest/gtest.h>

#include <iostream>
#include <locale>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace stanag_overlay {
namespace {

// Access to the plugin's state. An explicit instantiation may name private members.
template <typename Tag, auto Member>
struct Opener {
    friend typename Tag::Type& opened(StanagOverlayPlugin& plugin, Tag) { return plugin.*Member; }
};
struct Overlays {
    using Type = std::vector<OverlayCfg>;
    friend Type& opened(StanagOverlayPlugin& plugin, Overlays);
};
struct Runtimes {
    using Type = std::vector<OverlayRuntime>;
    friend Type& opened(StanagOverlayPlugin& plugin, Runtimes);
};
struct AvailableKeys {
    using Type = std::vector<std::string>;
    friend Type& opened(StanagOverlayPlugin& plugin, AvailableKeys);
};
struct MissCount {
    using Type = std::uint64_t;
    friend Type& opened(StanagOverlayPlugin& plugin, MissCount);
};
struct NextFallbackLogNs {
    using Type = std::uint64_t;
    friend Type& opened(StanagOverlayPlugin& plugin, NextFallbackLogNs);
};

template struct Opener<Overlays, &StanagOverlayPlugin::overlays_>;
template struct Opener<Runtimes, &StanagOverlayPlugin::runtimes_>;
template struct Opener<AvailableKeys, &StanagOverlayPlugin::availableKeys_>;
template struct Opener<MissCount, &StanagOverlayPlugin::missCount_>;
template struct Opener<NextFallbackLogNs, &StanagOverlayPlugin::nextFallbackLogNs_>;

std::string stateText(std::vector<OverlayRuntime> const& runtimes, std::vector<std::string> const& keys,
                      std::uint64_t missCount, std::uint64_t nextFallbackLogNs)
{
    std::string out = "misses=" + std::to_string(missCount) + " next=" + std::to_string(nextFallbackLogNs) + "\nkeys=";
    for (std::string const& key : keys) {
        out += key + ",";
    }
    for (OverlayRuntime const& runtime : runtimes) {
        out += "\n" + runtimeText(runtime);
    }
    return out;
}

std::string stateText(StanagOverlayPlugin& plugin)
{
    return stateText(opened(plugin, Runtimes()), opened(plugin, AvailableKeys()), opened(plugin, MissCount()),
                     opened(plugin, NextFallbackLogNs()));
}

std::string stateText(plain::OverlayPass const& pass)
{
    return stateText(pass.runtimes, pass.availableKeys, pass.missCount, pass.nextFallbackLogNs);
}

/// What one frame looks like from outside, decided once for both sides.
struct Frame {
    unsigned width = 1920;
    unsigned height = 1080;
    std::uint64_t index = 0;
    bool hasSource = true;
    bool newContext = true;
    bool hasAccessor = true;
    bool otherBackend = false;
    bool mappingFails = false;
    bool measureFails = false;
    std::size_t throwAtCall = 0;
    std::vector<RenderInput> inputs;
    std::vector<ProducerRecord> declared;
    std::map<std::string, SwAny> payloads;
};

SwAny randomPayload(RandomOverlays& random)
{
    switch (random.below(12)) {
    case 0:
        return {};
    case 1:
        return {SwJsonObject()};
    case 2:
        return {random.oneOf<std::string>({"", "[1]", "5", "{broken", "{} x", "{\"a\": \"0x10\"}"})};
    case 3:
        return {static_cast<int>(random.below(100))};
    case 4:
    case 5:
        return {SwJsonDocument(SwJsonValue(random.payload())).toJson()};
    case 6:
        return {SwJsonDocument(SwJsonValue(random.payload())).toJson(true).toStdString()};
    default:
        return {random.payload()};
    }
}

Frame randomFrame(RandomOverlays& random, Frame const& before)
{
    Frame frame = before;
    frame.index = random.oneIn(40) ? random.below(5) : frame.index + random.below(3);
    frame.newContext = !random.oneIn(3);
    frame.hasSource = !random.oneIn(30);
    frame.hasAccessor = !random.oneIn(20);
    frame.otherBackend = random.oneIn(10) != before.otherBackend;
    frame.mappingFails = random.oneIn(20);
    frame.measureFails = random.oneIn(15);
    frame.throwAtCall = random.oneIn(25) ? 1 + random.below(20) : 0;
    if (random.oneIn(20)) {
        frame.width = random.oneOf<unsigned>({1, 3, 1279, 1919, 7680});
        frame.height = random.oneOf<unsigned>({1, 2, 719, 1081, 4320});
    }
    std::vector<std::string> const names{"", "a", "b", "c", "B"};
    if (random.oneIn(8) || before.inputs.empty()) {
        frame.inputs.clear();
        for (std::size_t i = random.below(5); i > 0; --i) {
            frame.inputs.push_back({random.oneOf(names), random.oneIn(2) ? "" : random.oneOf(names),
                                    random.oneIn(3) ? random.below(9) : 0, random.oneIn(3)});
        }
        frame.declared.clear();
        for (std::size_t i = random.below(4); i > 0; --i) {
            ProducerRecord record;
            record.payloadKey = random.oneOf(names);
            record.producerName = random.oneIn(2) ? "" : random.oneOf(names);
            frame.declared.push_back(record);
        }
        frame.newContext = true;
    }
    frame.payloads.clear();
    for (std::string const& name : names) {
        frame.payloads[name] = randomPayload(random);
    }
    return frame;
}

/// One side: a host of its own for a plugin or for the plain pass.
template <typename Pass>
class Side {
public:
    Side()
    {
        host_.deliverBy([this](std::uint64_t, std::string const& key) { return payloads_.at(key); });
    }

    Pass& pass() { return pass_; }

    /// Renders the frame; everything that the outside saw of it, and the state after it.
    std::string render(Frame const& frame)
    {
        RenderContext& context = prepared(frame);
        recording::Backend& backend = frame.otherBackend ? other_ : host_.backend;
        backend.mapsTo = frame.mappingFails ? std::make_optional(MappedNV12{}) : std::nullopt;
        recording::controls(host_.painter).measureFails = frame.measureFails;
        pass_.init({&backend, &host_.painter});

        std::ostringstream messages;
        std::streambuf* const console = std::cerr.rdbuf(messages.rdbuf());
        recording::journal().clear();
        recording::journal().throwAtCall(frame.throwAtCall);
        std::string failure;
        try {
            pass_.render(context);
        } catch (std::exception const& error) {
            failure = error.what();
        }
        std::cerr.rdbuf(console);
        return recording::journal().text() + "failure: " + failure + "\nmessages: " + messages.str() + "\n" +
               stateText(pass_);
    }

private:
    RenderContext& prepared(Frame const& frame)
    {
        payloads_ = frame.payloads;
        host_.width = frame.width;
        host_.height = frame.height;
        RenderContext& context = frame.newContext ? host_.nextFrame(frame.index) : host_.sameContext(frame.index);
        if (!frame.hasSource) {
            context.picture.reset("", 0, nullptr, nullptr, {});
        }
        if (frame.newContext) {
            context.payloadAccessor = frame.hasAccessor ? context.payloadAccessor : nullptr;
            context.inputsByType["stanag.v1"].inputs = frame.inputs;
            context.declaredProducers["stanag.v1"] = frame.declared;
        }
        return context;
    }

    std::map<std::string, SwAny> payloads_;
    TestHost host_;
    recording::Backend other_{"other"};
    Pass pass_;
};

/// How many frames showed each of these marks: proves that chance has visited every way of a frame.
using Visits = std::map<std::string, int>;

Visits noVisits()
{
    Visits visits;
    for (char const* mark : {"\ndrawText", "\nmap other", "\nunmap", "failure: host call", "[StanagOverlay][Fallback]",
                             "Root is not a JSON object.", "providers_missing=2", "\nheld[", "\nrefresh[",
                             "conditionLastTrue=0\n", "conditionSince=1"}) {
        visits[mark] = 0;
    }
    return visits;
}

void compare(std::uint32_t seed, int configurations, int frames, Visits& visits)
{
    RandomOverlays random(seed);
    Side<StanagOverlayPlugin> fast;
    Side<plain::OverlayPass> slow;
    Frame frame;
    for (int configuration = 0; configuration < configurations; ++configuration) {
        std::vector<OverlayCfg> blocks;
        for (std::size_t i = random.below(5); i > 0; --i) {
            blocks.push_back(random.block());
        }
        fast.pass().setConfig("");
        opened(fast.pass(), Overlays()) = blocks;
        slow.pass().runtimes.clear();
        slow.pass().overlays = blocks;
        bool const debug = random.oneIn(2);
        fast.pass().enableDebug(debug);
        slow.pass().debug = debug;
        std::uint64_t nowNs = random.step();
        for (int i = 0; i < frames; ++i) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", configuration " + std::to_string(configuration) +
                         ", frame " + std::to_string(i));
            frame = randomFrame(random, frame);
            test_clock::setNowNs(nowNs);
            std::string const seen = fast.render(frame);
            ASSERT_EQ(seen, slow.render(frame));
            for (auto& [mark, count] : visits) {
                count += seen.find(mark) == std::string::npos ? 0 : 1;
            }
            nowNs += random.step();
        }
    }
}

class DecimalComma : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
};

class RenderProperty : public testing::Test {
protected:
    static void SetUpTestSuite() { SwAny::registerAllType(); }
};

TEST_F(RenderProperty, PlainAndFastAgree)
{
    Visits visits = noVisits();
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        compare(seed, 10, 30, visits);
    }
    for (auto const& [mark, count] : visits) {
        EXPECT_GE(count, 10) << mark;
    }
}

TEST_F(RenderProperty, PlainAndFastAgreeUnderADecimalComma)
{
    std::locale const before = std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
    Visits visits;
    compare(1000, 20, 30, visits);
    std::locale::global(before);
}

}  // namespace
}  // namespace stanag_overlay
