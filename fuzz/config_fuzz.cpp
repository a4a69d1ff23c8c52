// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Any bytes as a configuration: whatever the parser makes of them stays within its bounds, every member that
// the schema names takes any value, and the schema stays readable with any keys.
#include "overlay_numbers.h"
#include "stanag_overlay_config.h"

#include "SwJson.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace stanag_overlay;

void require(bool condition, char const* what)
{
    if (!condition) {
        std::cerr << "violated: " << what << std::endl;
        std::abort();
    }
}

bool isDuration(std::uint64_t ns)
{
    return ns <= static_cast<std::uint64_t>(kMaxDurationMs) * kNsPerMs && ns % kNsPerMs == 0;
}

bool isFraction(float value)
{
    return value >= 0.0F && value <= 1.0F;
}

void checkFormat(FormatSpec const& spec)
{
    require(isDuration(spec.holdLastNs) && isDuration(spec.refreshEveryNs), "a format's durations");
    require(!spec.hasMin || std::isfinite(spec.minValue), "a lower bound is finite");
    require(!spec.hasMax || std::isfinite(spec.maxValue), "an upper bound is finite");
    require(!spec.hasMin || !spec.hasMax || spec.minValue != spec.maxValue, "equal bounds are none");
    require(spec.timestampUnit >= TimestampUnit::Seconds && spec.timestampUnit <= TimestampUnit::Microseconds,
            "a unit");
}

void checkCondition(ConditionCfg const& condition)
{
    require(condition.enabled == !condition.key.empty(), "enabled exactly with a key");
    require(condition.op >= ConditionOp::Exists && condition.op <= ConditionOp::LessOrEqual, "an operator");
    require(condition.hasBitmask || condition.bitmask == 0, "a mask only with its flag");
    require(isDuration(condition.showAfterNs) && isDuration(condition.keepAfterNs), "a condition's delays");
}

void checkRecord(OverlayCfg const& record)
{
    require(record.thickness >= 1 && record.thickness <= 16, "thickness");
    require(record.textSize >= 6 && record.textSize <= 256, "text size");
    require(record.decimals >= -1 && record.decimals <= 12, "decimals");
    require(record.updateEveryNFrames >= 1 && record.updateEveryNFrames <= 120, "update interval");
    require(isFraction(record.posX) && isFraction(record.posY), "position");
    require(isFraction(record.bgAlpha), "opacity");
    checkCondition(record.condition);
    for (auto const& entry : record.formats) {
        checkFormat(entry.second);
    }
}

SwJsonValue readJson(std::string const& text, SwString& error)
{
    return SwJsonDocument::fromJson(SwString(text), SwString(), error).takeRoot();
}

// One configuration per member that the schema names, with the input as that member's value.
void checkMembers(std::string const& value)
{
    static SwJsonObject const kBlock = [] {
        SwString error;
        SwJsonValue const schema = readJson(ConfigSchemaBuilder().build({}), error);
        require(error.isEmpty(), "the schema is JSON");
        return schema.toObject()["properties"]
            .toObject()["overlay"]
            .toObject()["items"]
            .toObject()["properties"]
            .toObject();
    }();
    auto const parseOne = [](std::string const& item) {
        auto const records = OverlayConfigParser().parse("{\"overlay\":[" + item + "]}");
        require(records.size() == 1, "a readable block gives a record");
        checkRecord(records.front());
        return records.front();
    };
    for (auto const& member : kBlock) {
        parseOne("{\"" + member.first + "\":" + value + "}");
    }
    for (auto const& member : kBlock["condition"].toObject()["properties"].toObject()) {
        parseOne("{\"condition\":{\"key\":\"k\",\"" + member.first + "\":" + value + "}}");
    }
    for (auto const& axis : kBlock["position"].toObject()["properties"].toObject()) {
        parseOne("{\"position\":{\"" + axis.first + "\":" + value + "}}");
    }
    SwJsonObject const& format = kBlock["formats"].toObject()["additionalProperties"].toObject();
    for (auto const& member : format["properties"].toObject()) {
        OverlayCfg const record = parseOne("{\"formats\":{\"k\":{\"" + member.first + "\":" + value + "}}}");
        require(record.formats.size() == 1, "an object entry gives a format");
    }
}

void checkSchema(std::vector<OverlayCfg> const& records)
{
    std::vector<std::string> keys;
    for (OverlayCfg const& record : records) {
        for (auto const& entry : record.formats) {
            keys.push_back(entry.first);
        }
    }
    std::string const schema = ConfigSchemaBuilder().build(keys);
    for (std::string const& key : keys) {
        for (char const byte : key) {
            if (static_cast<unsigned char>(byte) < 0x20 && std::string("\b\f\n\r\t").find(byte) == std::string::npos) {
                // Such bytes stay raw and leave the text unreadable, as stated at the builder.
                return;
            }
        }
    }
    SwString error;
    SwJsonValue const root = readJson(schema, error);
    require(error.isEmpty(), "the schema is readable with these keys");
    SwJsonObject const& list = root.toObject()["properties"].toObject()["availableKeys"].toObject();
    require(list["default"].toArray().size() == keys.size(), "the schema lists every key");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const text(data, data + size);
    auto const records = OverlayConfigParser().parse(text);
    for (OverlayCfg const& record : records) {
        checkRecord(record);
    }
    checkSchema(records);

    SwString error;
    std::size_t cursor = 0;
    SwJsonDocument::parseJson(SwString(text), cursor, SwString(), error);
    constexpr std::size_t kLongestMemberValue = 4096;
    if (error.isEmpty() && cursor <= kLongestMemberValue) {
        checkMembers(text.substr(0, cursor));
    }
    return 0;
}
