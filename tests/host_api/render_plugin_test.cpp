// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plugin interface as a host sees it.
#include "IRenderPlugin.h"

#include "RenderContext.h"
#include "slot_of.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

TEST(RenderPlugin, SlotsStandInTheAgreedOrder)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<IRenderPlugin>);  // slots 0 and 1
    EXPECT_EQ(slotOf(&IRenderPlugin::getName), 2U);
    EXPECT_EQ(slotOf(&IRenderPlugin::getUuid), 3U);
    EXPECT_EQ(slotOf(&IRenderPlugin::input_types), 4U);
    EXPECT_EQ(slotOf(&IRenderPlugin::input_requirements), 5U);
    EXPECT_EQ(slotOf(&IRenderPlugin::enableDebug), 6U);
    EXPECT_EQ(slotOf(&IRenderPlugin::init), 7U);
    EXPECT_EQ(slotOf(&IRenderPlugin::getConfigList), 8U);
    EXPECT_EQ(slotOf(&IRenderPlugin::setConfig), 9U);
    EXPECT_EQ(slotOf(&IRenderPlugin::render), 10U);
}

TEST(RenderPlugin, InitRecordHoldsBackendThenPainter)
{
    EXPECT_EQ(offsetof(RenderInit, backend), 0U);
    EXPECT_EQ(offsetof(RenderInit, painter), sizeof(void*));
}
