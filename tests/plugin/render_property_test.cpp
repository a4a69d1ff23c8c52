// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plugin against the pass written plainly: random configurations, hosts, payloads and times, frame by
// frame, every host call, every message and every field of the state equal.
#include "StanagOverlayPlugin.h"

#include "plain_overlay_pass.h"
#include "random_overlays.h"
#include "recording_imaging.h"
#include "runtime_text.h"
#include "test_clock.h"
#include "test_host.h"
#include "time_zone.h"

#include <gtest/gtest.h>

#include <algorithm>
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

/// Standard error goes here as long as this lives.
class Messages {
public:
    Messages() = default;
    ~Messages() { std::cerr.rdbuf(console_); }
    Messages(Messages const&) = delete;
    Messages& operator=(Messages const&) = delete;
    std::string text() const { return text_.str(); }

private:
    std::ostringstream text_;
    std::streambuf* const console_ = std::cerr.rdbuf(text_.rdbuf());
};

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
    std::vector<std::string> erased;  ///< from each object before the host hands it out
    std::vector<std::string> added;   ///< to each object after that
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
    for (RenderInput const& input : frame.inputs) {
        frame.payloads[input.payloadKey] = randomPayload(random);
    }
    frame.erased.clear();
    frame.added.clear();
    while (random.oneIn(2)) {
        frame.erased.push_back(random.oneOf(random.keys()));
        frame.added.push_back(random.oneOf(random.keys()));
    }
    return frame;
}

/// One side: a host of its own for a plugin or for the plain pass.
template <typename Pass>
class Side {
public:
    Side()
    {
        host_.deliverBy([this](std::uint64_t, std::string const& key) { return delivered(frame_.payloads.at(key)); });
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

        Messages const messages;
        recording::journal().clear();
        recording::journal().throwAtCall(frame.throwAtCall);
        std::string failure;
        try {
            pass_.render(context);
        } catch (std::exception const& error) {
            failure = error.what();
        }
        return recording::journal().text() + "failure: " + failure + "\nmessages: " + messages.text() + "\n" +
               stateText(pass_);
    }

private:
    /// A copy that the host has changed since.
    SwAny delivered(SwAny payload) const
    {
        if (payload.holds<SwJsonObject>()) {
            for (std::string const& key : frame_.erased) {
                payload.get<SwJsonObject>().erase(key);
            }
            for (std::string const& key : frame_.added) {
                payload.get<SwJsonObject>()[key] = "added";
            }
        }
        return payload;
    }

    RenderContext& prepared(Frame const& frame)
    {
        frame_ = frame;
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

    Frame frame_;
    TestHost host_;
    recording::Backend other_{"other"};
    Pass pass_;
};

/// How many frames showed each of these marks: proves that chance has visited every way of a frame.
class Visits {
public:
    void count(std::string const& seen, StanagOverlayPlugin& plugin)
    {
        for (char const* mark : {"\ndrawText", "\nmap other", "\nunmap", "failure: host call",
                                 "[StanagOverlay][Fallback]", "Root is not a JSON object.", "providers_missing=2",
                                 "\nheld[", "\nrefresh[", "conditionLastTrue=0\n", "conditionSince=1"}) {
            count(mark, seen.find(mark) != std::string::npos);
        }
        std::size_t const keys = opened(plugin, AvailableKeys()).size();
        count("more than 8 keys", keys > 8);
        count("more than 128 keys", keys > 128);
        std::size_t formats = 0;
        for (OverlayCfg const& block : opened(plugin, Overlays())) {
            formats = std::max(formats, block.formats.size());
        }
        count("more than 24 formats", formats > 24);
        std::size_t held = 0;
        std::size_t slowed = 0;
        for (OverlayRuntime const& runtime : opened(plugin, Runtimes())) {
            held = std::max(held, runtime.heldValues.size());
            slowed = std::max(slowed, runtime.refreshValues.size());
        }
        count("more than 24 held values", held > 24);
        count("more than 24 slowed values", slowed > 24);
    }
    void count(std::string const& mark, bool isThere) { counts_[mark] += isThere ? 1 : 0; }

    void expectAtLeast(int least) const
    {
        for (auto const& [mark, times] : counts_) {
            EXPECT_GE(times, least) << mark;
        }
    }

private:
    std::map<std::string, int> counts_;
};

/// A configuration for both sides, as text or straight into their blocks; whether it was text.
bool configure(RandomOverlays& random, StanagOverlayPlugin& fast, plain::OverlayPass& slow)
{
    random.chooseKeys();
    std::vector<OverlayCfg> blocks;
    for (std::size_t i = random.below(5); i > 0; --i) {
        blocks.push_back(random.block());
    }
    bool const asText = random.oneIn(3);
    if (asText) {
        Messages const ofNumbersThatAreNone;
        std::string const text = configText(blocks);
        fast.setConfig(text);
        slow.overlays = OverlayConfigParser().parse(text);
        EXPECT_EQ(slow.overlays.size(), blocks.size());
    } else {
        fast.setConfig("");
        opened(fast, Overlays()) = blocks;
        slow.overlays = blocks;
    }
    slow.runtimes.assign(opened(fast, Runtimes()).size(), OverlayRuntime());
    bool const debug = random.oneIn(2);
    fast.enableDebug(debug);
    slow.debug = debug;
    return asText;
}

void compare(std::uint32_t seed, int configurations, int frames, Visits& visits)
{
    RandomOverlays random(seed);
    TimeZone const here(random.oneOf(timeZones()).c_str());
    Side<StanagOverlayPlugin> fast;
    Side<plain::OverlayPass> slow;
    Frame frame;
    for (int configuration = 0; configuration < configurations; ++configuration) {
        bool const asText = configure(random, fast.pass(), slow.pass());
        // Texts give times in milliseconds.
        std::uint64_t const unit = asText ? 1000000 : 1;
        std::uint64_t nowNs = random.step() * unit;
        for (int i = 0; i < frames; ++i) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", configuration " + std::to_string(configuration) +
                         ", frame " + std::to_string(i));
            frame = randomFrame(random, frame);
            test_clock::setNowNs(nowNs);
            std::string const seen = fast.render(frame);
            ASSERT_EQ(seen, slow.render(frame));
            visits.count(seen, fast.pass());
            visits.count("text of a configuration", asText && seen.find("\ndrawText") != std::string::npos);
            nowNs += random.step() * unit;
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
    Visits visits;
    for (std::uint32_t seed = 1; seed <= 50; ++seed) {
        compare(seed, 10, 30, visits);
    }
    visits.expectAtLeast(10);
}

TEST_F(RenderProperty, PlainAndFastAgreeUnderADecimalComma)
{
    std::locale const before = std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
    Visits visits;
    for (std::uint32_t seed = 1001; seed <= 1010; ++seed) {
        compare(seed, 10, 30, visits);
    }
    std::locale::global(before);
}

}  // namespace
}  // namespace stanag_overlay
