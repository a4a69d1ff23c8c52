// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plain conditions: each rule where it is asked for, every text read anew.
#include "plain_overlay_condition.h"

#include "plain_overlay_number.h"

#include "sw_extended.h"

#include <cmath>
#include <exception>
#include <limits>
#include <string>

namespace stanag_overlay::plain {

namespace {

std::uint64_t truncated(long double number)
{
    return number >= 18446744073709551616.0L ? std::numeric_limits<std::uint64_t>::max()
                                             : static_cast<std::uint64_t>(number);
}

bool parseUnsigned(std::string const& text, std::uint64_t& out)
{
    try {
        std::size_t used = 0;
        out = std::stoull(text, &used, 0);
        return used == text.size();
    } catch (std::exception const&) {
        long double number = 0.0L;
        if (!parseWhole(text, number) || !std::isfinite(static_cast<double>(number)) || number < 0.0L) {
            return false;
        }
        out = truncated(number);
        return true;
    }
}

bool lowBitsIfNotNegative(std::int64_t number, std::uint64_t& out)
{
    std::uint64_t const low = static_cast<std::uint64_t>(number) % 4294967296U;
    out = low;
    return low < 2147483648U;
}

bool parseUnsigned(SwJsonValue const& value, std::uint64_t& out)
{
    if (value.isInt()) {
        return lowBitsIfNotNegative(value.toInt(), out);
    }
    if (value.isString()) {
        return parseUnsigned(value.toString(), out);
    }
    if (!value.isDouble() || !std::isfinite(value.toDouble())) {
        return false;
    }
    double const number = value.toDouble();
    if (std::trunc(number) != number) {
        out = number < 0.0 ? 0 : truncated(number);
        return number >= 0.0;
    }
    if (number >= 9223372036854775808.0) {
        return lowBitsIfNotNegative(std::numeric_limits<std::int64_t>::max(), out);
    }
    if (number < -9223372036854775808.0) {
        return lowBitsIfNotNegative(std::numeric_limits<std::int64_t>::min(), out);
    }
    return lowBitsIfNotNegative(static_cast<std::int64_t>(number), out);
}

bool masked(ConditionCfg const& condition, SwJsonValue const& value)
{
    std::uint64_t number = 0;
    if (!parseUnsigned(value, number)) {
        return false;
    }
    number &= condition.bitmask;
    if (condition.op == ConditionOp::Exists && condition.value.empty()) {
        return number != 0;
    }
    std::uint64_t operand = 0;
    if (!parseUnsigned(condition.value, operand)) {
        return false;
    }
    switch (condition.op) {
    case ConditionOp::Exists:
    case ConditionOp::Equals:
        return number == operand;
    case ConditionOp::NotEquals:
        return number != operand;
    case ConditionOp::GreaterThan:
        return number > operand;
    case ConditionOp::GreaterOrEqual:
        return number >= operand;
    case ConditionOp::LessThan:
        return number < operand;
    case ConditionOp::LessOrEqual:
        return number <= operand;
    }
    return false;
}

bool equal(SwJsonValue const& value, std::string const& expected)
{
    long double number = 0.0L;
    long double other = 0.0L;
    if (parseNumber(value, number) && parseWhole(expected, other)) {
        return static_cast<double>(std::fabs(sw_detail::extended(number - other))) < 1e-9;
    }
    return value.toString() == expected;
}

bool holds(ConditionCfg const& condition, SwJsonValue const& value)
{
    if (condition.hasBitmask) {
        return masked(condition, value);
    }
    long double number = 0.0L;
    long double operand = 0.0L;
    bool const comparable = parseNumber(value, number) && parseWhole(condition.value, operand);
    switch (condition.op) {
    case ConditionOp::Exists:
        return true;
    case ConditionOp::Equals:
        return equal(value, condition.value);
    case ConditionOp::NotEquals:
        return !equal(value, condition.value);
    case ConditionOp::GreaterThan:
        return comparable && number > operand;
    case ConditionOp::GreaterOrEqual:
        return comparable && number >= operand;
    case ConditionOp::LessThan:
        return comparable && number < operand;
    case ConditionOp::LessOrEqual:
        return comparable && number <= operand;
    }
    return false;
}

}  // namespace

Visibility visibility(OverlayCfg const& cfg, OverlayRuntime& runtime, SwJsonObject const* root, std::uint64_t nowNs)
{
    ConditionCfg const condition = cfg.condition;
    if (!condition.enabled) {
        return Visibility::Refresh;
    }
    bool const present = root != nullptr && root->contains(condition.key);
    if (present && holds(condition, (*root)[condition.key])) {
        if (runtime.conditionSince == 0) {
            runtime.conditionSince = nowNs;
        }
        if (condition.showAfterNs != 0 && nowNs - runtime.conditionSince < condition.showAfterNs) {
            return Visibility::Hidden;
        }
        runtime.conditionLastTrue = nowNs;
        return Visibility::Refresh;
    }
    runtime.conditionSince = 0;
    if (condition.keepAfterNs != 0 && runtime.conditionLastTrue != 0 &&
        nowNs - runtime.conditionLastTrue <= condition.keepAfterNs) {
        return Visibility::Keep;
    }
    return Visibility::Hidden;
}

}  // namespace stanag_overlay::plain
