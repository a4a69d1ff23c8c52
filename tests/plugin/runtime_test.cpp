// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a block carries from frame to frame starts empty and belongs to that block alone.
#include "stanag_overlay_runtime.h"

#include "stanag_overlay_format.h"

#include <gtest/gtest.h>

namespace stanag_overlay {
namespace {

TEST(Runtime, DefaultRecordIsEmpty)
{
    OverlayRuntime const runtime{};
    EXPECT_EQ(runtime.text, "");
    EXPECT_EQ(runtime.lastUpdateFrame, 0U);
    EXPECT_EQ(runtime.conditionSince, 0U);
    EXPECT_EQ(runtime.conditionLastTrue, 0U);
    EXPECT_TRUE(runtime.heldValues.empty());
    EXPECT_TRUE(runtime.refreshValues.empty());
    EXPECT_EQ(runtime.heldValues.max_load_factor(), 1.0F);
    EXPECT_EQ(runtime.refreshValues.max_load_factor(), 1.0F);
}

// Bindings take the fields in the order in which they stand.
TEST(Runtime, FieldsStandInTheirOrder)
{
    OverlayRuntime const runtime{};
    auto const& [text, lastUpdateFrame, conditionSince, conditionLastTrue, heldValues, refreshValues] = runtime;
    EXPECT_EQ(&text, &runtime.text);
    EXPECT_EQ(&lastUpdateFrame, &runtime.lastUpdateFrame);
    EXPECT_EQ(&conditionSince, &runtime.conditionSince);
    EXPECT_EQ(&conditionLastTrue, &runtime.conditionLastTrue);
    EXPECT_EQ(&heldValues, &runtime.heldValues);
    EXPECT_EQ(&refreshValues, &runtime.refreshValues);
    TimedText const timed;
    auto const& [value, time] = timed;
    EXPECT_EQ(&value, &timed.text);
    EXPECT_EQ(&time, &timed.timeNs);
}

TEST(Runtime, BlocksWithTheSameTemplateKeepSeparateHeldValues)
{
    OverlayTextFormatter const formatter;
    OverlayCfg cfg;
    cfg.formats["k"].holdLastNs = 1000;
    OverlayRuntime first;
    OverlayRuntime second;
    SwJsonObject const root{{"k", 7}};
    EXPECT_EQ(formatter.expandTemplate("%k", &root, cfg, first, 100, {}), "7");
    EXPECT_EQ(formatter.expandTemplate("%k", nullptr, cfg, first, 200, {}), "7");
    EXPECT_EQ(formatter.expandTemplate("%k", nullptr, cfg, second, 200, {}), "--");
    EXPECT_TRUE(second.heldValues.empty());
}

TEST(Runtime, ReplacingTheRecordForgetsEverything)
{
    OverlayTextFormatter const formatter;
    OverlayCfg cfg;
    cfg.formats["k"].holdLastNs = 1000;
    cfg.formats["k"].refreshEveryNs = 1000;
    OverlayRuntime runtime;
    SwJsonObject const root{{"k", 7}};
    formatter.expandTemplate("%k", &root, cfg, runtime, 100, {});
    EXPECT_EQ(runtime.heldValues.size(), 1U);
    EXPECT_EQ(runtime.refreshValues.size(), 1U);
    runtime = OverlayRuntime{};
    EXPECT_TRUE(runtime.heldValues.empty());
    EXPECT_TRUE(runtime.refreshValues.empty());
    EXPECT_EQ(formatter.expandTemplate("%k", nullptr, cfg, runtime, 100, {}), "--");
}

}  // namespace
}  // namespace stanag_overlay
