// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// JSON nested far deeper than any stack reaches, at every place where JSON comes in, on a thread of 256 kB: read,
// merged, copied, looked at, drawn past and destroyed.
#include "StanagOverlayPlugin.h"

#include "recording_imaging.h"
#include "small_stack.h"
#include "test_host.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// A recursion with as little as three bytes a level would run out of the thread's stack.
constexpr std::size_t kLevels = 100000;
constexpr std::size_t kMillionLevels = 1000000;

std::string nested(bool objects, std::size_t levels = kLevels)
{
    std::string text;
    for (std::size_t level = 0; level < levels; ++level) {
        text += objects ? R"({"a":)" : "[";
    }
    text += "1";
    text.append(levels, objects ? '}' : ']');
    return text;
}

std::string drawnText(StanagOverlayPlugin& plugin, TestHost& host)
{
    return hostRequests(plugin, host.nextFrame(1), {"drawText"});
}

}  // namespace

TEST(DeepNesting, AMillionLevelsAsConfiguration)
{
    runOnSmallStack([] {
        for (bool const objects : {false, true}) {
            std::string const deep = nested(objects, kMillionLevels);
            struct Row {
                char const* before;
                char const* after;
                char const* drawn;
            };
            for (Row const& row : {
                     Row{R"({"overlay":)", "}", ""},
                     Row{R"({"overlay":[{"formatString":"v=%v","condition":{"key":"v","value":)", "}}]}", ""},
                     Row{R"({"overlay":[{"formatString":"v=%v","formats":{"v":)", "}}]}",
                         "drawText 10 10 16 0 0 \"v=7\" on 1920x1080\n"},
                     Row{R"({"overlay":[{"formatString":"v=%v","formats":{"v":{"invalidValues":[)", ",7]}}}]}",
                         "drawText 10 10 16 0 0 \"v=--\" on 1920x1080\n"},
                 }) {
                SCOPED_TRACE(row.before);
                TestHost host;
                host.deliver(kOneBlockTelemetry);
                StanagOverlayPlugin plugin;
                plugin.init(host.init());
                plugin.setConfig(row.before + deep + row.after);
                EXPECT_EQ(drawnText(plugin, host), row.drawn);
            }
        }
    });
}

TEST(DeepNesting, AMillionLevelsAsPayload)
{
    runOnSmallStack([] {
        for (bool const objects : {false, true}) {
            std::string const text = R"({"deep":)" + nested(objects, kMillionLevels) + R"(,"v":7})";
            for (SwAny const& payload : {SwAny(text), SwAny(jsonObject(text))}) {
                TestHost host;
                host.deliver(payload);
                StanagOverlayPlugin plugin;
                plugin.init(host.init());
                plugin.setConfig(R"({"overlay":[{"formatString":"v=%v %deep","formats":{"deep":{"decimals":2,
                    "invalidValues":["x"],"minValue":1,"holdLastMs":1000}}}]})");
                EXPECT_EQ(drawnText(plugin, host), "drawText 10 10 16 0 0 \"v=7 --\" on 1920x1080\n");
            }
        }
    });
}

TEST(DeepNesting, UnderEveryKeyOfTheConfiguration)
{
    std::vector<std::string> const blockKeys{
        "formatString", "textSize", "textColor",         "thickness",          "position",           "bgColor",
        "bgAlpha",      "decimals", "trimTrailingZeros", "missingPlaceholder", "updateEveryNFrames", "condition",
        "formats",      "unknown"};
    std::vector<std::string> const conditionKeys{"key",     "operator",    "value",       "equals", "notEquals",
                                                 "bitmask", "showAfterMs", "keepAfterMs", "unknown"};
    std::vector<std::string> const formatKeys{
        "decimals", "trimTrailingZeros", "date",       "dateFormat",     "timestampUnit",      "timezone", "minValue",
        "maxValue", "invalidValues",     "holdLastMs", "refreshEveryMs", "missingPlaceholder", "unknown"};
    runOnSmallStack([&] {
        for (bool const objects : {false, true}) {
            std::string const deep = nested(objects);
            std::vector<std::string> configs{deep, R"({"overlay":)" + deep + "}", R"({"other":)" + deep + "}",
                                             deep.substr(0, deep.size() / 2)};
            auto const addUnder = [&](std::string const& before, std::vector<std::string> const& keys,
                                      std::string const& after) {
                for (std::string const& key : keys) {
                    configs.push_back(before);
                    configs.back().append("\"").append(key).append("\":").append(deep).append(after);
                }
            };
            addUnder(R"({"overlay":[{)", blockKeys, "}]}");
            addUnder(R"({"overlay":[{"condition":{"key":"v",)", conditionKeys, "}}]}");
            addUnder(R"({"overlay":[{"formats":{"v":{)", formatKeys, "}}}]}");
            addUnder(R"({"overlay":[{"position":{)", {"x", "y"}, "}}]}");
            configs.push_back(R"({"overlay":[{"formats":{"v":{"invalidValues":[)" + deep + "]}}}]}");
            TestHost host;
            host.deliver(kOneBlockTelemetry);
            StanagOverlayPlugin plugin;
            plugin.init(host.init());
            for (std::string const& config : configs) {
                SCOPED_TRACE(config.substr(0, 80));
                plugin.setConfig(config);
                drawnText(plugin, host);
            }
            plugin.setConfig(kOneBlockConfig);
            EXPECT_EQ(drawnText(plugin, host), "drawText 10 10 16 0 0 \"v=7\" on 1920x1080\n");
        }
    });
}

TEST(DeepNesting, InAPayloadOfEveryKind)
{
    runOnSmallStack([] {
        for (bool const objects : {false, true}) {
            std::string const deep = nested(objects);
            std::string const text = R"({"deep":)" + deep + R"(,"v":7})";
            SwJsonObject const object = jsonObject(text);
            std::vector<SwAny> const payloads{SwAny(text), SwAny(object), SwAny(SwJsonValue(object)),
                                              SwAny(SwString(text))};
            for (std::size_t number = 0; number < payloads.size(); ++number) {
                SCOPED_TRACE(std::string(objects ? "objects, payload " : "arrays, payload ") + std::to_string(number));
                TestHost host;
                host.deliver(payloads[number]);
                host.addInput({"again", "", 0, false});
                StanagOverlayPlugin plugin;
                plugin.init(host.init());
                plugin.setConfig(R"({"overlay":[{"formatString":"v=%v %deep","condition":{"key":"deep","equals":"{}"},
                    "formats":{"deep":{"invalidValues":["x","{}"],"decimals":2,"date":true,"minValue":1,
                    "holdLastMs":1000,"refreshEveryMs":1000}}},{},
                    {"formatString":"%deep","condition":{"key":"deep","bitmask":3}}]})");
                std::string const drawn = drawnText(plugin, host);
                EXPECT_NE(drawn.find("\"v=7 --\""), std::string::npos) << drawn.substr(0, 200);
                EXPECT_LT(drawn.size(), 1000U);
                EXPECT_NE(plugin.getConfigList().find(R"("default": ["deep","v"])"), std::string::npos);
            }
        }
    });
}

TEST(DeepNesting, InAPayloadThatIsNoObject)
{
    runOnSmallStack([] {
        std::string const deep = nested(false);
        testing::internal::CaptureStderr();
        for (std::string const& text : {deep, deep.substr(0, kLevels), R"({"a":)" + deep}) {
            TestHost host;
            host.deliver(SwAny(text));
            StanagOverlayPlugin plugin;
            plugin.init(host.init());
            plugin.setConfig(R"({"overlay":[{}]})");
            EXPECT_EQ(drawnText(plugin, host), "");
        }
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "Root is not a JSON object.\n");
    });
}
