// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The frame's time reaches the plugin also where no symbol of the loading code is visible to it.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <array>
#include <cstddef>
#include <cstdint>

TEST(LocalHost, GivesTheFramesTime)
{
    void* const module = dlopen(LOCAL_HOST_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    auto* const renderAt =
        reinterpret_cast<void (*)(std::uint64_t const*, std::size_t, bool*)>(dlsym(module, "renderAt"));
    ASSERT_NE(renderAt, nullptr);
    constexpr std::uint64_t kMs = 1000000;
    constexpr std::array<std::uint64_t, 4> kTimes = {1000 * kMs, 1200 * kMs - 1, 1200 * kMs, 5000 * kMs};
    std::array<bool, kTimes.size()> shown{};
    renderAt(kTimes.data(), kTimes.size(), shown.data());
    EXPECT_EQ(shown, (std::array<bool, 4>{false, false, true, true}));
}
