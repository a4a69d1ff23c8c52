// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Display conditions: read once per configuration, evaluated once per block and frame before any text is
// expanded.
#include "stanag_overlay_condition.h"

#include "overlay_numbers.h"
#include "sw_text.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace stanag_overlay {

namespace {

struct OperatorWord {
    std::string_view word;
    ConditionOp op;
};

constexpr std::array<OperatorWord, 19> kOperatorWords{{
    {"equals", ConditionOp::Equals},
    {"eq", ConditionOp::Equals},
    {"==", ConditionOp::Equals},
    {"notequals", ConditionOp::NotEquals},
    {"ne", ConditionOp::NotEquals},
    {"!=", ConditionOp::NotEquals},
    {"greaterthan", ConditionOp::GreaterThan},
    {"gt", ConditionOp::GreaterThan},
    {">", ConditionOp::GreaterThan},
    {"greaterorequal", ConditionOp::GreaterOrEqual},
    {"gte", ConditionOp::GreaterOrEqual},
    {">=", ConditionOp::GreaterOrEqual},
    {"lessthan", ConditionOp::LessThan},
    {"lt", ConditionOp::LessThan},
    {"<", ConditionOp::LessThan},
    {"lessorequal", ConditionOp::LessOrEqual},
    {"lte", ConditionOp::LessOrEqual},
    {"<=", ConditionOp::LessOrEqual},
    {"exists", ConditionOp::Exists},
}};

// White space is not trimmed: " gte" is no operator word. What no word names tests equality when there is
// something to compare with, else presence.
ConditionOp operatorNamed(std::string word, bool hasOperand)
{
    std::transform(word.begin(), word.end(), word.begin(), sw_detail::toLower);
    auto const* const known = std::find_if(kOperatorWords.begin(), kOperatorWords.end(),
                                           [&word](OperatorWord const& entry) { return entry.word == word; });
    if (known != kOperatorWords.end()) {
        return known->op;
    }
    return hasOperand ? ConditionOp::Equals : ConditionOp::Exists;
}

// Works for unsigned integers and for long double alike; a not-a-number makes every ordering false.
template <typename Number>
bool isOrdered(ConditionOp op, Number left, Number right)
{
    switch (op) {
    case ConditionOp::GreaterThan:
        return left > right;
    case ConditionOp::GreaterOrEqual:
        return left >= right;
    case ConditionOp::LessThan:
        return left < right;
    case ConditionOp::LessOrEqual:
        return left <= right;
    default:
        return false;
    }
}

// Numbers are compared as numbers when both sides are wholly numbers, and then texts no longer count:
// 1.5 is not "1.5000001", but it is "15e-1".
bool valuesEqual(SwJsonValue const& v, std::string const& expected)
{
    long double number = 0.0L;
    long double expectedNumber = 0.0L;
    if (tryParseNumber(v, number) && parseWholeNumber(expected, expectedNumber)) {
        return numbersEqual(number, expectedNumber);
    }
    return v.isString() ? v.stringRef() == expected : v.toString() == expected;
}

bool maskedTest(ConditionCfg const& condition, SwJsonValue const& v)
{
    unsigned long number = 0;
    if (!tryParseUnsignedValue(v, number)) {
        return false;
    }
    unsigned long const masked = number & condition.bitmask;
    if (condition.op == ConditionOp::Exists && condition.value.empty()) {
        return masked != 0;
    }
    unsigned long operand = 0;
    if (!tryParseUnsignedString(condition.value, operand)) {
        return false;
    }
    switch (condition.op) {
    case ConditionOp::Exists:
    case ConditionOp::Equals:
        return masked == operand;
    case ConditionOp::NotEquals:
        return masked != operand;
    default:
        return isOrdered(condition.op, masked, operand);
    }
}

bool plainTest(ConditionCfg const& condition, SwJsonValue const& v)
{
    switch (condition.op) {
    case ConditionOp::Exists:
        return true;
    case ConditionOp::Equals:
        return valuesEqual(v, condition.value);
    case ConditionOp::NotEquals:
        return !valuesEqual(v, condition.value);
    default: {
        long double number = 0.0L;
        long double operand = 0.0L;
        return tryParseNumber(v, number) && parseWholeNumber(condition.value, operand) &&
               isOrdered(condition.op, number, operand);
    }
    }
}

bool conditionHolds(ConditionCfg const& condition, SwJsonObject const* root)
{
    if (root == nullptr) {
        return false;
    }
    auto const member = root->find(condition.key);
    if (member == root->end()) {
        return false;
    }
    return condition.hasBitmask ? maskedTest(condition, member->second) : plainTest(condition, member->second);
}

}  // namespace

void OverlayConditionEvaluator::parse(SwJsonObject const& item, ConditionCfg& cond) const
{
    if (!item["condition"].isObject()) {
        return;
    }
    SwJsonObject const& condition = item["condition"].toObject();
    if (!condition["key"].isString()) {
        return;
    }
    cond.key = condition["key"].stringRef();
    if (cond.key.empty()) {
        return;
    }
    cond.enabled = true;

    std::string word = condition.contains("operator") ? condition["operator"].toString() : std::string();
    bool hasOperand = true;
    // The shortcuts override whatever "operator" says.
    if (condition.contains("equals")) {
        word = "equals";
        cond.value = condition["equals"].toString();
    } else if (condition.contains("notEquals")) {
        word = "notequals";
        cond.value = condition["notEquals"].toString();
    } else if (condition.contains("value")) {
        cond.value = condition["value"].toString();
    } else {
        hasOperand = false;
    }
    cond.op = operatorNamed(std::move(word), hasOperand);

    unsigned long bitmask = 0;
    if (tryParseUnsignedValue(condition["bitmask"], bitmask)) {
        cond.hasBitmask = true;
        cond.bitmask = bitmask;
    }
    readDurationMs(condition, "showAfterMs", cond.showAfterNs);
    readDurationMs(condition, "keepAfterMs", cond.keepAfterNs);
}

Visibility OverlayConditionEvaluator::visibility(OverlayCfg const& cfg, OverlayRuntime& runtime,
                                                 SwJsonObject const* root, std::uint64_t nowNs) const
{
    ConditionCfg const& condition = cfg.condition;
    if (!condition.enabled) {
        return Visibility::Refresh;
    }
    if (conditionHolds(condition, root)) {
        if (runtime.conditionSince == 0) {
            runtime.conditionSince = nowNs;
        }
        // Strictly less: the block appears on the first frame at which the whole delay has passed.
        if (condition.showAfterNs != 0 && nowNs - runtime.conditionSince < condition.showAfterNs) {
            return Visibility::Hidden;
        }
        runtime.conditionLastTrue = nowNs;
        return Visibility::Refresh;
    }
    runtime.conditionSince = 0;
    // Inclusive, unlike the delay above. The time of the last shown frame stays, so the block does not come
    // back by itself once the period is over.
    bool const keeps = condition.keepAfterNs != 0 && runtime.conditionLastTrue != 0 &&
                       nowNs - runtime.conditionLastTrue <= condition.keepAfterNs;
    return keeps ? Visibility::Keep : Visibility::Hidden;
}

}  // namespace stanag_overlay
