// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Evaluation of conditions: the test of one value, and the two delays around it.
#include "stanag_overlay_condition.h"
#include "stanag_overlay_config.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>

namespace stanag_overlay {

// Failure messages name the answer.
void PrintTo(Visibility visibility, std::ostream* out)
{
    *out << (visibility == Visibility::Hidden ? "Hidden" : visibility == Visibility::Refresh ? "Refresh" : "Keep");
}

namespace {

constexpr auto kHidden = Visibility::Hidden;
constexpr auto kRefresh = Visibility::Refresh;
constexpr auto kKeep = Visibility::Keep;
constexpr std::uint64_t kMs = 1000000;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

OverlayCfg blockWith(std::string const& conditionText)
{
    auto records = OverlayConfigParser().parse(R"({"overlay":[{"condition":)" + conditionText + "}]}");
    EXPECT_EQ(records.size(), 1U) << conditionText;
    return records.empty() ? OverlayCfg() : records.front();
}

Visibility at(OverlayCfg const& cfg, OverlayRuntime& runtime, SwJsonObject const* root, std::uint64_t nowNs)
{
    return OverlayConditionEvaluator().visibility(cfg, runtime, root, nowNs);
}

struct Row {
    char const* name;
    char const* condition;  ///< without its key, which is "k"
    SwJsonValue value;      ///< of the key "k"
    bool shows;
};

void check(std::vector<Row> const& rows)
{
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        OverlayCfg const cfg = blockWith(std::string(R"({"key":"k")") + row.condition + "}");
        OverlayRuntime runtime;
        SwJsonObject const root{{"k", row.value}};
        EXPECT_EQ(at(cfg, runtime, &root, 5), row.shows ? kRefresh : kHidden) << row.condition;
        EXPECT_EQ(runtime.conditionSince, row.shows ? 5U : 0U);
        EXPECT_EQ(runtime.conditionLastTrue, row.shows ? 5U : 0U);
    }
}

TEST(ConditionVisibility, AnswersHaveTheirNumbers)
{
    EXPECT_EQ(static_cast<int>(Visibility::Hidden), 0);
    EXPECT_EQ(static_cast<int>(Visibility::Refresh), 1);
    EXPECT_EQ(static_cast<int>(Visibility::Keep), 2);
}

TEST(ConditionVisibility, WithoutAConditionAlwaysRefreshAndNoTrace)
{
    OverlayCfg cfg;
    cfg.condition.key = "k";
    cfg.condition.showAfterNs = 100;
    OverlayRuntime runtime;
    SwJsonObject const root{{"k", 1}};
    EXPECT_EQ(at(cfg, runtime, &root, 5), kRefresh);
    EXPECT_EQ(at(cfg, runtime, nullptr, 6), kRefresh);
    EXPECT_EQ(runtime.conditionSince, 0U);
    EXPECT_EQ(runtime.conditionLastTrue, 0U);
}

TEST(ConditionVisibility, MissingKeysAreFalse)
{
    OverlayCfg const cfg = blockWith(R"({"key":"k"})");
    OverlayCfg const negated = blockWith(R"({"key":"k","notEquals":1})");
    OverlayRuntime runtime;
    SwJsonObject const empty;
    SwJsonObject const others{{"K", 1}, {"k ", 1}, {"kk", 1}};
    EXPECT_EQ(at(cfg, runtime, nullptr, 1), kHidden);
    EXPECT_EQ(at(cfg, runtime, &empty, 2), kHidden);
    EXPECT_EQ(at(cfg, runtime, &others, 3), kHidden);
    EXPECT_EQ(at(negated, runtime, nullptr, 4), kHidden) << "a missing key differs from nothing";
    EXPECT_EQ(at(negated, runtime, &others, 5), kHidden);
}

TEST(ConditionVisibility, Exists)
{
    check({
        {"null", "", nullptr, true},
        {"false", "", false, true},
        {"zero", "", 0, true},
        {"empty text", "", "", true},
        {"object", "", SwJsonObject{}, true},
        {"a value beside it does not matter", R"(,"operator":"exists","value":1)", 2, true},
    });
}

TEST(ConditionVisibility, Equals)
{
    check({
        {"text with a letter", R"(,"equals":"x5")", 5, false},
        {"integer", R"(,"equals":5)", 5, true},
        {"other integer", R"(,"equals":5)", 6, false},
        {"double", R"(,"equals":5)", 5.0, true},
        {"double within the tolerance", R"(,"equals":5)", 5.0000000009, true},
        {"double outside the tolerance", R"(,"equals":5)", 5.0000000011, false},
        {"text with other digits", R"(,"equals":5)", "5.000", true},
        {"text with an exponent", R"(,"equals":5)", "5e0", true},
        {"hexadecimal text", R"(,"equals":26)", "0x1A", true},
        {"text that is no number", R"(,"equals":5)", "5 m", false},
        {"operand with an exponent", R"(,"equals":"5e0")", 5, true},
        {"1.5 is not 1.5000001", R"(,"equals":"1.5000001e0")", 1.5, false},
        {"1.5 is 15e-1", R"(,"equals":"15e-1")", 1.5, true},
        {"integers beyond 2^53 lose low digits", R"(,"equals":9007199254740992)", 9007199254740993LL, true},
        {"so 2^53 + 1 is not itself", R"(,"equals":9007199254740993)", 9007199254740993LL, false},
        {"the text of 2^53 + 1 is", R"(,"equals":9007199254740993)", "9007199254740993", true},
        {"and is not 2^53", R"(,"equals":9007199254740992)", "9007199254740993", false},
        {"true", R"(,"equals":true)", true, true},
        {"true and false", R"(,"equals":true)", false, false},
        {"letter case counts", R"(,"equals":"TRUE")", true, false},
        {"text true", R"(,"equals":true)", "true", true},
        {"a Bool is no number", R"(,"equals":1)", true, false},
        {"null", R"(,"equals":null)", nullptr, true},
        {"null against another value", R"(,"equals":null)", 5, false},
        {"not null", R"(,"notEquals":null)", nullptr, false},
        {"null and the text null", R"(,"equals":null)", "null", true},
        {"object", R"(,"equals":{})", SwJsonObject{{"a", 1}}, true},
        {"array and object share their text", R"(,"equals":{})", SwJsonArray{1}, true},
        {"text", R"(,"equals":"abc")", "abc", true},
        {"other text", R"(,"equals":"abc")", "abd", false},
        {"blank counts in texts", R"(,"equals":"abc")", "abc ", false},
        {"two empty texts", R"(,"equals":"")", "", true},
        {"a number has a text", R"(,"equals":"")", 0, false},
        {"number against text", R"(,"equals":"abc")", 5, false},
        {"unknown operator word compares texts", R"(,"operator":"=","value":"abc")", "abc", true},
        {"unknown operator word, other text", R"(,"operator":"=","value":"abc")", "ab", false},
        {"not-a-number is not itself", R"(,"equals":"nan")", kNotANumber, false},
        {"not-a-number texts are numbers too", R"(,"equals":"nan")", "nan", false},
        {"infinity is not itself", R"(,"equals":"inf")", kInfinity, false},
        {"a text beyond every range is a text", R"(,"equals":"1e5000")", "1e5000", true},
    });
}

TEST(ConditionVisibility, NotEquals)
{
    check({
        {"same number", R"(,"notEquals":5)", 5, false},
        {"other number", R"(,"notEquals":5)", 6, true},
        {"same text", R"(,"notEquals":"a")", "a", false},
        {"other text", R"(,"notEquals":"a")", "b", true},
        {"null", R"(,"notEquals":1)", nullptr, true},
        {"not-a-number", R"(,"notEquals":"nan")", kNotANumber, true},
    });
}

TEST(ConditionVisibility, Orderings)
{
    check({
        {"> text above", R"(,"operator":">","value":10)", "11", true},
        {"> text with a unit", R"(,"operator":">","value":10)", "11 m", false},
        {"> Bool", R"(,"operator":">","value":10)", true, false},
        {"> Bool against a small operand", R"(,"operator":">","value":-5)", true, false},
        {"> null", R"(,"operator":">","value":-5)", nullptr, false},
        {"> object", R"(,"operator":">","value":-5)", SwJsonObject{}, false},
        {"> array", R"(,"operator":">","value":-5)", SwJsonArray{1}, false},
        {"> equal", R"(,"operator":">","value":10)", 10, false},
        {"> barely above, no tolerance", R"(,"operator":">","value":10)", 10.000000000000002, true},
        {">= equal", R"(,"operator":">=","value":10)", 10, true},
        {">= below", R"(,"operator":">=","value":10)", 9.999999999999998, false},
        {"< below", R"(,"operator":"<","value":10)", 9, true},
        {"< equal", R"(,"operator":"<","value":10)", 10.0, false},
        {"<= equal", R"(,"operator":"<=","value":10)", "10", true},
        {"<= above", R"(,"operator":"<=","value":10)", 10.5, false},
        {"< negative", R"(,"operator":"lt","value":"-1.5")", -2, true},
        {"operand abc", R"(,"operator":">","value":"abc")", 5, false},
        {"operand with text after it", R"(,"operator":">","value":"1 m")", 5, false},
        {"operand true", R"(,"operator":">","value":true)", 5, false},
        {"no operand", R"(,"operator":">")", 5, false},
        {"operand with an exponent", R"(,"operator":">","value":"1e1")", 11, true},
        {"not-a-number >=", R"(,"operator":">=","value":0)", kNotANumber, false},
        {"not-a-number <", R"(,"operator":"<","value":0)", kNotANumber, false},
        {"not-a-number operand", R"(,"operator":"<=","value":"nan")", 0, false},
        {"infinity", R"(,"operator":">","value":"1e308")", kInfinity, true},
        {"integers beyond 2^53 lose low digits", R"(,"operator":">","value":9007199254740992)", 9007199254740993LL,
         false},
        {"texts do not", R"(,"operator":">","value":9007199254740992)", "9007199254740993", true},
    });
}

TEST(ConditionVisibility, Bitmask)
{
    check({
        {"a masked bit is set", R"(,"bitmask":4)", 6, true},
        {"no masked bit is set", R"(,"bitmask":4)", 3, false},
        {"text", R"(,"bitmask":4)", "0x4", true},
        {"bit 31 cannot be read", R"(,"bitmask":4)", 2147483652LL, false},
        {"bits above 31 are ignored", R"(,"bitmask":4)", 4294967300LL, true},
        {"negative", R"(,"bitmask":4)", -1, false},
        {"Bool", R"(,"bitmask":1)", true, false},
        {"null", R"(,"bitmask":1)", nullptr, false},
        {"no number", R"(,"bitmask":1)", "abc", false},
        {"fraction", R"(,"bitmask":4)", 4.5, true},
        {"exists with a value tests equality", R"(,"bitmask":6,"operator":"exists","value":2)", 3, true},
        {"exists with a value, other bits", R"(,"bitmask":6,"operator":"exists","value":2)", 6, false},
        {"equals", R"(,"bitmask":6,"equals":2)", 11, true},
        {"equals 0", R"(,"bitmask":6,"equals":0)", 8, true},
        {"equals, other bits", R"(,"bitmask":6,"equals":2)", 15, false},
        {"equals hexadecimal", R"(,"bitmask":255,"equals":"0x0F")", 15, true},
        {"equals a value that is no unsigned number", R"(,"bitmask":6,"equals":2.0)", 2, false},
        {"equals an empty text", R"(,"bitmask":6,"equals":"")", 0, false},
        {"notEquals", R"(,"bitmask":6,"notEquals":2)", 4, true},
        {"notEquals, equal", R"(,"bitmask":6,"notEquals":2)", 2, false},
        {"notEquals of an unreadable operand", R"(,"bitmask":6,"notEquals":"abc")", 2, false},
        {"> above", R"(,"bitmask":6,"operator":">","value":2)", 4, true},
        {"> equal", R"(,"bitmask":6,"operator":">","value":2)", 2, false},
        {">= equal", R"(,"bitmask":6,"operator":">=","value":2)", 3, true},
        {">= below", R"(,"bitmask":6,"operator":">=","value":2)", 1, false},
        {"< below", R"(,"bitmask":6,"operator":"<","value":4)", 3, true},
        {"< equal", R"(,"bitmask":6,"operator":"<","value":4)", 4, false},
        {"<= equal", R"(,"bitmask":6,"operator":"<=","value":4)", 5, true},
        {"<= above", R"(,"bitmask":6,"operator":"<=","value":4)", 6, false},
        {"comparison is unsigned", R"(,"bitmask":6,"operator":"<","value":"-0x1")", 6, true},
        {"ordering without operand", R"(,"bitmask":6,"operator":"<")", 6, false},
    });
}

// One step of a history: the condition's value at a time and the expected answer.
struct Step {
    std::uint64_t nowNs;
    bool holds;
    Visibility expected;
    std::uint64_t sinceAfter;
    std::uint64_t lastTrueAfter;
};

void play(OverlayCfg const& cfg, std::vector<Step> const& steps)
{
    OverlayRuntime runtime;
    SwJsonObject const present{{"k", 1}};
    for (Step const& step : steps) {
        SCOPED_TRACE(step.nowNs);
        EXPECT_EQ(at(cfg, runtime, step.holds ? &present : nullptr, step.nowNs), step.expected);
        EXPECT_EQ(runtime.conditionSince, step.sinceAfter);
        EXPECT_EQ(runtime.conditionLastTrue, step.lastTrueAfter);
    }
}

TEST(ConditionVisibility, ShowAfterWaitsWhileStrictlyLess)
{
    std::uint64_t const t = 7;
    std::uint64_t const delay = 2000 * kMs;
    play(blockWith(R"({"key":"k","showAfterMs":2000})"), {
                                                             {t, true, kHidden, t, 0},
                                                             {t + 1, true, kHidden, t, 0},
                                                             {t + delay - 1, true, kHidden, t, 0},
                                                             {t + delay, true, kRefresh, t, t + delay},
                                                             {t + delay + 1, true, kRefresh, t, t + delay + 1},
                                                         });
}

TEST(ConditionVisibility, OneFalseFrameRestartsTheWait)
{
    std::uint64_t const delay = 2000 * kMs;
    play(blockWith(R"({"key":"k","showAfterMs":2000})"), {
                                                             {10, true, kHidden, 10, 0},
                                                             {11, false, kHidden, 0, 0},
                                                             {12, true, kHidden, 12, 0},
                                                             {10 + delay, true, kHidden, 12, 0},
                                                             {12 + delay, true, kRefresh, 12, 12 + delay},
                                                         });
}

TEST(ConditionVisibility, KeepAfterLastsWhileLessOrEqual)
{
    std::uint64_t const t = 50;
    std::uint64_t const keep = 1000 * kMs;
    play(blockWith(R"({"key":"k","keepAfterMs":1000})"), {
                                                             {t, true, kRefresh, t, t},
                                                             {t + 1, false, kKeep, 0, t},
                                                             {t + keep, false, kKeep, 0, t},
                                                             {t + keep + 1, false, kHidden, 0, t},
                                                             {t + 2 * keep, false, kHidden, 0, t},
                                                         });
}

TEST(ConditionVisibility, NothingIsKeptBeforeTheConditionWasTrue)
{
    play(blockWith(R"({"key":"k","keepAfterMs":1000})"), {
                                                             {1, false, kHidden, 0, 0},
                                                             {2, false, kHidden, 0, 0},
                                                         });
}

TEST(ConditionVisibility, WithoutKeepAfterAFalseConditionHidesAtOnce)
{
    play(blockWith(R"({"key":"k"})"), {
                                          {5, true, kRefresh, 5, 5},
                                          {5, false, kHidden, 0, 5},
                                          {6, true, kRefresh, 6, 6},
                                      });
}

TEST(ConditionVisibility, BothDelays)
{
    std::uint64_t const ms = kMs;
    play(blockWith(R"({"key":"k","showAfterMs":10,"keepAfterMs":20})"),
         {
             {100 * ms, true, kHidden, 100 * ms, 0},
             {105 * ms, false, kHidden, 0, 0},
             {110 * ms, true, kHidden, 110 * ms, 0},
             {120 * ms, true, kRefresh, 110 * ms, 120 * ms},
             {125 * ms, false, kKeep, 0, 120 * ms},
             // The condition is back: the wait starts again, and waiting hides even within the keep period.
             {126 * ms, true, kHidden, 126 * ms, 120 * ms},
             {130 * ms, false, kKeep, 0, 120 * ms},
             {140 * ms, false, kKeep, 0, 120 * ms},
             {140 * ms + 1, false, kHidden, 0, 120 * ms},
         });
}

TEST(ConditionVisibility, TimeZeroMeansUnset)
{
    play(blockWith(R"({"key":"k","showAfterMs":1,"keepAfterMs":1})"), {
                                                                          {0, true, kHidden, 0, 0},
                                                                          {5, true, kHidden, 5, 0},
                                                                      });
    // A frame shown at time 0 leaves nothing to keep.
    play(blockWith(R"({"key":"k","keepAfterMs":1})"), {
                                                          {0, true, kRefresh, 0, 0},
                                                          {1, false, kHidden, 0, 0},
                                                      });
}

TEST(ConditionVisibility, DifferencesAreUnsigned)
{
    // A clock that runs backwards makes the elapsed time huge: the wait is over, the keep period too.
    play(blockWith(R"({"key":"k","showAfterMs":1,"keepAfterMs":1})"), {
                                                                          {100, true, kHidden, 100, 0},
                                                                          {99, true, kRefresh, 100, 99},
                                                                          {98, false, kHidden, 0, 99},
                                                                      });
}

TEST(ConditionVisibility, OnlyTheTwoTimesAreWritten)
{
    OverlayCfg const cfg = blockWith(R"({"key":"k","keepAfterMs":1})");
    OverlayRuntime runtime;
    runtime.text = "held";
    runtime.lastUpdateFrame = 3;
    SwJsonObject const root{{"k", 1}};
    at(cfg, runtime, &root, 9);
    at(cfg, runtime, nullptr, 10);
    EXPECT_EQ(runtime.text, "held");
    EXPECT_EQ(runtime.lastUpdateFrame, 3U);
    EXPECT_TRUE(runtime.heldValues.empty());
    EXPECT_TRUE(runtime.refreshValues.empty());
}

}  // namespace
}  // namespace stanag_overlay
