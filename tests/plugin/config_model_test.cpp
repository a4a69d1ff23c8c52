// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The records a configuration is read into: their defaults, which stand nowhere else.
#include "stanag_overlay_records.h"

#include "overlay_numbers.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace stanag_overlay {
namespace {

TEST(ConfigModel, DefaultBlock)
{
    OverlayCfg const record;
    EXPECT_EQ(record.thickness, 1);
    EXPECT_EQ(record.textR, 255);
    EXPECT_EQ(record.textG, 255);
    EXPECT_EQ(record.textB, 255);
    EXPECT_EQ(record.textSize, 16);
    EXPECT_EQ(record.posX, 0.005F);
    EXPECT_EQ(record.posY, 0.009F);
    EXPECT_EQ(record.bgR, 0);
    EXPECT_EQ(record.bgG, 0);
    EXPECT_EQ(record.bgB, 0);
    EXPECT_EQ(record.bgAlpha, 0.5F);
    EXPECT_EQ(record.formatString, "");
    EXPECT_EQ(record.decimals, -1);
    EXPECT_TRUE(record.trimTrailingZeros);
    EXPECT_EQ(record.missingPlaceholder, "--");
    EXPECT_FALSE(record.condition.enabled);
    EXPECT_TRUE(record.formats.empty());
    EXPECT_EQ(record.updateEveryNFrames, 1);
}

TEST(ConfigModel, PositionAndOpacityAreSinglePrecision)
{
    static_assert(std::is_same_v<decltype(OverlayCfg::posX), float>);
    static_assert(std::is_same_v<decltype(OverlayCfg::posY), float>);
    static_assert(std::is_same_v<decltype(OverlayCfg::bgAlpha), float>);
    OverlayCfg const record;
    EXPECT_EQ(static_cast<double>(record.posX), 0.004999999888241291);
    EXPECT_EQ(static_cast<double>(record.posY), 0.008999999612569809);
}

TEST(ConfigModel, DefaultFormat)
{
    FormatSpec const spec;
    EXPECT_FALSE(spec.date);
    EXPECT_EQ(spec.decimals, -1);
    EXPECT_FALSE(spec.trimTrailingZeros);
    EXPECT_EQ(spec.dateFormat, "%H:%M:%S %d-%m-%Y");
    EXPECT_EQ(spec.timestampUnit, TimestampUnit::Milliseconds);
    EXPECT_FALSE(spec.localTime);
    EXPECT_EQ(spec.missingPlaceholder, "--");
    EXPECT_FALSE(spec.hasMin);
    EXPECT_FALSE(spec.hasMax);
    EXPECT_EQ(spec.minValue, 0.0);
    EXPECT_EQ(spec.maxValue, 0.0);
    EXPECT_TRUE(spec.invalidValues.empty());
    EXPECT_EQ(spec.holdLastNs, 0U);
    EXPECT_EQ(spec.refreshEveryNs, 0U);
}

TEST(ConfigModel, DefaultCondition)
{
    ConditionCfg const condition;
    EXPECT_FALSE(condition.enabled);
    EXPECT_EQ(condition.key, "");
    EXPECT_EQ(condition.op, ConditionOp::Exists);
    EXPECT_EQ(condition.value, "");
    EXPECT_FALSE(condition.hasBitmask);
    EXPECT_EQ(condition.bitmask, 0U);
    EXPECT_EQ(condition.showAfterNs, 0U);
    EXPECT_EQ(condition.keepAfterNs, 0U);
}

// Bindings take the fields in the order in which they stand.
TEST(ConfigModel, FieldsStandInTheirOrder)
{
    OverlayCfg const record;
    auto const& [thickness, textR, textG, textB, textSize, posX, posY, bgR, bgG, bgB, bgAlpha, formatString, decimals,
                 trimTrailingZeros, missingPlaceholder, condition, formats, updateEveryNFrames] = record;
    EXPECT_EQ(&thickness, &record.thickness);
    EXPECT_EQ(&textR, &record.textR);
    EXPECT_EQ(&textG, &record.textG);
    EXPECT_EQ(&textB, &record.textB);
    EXPECT_EQ(&textSize, &record.textSize);
    EXPECT_EQ(&posX, &record.posX);
    EXPECT_EQ(&posY, &record.posY);
    EXPECT_EQ(&bgR, &record.bgR);
    EXPECT_EQ(&bgG, &record.bgG);
    EXPECT_EQ(&bgB, &record.bgB);
    EXPECT_EQ(&bgAlpha, &record.bgAlpha);
    EXPECT_EQ(&formatString, &record.formatString);
    EXPECT_EQ(&decimals, &record.decimals);
    EXPECT_EQ(&trimTrailingZeros, &record.trimTrailingZeros);
    EXPECT_EQ(&missingPlaceholder, &record.missingPlaceholder);
    EXPECT_EQ(&condition, &record.condition);
    EXPECT_EQ(&formats, &record.formats);
    EXPECT_EQ(&updateEveryNFrames, &record.updateEveryNFrames);
}

TEST(ConfigModel, FormatFieldsStandInTheirOrder)
{
    FormatSpec const spec;
    auto const& [date, decimals, trimTrailingZeros, dateFormat, timestampUnit, localTime, missingPlaceholder, hasMin,
                 hasMax, minValue, maxValue, invalidValues, holdLastNs, refreshEveryNs] = spec;
    EXPECT_EQ(&date, &spec.date);
    EXPECT_EQ(&decimals, &spec.decimals);
    EXPECT_EQ(&trimTrailingZeros, &spec.trimTrailingZeros);
    EXPECT_EQ(&dateFormat, &spec.dateFormat);
    EXPECT_EQ(&timestampUnit, &spec.timestampUnit);
    EXPECT_EQ(&localTime, &spec.localTime);
    EXPECT_EQ(&missingPlaceholder, &spec.missingPlaceholder);
    EXPECT_EQ(&hasMin, &spec.hasMin);
    EXPECT_EQ(&hasMax, &spec.hasMax);
    EXPECT_EQ(&minValue, &spec.minValue);
    EXPECT_EQ(&maxValue, &spec.maxValue);
    EXPECT_EQ(&invalidValues, &spec.invalidValues);
    EXPECT_EQ(&holdLastNs, &spec.holdLastNs);
    EXPECT_EQ(&refreshEveryNs, &spec.refreshEveryNs);
}

TEST(ConfigModel, ConditionFieldsStandInTheirOrder)
{
    ConditionCfg const record;
    auto const& [enabled, key, op, value, hasBitmask, bitmask, showAfterNs, keepAfterNs] = record;
    EXPECT_EQ(&enabled, &record.enabled);
    EXPECT_EQ(&key, &record.key);
    EXPECT_EQ(&op, &record.op);
    EXPECT_EQ(&value, &record.value);
    EXPECT_EQ(&hasBitmask, &record.hasBitmask);
    EXPECT_EQ(&bitmask, &record.bitmask);
    EXPECT_EQ(&showAfterNs, &record.showAfterNs);
    EXPECT_EQ(&keepAfterNs, &record.keepAfterNs);
}

TEST(ConfigModel, EnumNumbers)
{
    static_assert(sizeof(TimestampUnit) == 4 && sizeof(ConditionOp) == 4);
    EXPECT_EQ(static_cast<int>(TimestampUnit::Seconds), 0);
    EXPECT_EQ(static_cast<int>(TimestampUnit::Milliseconds), 1);
    EXPECT_EQ(static_cast<int>(TimestampUnit::Microseconds), 2);
    EXPECT_EQ(static_cast<int>(ConditionOp::Exists), 0);
    EXPECT_EQ(static_cast<int>(ConditionOp::Equals), 1);
    EXPECT_EQ(static_cast<int>(ConditionOp::NotEquals), 2);
    EXPECT_EQ(static_cast<int>(ConditionOp::GreaterThan), 3);
    EXPECT_EQ(static_cast<int>(ConditionOp::GreaterOrEqual), 4);
    EXPECT_EQ(static_cast<int>(ConditionOp::LessThan), 5);
    EXPECT_EQ(static_cast<int>(ConditionOp::LessOrEqual), 6);
}

TEST(ConfigModel, DurationsAreUnsignedAndAtMostTenMinutes)
{
    static_assert(std::is_same_v<decltype(FormatSpec::holdLastNs), std::uint64_t>);
    static_assert(std::is_same_v<decltype(FormatSpec::refreshEveryNs), std::uint64_t>);
    static_assert(std::is_same_v<decltype(ConditionCfg::showAfterNs), std::uint64_t>);
    static_assert(std::is_same_v<decltype(ConditionCfg::keepAfterNs), std::uint64_t>);
    EXPECT_EQ(static_cast<std::uint64_t>(kMaxDurationMs) * kNsPerMs, 600000000000U);
    SwJsonObject const object{{"longest", 2147483647}, {"negative", -2147483647}};
    std::uint64_t duration = 1;
    readDurationMs(object, "longest", duration);
    EXPECT_EQ(duration, 600000000000U);
    readDurationMs(object, "negative", duration);
    EXPECT_EQ(duration, 0U);
}

TEST(ConfigModel, RecordsAreValues)
{
    OverlayCfg first;
    first.formats["k"].invalidValues = {"0"};
    OverlayCfg second = first;
    second.formats["k"].invalidValues.emplace_back("1");
    EXPECT_EQ(first.formats["k"].invalidValues, std::vector<std::string>{"0"});
    OverlayCfg const third = std::move(second);
    EXPECT_EQ(third.formats.at("k").invalidValues, (std::vector<std::string>{"0", "1"}));
}

TEST(ConfigModel, FormatsAreFoundByExactKey)
{
    OverlayCfg record;
    record.formats["Alt"];
    EXPECT_EQ(record.formats.count("Alt"), 1U);
    EXPECT_EQ(record.formats.count("alt"), 0U);
    EXPECT_EQ(record.formats.count("Alt "), 0U);
}

}  // namespace
}  // namespace stanag_overlay
