// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Values held over gaps and values whose changes are slowed: both bounds, and what is written when.
#include "stanag_overlay_format.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace stanag_overlay {
namespace {

constexpr std::uint64_t kMs = 1000000;

// A frame: its time, the key's value if it is there, and the text that must be shown.
struct Frame {
    std::uint64_t nowNs;
    std::optional<SwJsonValue> value;
    char const* expected;
};

class History {
public:
    explicit History(FormatSpec const& spec)
    {
        cfg.missingPlaceholder = "(block)";
        cfg.formats["k"] = spec;
    }

    void play(std::vector<Frame> const& frames)
    {
        for (Frame const& frame : frames) {
            SCOPED_TRACE(frame.nowNs);
            SwJsonObject root{{"other", 1}};
            if (frame.value) {
                root["k"] = *frame.value;
            }
            EXPECT_EQ(OverlayTextFormatter().lookupFormatted(&root, "k", cfg, runtime, frame.nowNs), frame.expected);
        }
    }

    /// An entry of one of the maps as "text@time", "none" without one.
    static std::string entry(std::unordered_map<std::string, TimedText> const& map)
    {
        auto const found = map.find("k");
        return found == map.end() ? "none" : found->second.text + "@" + std::to_string(found->second.timeNs);
    }
    std::string held() const { return entry(runtime.heldValues); }
    std::string refreshed() const { return entry(runtime.refreshValues); }

    OverlayCfg cfg;
    OverlayRuntime runtime;
};

FormatSpec spec(std::uint64_t holdMs, std::uint64_t refreshMs)
{
    FormatSpec result;
    result.missingPlaceholder = "(entry)";
    result.holdLastNs = holdMs * kMs;
    result.refreshEveryNs = refreshMs * kMs;
    return result;
}

std::nullopt_t const kGap = std::nullopt;

TEST(HeldValues, HoldIsInclusive)
{
    std::uint64_t const t = 5;
    History history(spec(1000, 0));
    history.play({
        {t, 7, "7"},
        {t + 1, kGap, "7"},
        {t + 1000 * kMs, kGap, "7"},
        {t + 1000 * kMs + 1, kGap, "(entry)"},
        {t + 2000 * kMs, 8, "8"},
    });
    EXPECT_EQ(history.held(), "8@2000000005");
    EXPECT_EQ(history.refreshed(), "none");
}

TEST(HeldValues, RefreshIsExclusive)
{
    std::uint64_t const t = 5;
    History history(spec(0, 500));
    history.play({
        {t, 1, "1"},
        {t + 499 * kMs, 2, "1"},
        {t + 500 * kMs, 3, "3"},
        {t + 999 * kMs, 4, "3"},
        {t + 1000 * kMs - 1, 5, "3"},
        {t + 1000 * kMs, 5, "5"},
    });
    EXPECT_EQ(history.refreshed(), "5@1000000005");
    EXPECT_EQ(history.held(), "none");
}

TEST(HeldValues, BothOffKeepNothing)
{
    History history(spec(0, 0));
    history.play({{1, 1, "1"}, {2, kGap, "(entry)"}, {3, 2, "2"}});
    EXPECT_EQ(history.held(), "none");
    EXPECT_EQ(history.refreshed(), "none");
}

TEST(HeldValues, PlaceholderOfTheEntryNotOfTheBlock)
{
    History history(spec(0, 0));
    history.play({{1, kGap, "(entry)"}});
    history.cfg.formats.at("k") = FormatSpec();
    history.play({{2, kGap, "--"}});
    history.cfg.formats.clear();
    history.play({{3, kGap, "(block)"}});
}

TEST(HeldValues, KeysWithoutAnEntryKeepNothing)
{
    History history(spec(0, 0));
    history.cfg.formats.clear();
    history.play({{1, 7, "7"}, {2, kGap, "(block)"}});
    EXPECT_TRUE(history.runtime.heldValues.empty());
    EXPECT_TRUE(history.runtime.refreshValues.empty());
}

TEST(HeldValues, NothingToHoldBeforeTheFirstValue)
{
    History history(spec(1000, 1000));
    history.play({{1, kGap, "(entry)"}, {2, kGap, "(entry)"}});
    EXPECT_EQ(history.held(), "none");
    EXPECT_EQ(history.refreshed(), "none");
}

TEST(HeldValues, InvalidAndOutOfRangeValuesAreGaps)
{
    FormatSpec format = spec(1000, 0);
    format.invalidValues = {"0"};
    format.hasMax = true;
    format.maxValue = 100;
    History history(format);
    history.play({
        {1, 0, "(entry)"},
        {2, 7, "7"},
        {3, 0, "7"},
        {4, 101, "7"},
        {5, "abc", "7"},
        {6, nullptr, "7"},
    });
    EXPECT_EQ(history.held(), "7@2") << "a gap refreshes nothing";
}

TEST(HeldValues, BothTheTextOnScreenIsHeldNotTheLastReceived)
{
    History history(spec(1000, 500));
    history.play({
        {100 * kMs, 1, "1"},
        {200 * kMs, 2, "1"},
        {300 * kMs, kGap, "1"},
    });
    EXPECT_EQ(history.held(), "1@200000000") << "its time is that of the last valid frame";
    EXPECT_EQ(history.refreshed(), "1@100000000");
    history.play({
        {1200 * kMs, kGap, "1"},
        {1200 * kMs + 1, kGap, "(entry)"},
    });
}

TEST(HeldValues, TheRefreshPeriodRunsThroughGaps)
{
    History history(spec(0, 500));
    history.play({
        {100 * kMs, 1, "1"},
        {200 * kMs, kGap, "(entry)"},
        {300 * kMs, 2, "1"},
        {500 * kMs, kGap, "(entry)"},
        {600 * kMs, 3, "3"},
    });
    EXPECT_EQ(history.refreshed(), "3@600000000");
}

TEST(HeldValues, AnUnchangedTextIsTakenAnewToo)
{
    History history(spec(0, 500));
    history.play({{100 * kMs, 1, "1"}, {600 * kMs, 1, "1"}, {700 * kMs, 2, "1"}, {1100 * kMs, 2, "2"}});
}

TEST(HeldValues, FormattedTextsAreWhatIsRemembered)
{
    FormatSpec format = spec(1000, 0);
    format.decimals = 1;
    History history(format);
    history.play({{1, 2.345, "2.3"}, {2, kGap, "2.3"}});
    format.date = true;
    format.dateFormat = "%Y";
    History dates(format);
    dates.play({{1, 0, "1970"}, {2, kGap, "1970"}});
    EXPECT_EQ(dates.held(), "1970@1");
}

TEST(HeldValues, ATextInPlaceOfADateIsNeitherHeldNorLimited)
{
    FormatSpec format = spec(1000, 500);
    format.date = true;
    format.dateFormat = "%S";
    format.timestampUnit = TimestampUnit::Seconds;
    History history(format);
    history.play({
        {1 * kMs, "soon", "soon"},
        {2 * kMs, kGap, "(entry)"},
        {3 * kMs, 7, "07"},
        {4 * kMs, "soon", "soon"},
        {5 * kMs, kGap, "07"},
        {6 * kMs, 8, "07"},
    });
    EXPECT_EQ(history.held(), "07@6000000");
    EXPECT_EQ(history.refreshed(), "07@3000000");
}

TEST(HeldValues, TimeZeroIsNoEntry)
{
    History history(spec(1000, 1000));
    history.play({{0, 1, "1"}, {1, kGap, "(entry)"}, {2, 2, "2"}, {3, 3, "2"}});
}

TEST(HeldValues, DifferencesAreUnsigned)
{
    // A clock that runs backwards makes the elapsed time huge.
    History history(spec(1000, 1000));
    history.play({{100, 1, "1"}, {99, kGap, "(entry)"}, {98, 2, "2"}});
}

TEST(HeldValues, EmptyTextsAreHeldToo)
{
    History history(spec(1000, 0));
    history.play({{1, "", ""}, {2, kGap, ""}});
    EXPECT_EQ(history.held(), "@1");
}

TEST(HeldValues, KeysAreExact)
{
    History history(spec(1000, 0));
    history.cfg.formats["K"] = spec(1000, 0);
    history.play({{1, 7, "7"}});
    SwJsonObject const root;
    OverlayTextFormatter const formatter;
    EXPECT_EQ(formatter.lookupFormatted(&root, "K", history.cfg, history.runtime, 2), "(entry)");
    EXPECT_EQ(formatter.lookupFormatted(&root, "k", history.cfg, history.runtime, 2), "7");
    EXPECT_EQ(history.runtime.heldValues.size(), 1U);
}

TEST(HeldValues, AKeyThatOccursTwiceIsLookedUpTwice)
{
    History history(spec(1000, 1000));
    SwJsonObject const root{{"k", 7}};
    OverlayTextFormatter const formatter;
    EXPECT_EQ(formatter.expandTemplate("%k %k", &root, history.cfg, history.runtime, 0, {}), "7 7");
    EXPECT_EQ(formatter.expandTemplate("%k %{k}", &root, history.cfg, history.runtime, 9, {}), "7 7");
    EXPECT_EQ(history.held(), "7@9");
}

// Beyond 24 entries they are found by their hash, and names beyond 15 bytes take memory for it.
class ManyKeys : public testing::Test {
protected:
    static constexpr int kKeys = 40;

    ManyKeys()
    {
        cfg_.missingPlaceholder = "(block)";
        for (int i = 0; i < kKeys; ++i) {
            FormatSpec format = spec(1000, 500);
            format.missingPlaceholder = placeholder(i);
            cfg_.formats[key(i)] = format;
            cfg_.formatString += "%" + key(i) + " ";
        }
        cfg_.formatString += "%key_without_a_format";
    }

    static std::string key(int i) { return (i % 2 == 0 ? "k" : "a_name_of_more_than_15_bytes_") + std::to_string(i); }
    static std::string placeholder(int i) { return "(" + std::to_string(i) + ")"; }

    /// The values are `first` + i under the i-th key, every `step`-th key from the first on; 0 for no key at all.
    std::string shown(std::uint64_t nowNs, int first, int step)
    {
        SwJsonObject root{{"other", 1}};
        for (int i = 0; step != 0 && i < kKeys; i += step) {
            root[key(i)] = first + i;
        }
        return OverlayTextFormatter().expandTemplate(cfg_.formatString, &root, cfg_, runtime_, nowNs, {});
    }

    /// What that gives when the even keys show `even` + i and the odd ones `odd` + i, 0 for their placeholder.
    static std::string expected(int even, int odd)
    {
        std::string out;
        for (int i = 0; i < kKeys; ++i) {
            int const first = i % 2 == 0 ? even : odd;
            out += (first == 0 ? placeholder(i) : std::to_string(first + i)) + " ";
        }
        return out + "(block)";
    }

    OverlayCfg cfg_;
    OverlayRuntime runtime_;
};

TEST_F(ManyKeys, EachIsHeldAndLimitedOnItsOwn)
{
    std::uint64_t const t = 5;
    EXPECT_EQ(shown(t, 0, 0), expected(0, 0));
    EXPECT_EQ(runtime_.heldValues.size(), 0U);
    EXPECT_EQ(shown(t, 100, 1), expected(100, 100));
    EXPECT_EQ(runtime_.heldValues.size(), 40U);
    EXPECT_EQ(runtime_.refreshValues.size(), 40U);
    EXPECT_EQ(shown(t + 499 * kMs, 200, 1), expected(100, 100)) << "the refresh period is exclusive";
    EXPECT_EQ(shown(t + 500 * kMs, 300, 2), expected(300, 100)) << "odd keys are held";
    EXPECT_EQ(shown(t + 1499 * kMs, 0, 0), expected(300, 100)) << "the hold period is inclusive";
    EXPECT_EQ(shown(t + 1499 * kMs + 1, 0, 0), expected(300, 0));
    EXPECT_EQ(shown(t + 1500 * kMs + 1, 0, 0), expected(0, 0));
    EXPECT_EQ(shown(t + 1600 * kMs, 400, 1), expected(400, 400));
    EXPECT_EQ(runtime_.heldValues.size(), 40U);
    EXPECT_EQ(runtime_.refreshValues.size(), 40U);
    EXPECT_EQ(runtime_.heldValues.at(key(39)).text, "439");
    EXPECT_EQ(runtime_.refreshValues.at(key(38)).timeNs, t + 1600 * kMs);
}

TEST_F(ManyKeys, EachHasItsOwnFormat)
{
    for (int i = 0; i < kKeys; ++i) {
        cfg_.formats.at(key(i)).decimals = i;
    }
    SwJsonObject root;
    std::string text;
    for (int i = 0; i < kKeys; ++i) {
        root[key(i)] = 7;
        text += (i == 0 ? "7" : "7." + std::string(static_cast<std::size_t>(i), '0')) + " ";
    }
    EXPECT_EQ(OverlayTextFormatter().expandTemplate(cfg_.formatString, &root, cfg_, runtime_, 5, {}), text + "(block)");
}

}  // namespace
}  // namespace stanag_overlay
