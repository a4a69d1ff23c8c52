// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What a block remembers is bounded by its configuration: one entry at most for each key of "formats", and none
// for a key that only the telemetry brings, however many of those come.
#include "overlay_numbers.h"
#include "stanag_overlay_config.h"
#include "stanag_overlay_format.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace stanag_overlay {
namespace {

using Keys = std::set<std::string>;

constexpr int kFrames = 5000;

struct Row {
    char const* name;
    char const* block;  ///< of the configuration
    Keys held;
    Keys limited;
};

Keys keysOf(std::unordered_map<std::string, TimedText> const& entries)
{
    Keys keys;
    for (auto const& entry : entries) {
        keys.insert(entry.first);
    }
    return keys;
}

/// Three keys that never come again, and some that always come.
SwJsonObject telemetry(int frame)
{
    SwJsonObject root{{"a", frame}, {"b c", "text"}, {"d", 1.5}, {"word", "no time"}, {"%", frame}};
    for (char const* const name : {"new_", "a", "b c"}) {
        root[name + std::to_string(frame)] = frame;
    }
    return root;
}

std::vector<std::string> namesOf(SwJsonObject const& root)
{
    std::vector<std::string> names;
    for (auto const& member : root) {
        names.emplace_back(member.first);
    }
    return names;
}

TEST(MemoryBounds, OnlyConfiguredKeysThatAreLookedUpAreRemembered)
{
    std::vector<Row> const rows = {
        {"no formats", R"({"formatString":"%a %{b c} %d %gone"})", {}, {}},
        {"no formats, every key listed", R"({})", {}, {}},
        {"named by template and formats",
         R"({"formatString":"%a %d %gone","formats":{"a":{"holdLastMs":1000,"refreshEveryMs":1},
            "b c":{"holdLastMs":1000,"refreshEveryMs":1}}})",
         {"a"},
         {"a"}},
        {"every key listed",
         R"({"formats":{"a":{"holdLastMs":1000},"b c":{"refreshEveryMs":1},"d":{"holdLastMs":1,"refreshEveryMs":1},
            "gone":{"holdLastMs":1000,"refreshEveryMs":1}}})",
         {"a", "d"},
         {"b c", "d"}},
        {"a key that never comes",
         R"({"formatString":"%gone","formats":{"gone":{"holdLastMs":1000,"refreshEveryMs":1}}})",
         {},
         {}},
        {"a key that is never valid",
         R"({"formatString":"%a","formats":{"a":{"maxValue":-1,"holdLastMs":1000,"refreshEveryMs":1}}})",
         {},
         {}},
        {"a text in place of a date",
         R"({"formatString":"%word","formats":{"word":{"date":true,"holdLastMs":1000,"refreshEveryMs":1}}})",
         {},
         {}},
        {"named many times",
         R"({"formatString":"%a %a %{a} %{b c}%{%}","formats":{"a":{"holdLastMs":1000},"b c":{"refreshEveryMs":1},
            "%":{"holdLastMs":1000}}})",
         {"a", "%"},
         {"b c"}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<OverlayCfg> const blocks =
            OverlayConfigParser().parse(std::string("{\"overlay\":[") + row.block + "]}");
        ASSERT_EQ(blocks.size(), 1U);
        OverlayRuntime runtime;
        for (int frame = 1; frame <= kFrames; ++frame) {
            SwJsonObject const root = telemetry(frame);
            OverlayTextFormatter().expandTemplate(blocks[0].formatString, &root, blocks[0], runtime,
                                                  static_cast<std::uint64_t>(frame) * kNsPerMs, namesOf(root));
        }
        EXPECT_EQ(keysOf(runtime.heldValues), row.held);
        EXPECT_EQ(keysOf(runtime.refreshValues), row.limited);
        EXPECT_LE(runtime.heldValues.size(), blocks[0].formats.size());
        EXPECT_LE(runtime.refreshValues.size(), blocks[0].formats.size());
        EXPECT_LE(runtime.heldValues.bucket_count(), 13U) << "no trace of keys that were looked up in vain";
    }
}

}  // namespace
}  // namespace stanag_overlay
