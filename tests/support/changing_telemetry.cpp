// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Telemetry for long runs: new keys and values in every frame.
#include "changing_telemetry.h"

namespace changing_telemetry {

namespace {

/// Nine digits up to frame 899999999.
std::string digits(std::uint64_t frame)
{
    return std::to_string(100000000 + frame);
}

}  // namespace

std::string config()
{
    return R"({"overlay":[
        {"textSize":96,"formats":{"heading_deg":{"holdLastMs":1000,"refreshEveryMs":1},
                                  "time":{"date":true,"timestampUnit":"s","holdLastMs":600000},
                                  "never_sent":{"holdLastMs":1000}}},
        {"textSize":96,"position":{"x":0.5,"y":0.1},"formatString":"H %heading_deg T %time N %never_sent",
         "formats":{"heading_deg":{"decimals":1,"holdLastMs":600000,"refreshEveryMs":5},
                    "time":{"date":true,"dateFormat":"%A %H:%M","timestampUnit":"s","refreshEveryMs":5}}},
        {"textSize":96,"position":{"x":0.5,"y":0.5},"formatString":"range %{range m}","updateEveryNFrames":3,
         "condition":{"key":"range m","operator":"gt","value":1000,"keepAfterMs":1}}]})";
}

std::string payload(int producer, std::uint64_t frame)
{
    std::uint64_t const phase = frame % kPeriod;
    std::string text = "{";
    for (int key = 0; key < 3; ++key) {
        text += "\"new_" + std::to_string(producer) + std::to_string(key) + "_" + digits(frame) +
                "\":\"text longer than a short string " + digits(frame) + "\",";
    }
    if (phase % 3 != 1) {
        text += "\"heading_deg\":" + std::to_string(100 + phase % 200) + ".5,";
    }
    if (phase % 5 != 2) {
        text += "\"time\":1700000000,";
    }
    if (phase % 20 < 10) {
        text += "\"range m\":" + std::to_string(1000 + phase) + ",";
    }
    if (phase % 50 == 7) {
        text += "\"deep\":" + std::string(1000, '[') + std::string(1000, ']') + ",";
    }
    text += "\"last\":" + digits(frame) + "}";
    if (phase % 7 == 3) {
        text.resize(text.size() / 2);
    }
    return text;
}

}  // namespace changing_telemetry
