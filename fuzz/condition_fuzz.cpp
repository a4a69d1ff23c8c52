// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A condition and a history of payloads against a plain model of both.
//
// Input: the first line is the "condition" member; each further line is one frame, the nanoseconds since the
// frame before and then the payload, which is missing when it is no JSON object:
//   {"key":"k","operator":">","value":10,"keepAfterMs":1}
//   5 {"k":11}
//   1000000 {"k":9}
#include "overlay_numbers.h"
#include "stanag_overlay_condition.h"

#include "SwJson.h"
#include "sw_extended.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>

namespace {

using namespace stanag_overlay;

void require(bool condition, char const* what)
{
    if (!condition) {
        std::cerr << "violated: " << what << std::endl;
        std::abort();
    }
}

// The standard conversion, whole text or nothing.
bool wholeNumber(std::string const& text, long double& out)
{
    try {
        std::size_t used = 0;
        out = sw_detail::extended(std::stold(text, &used));
        return used == text.size();
    } catch (std::exception const&) {
        return false;
    }
}

bool number(SwJsonValue const& value, long double& out)
{
    if (value.isInt() || value.isDouble()) {
        out = value.isInt() ? static_cast<double>(value.toInt()) : value.toDouble();
        return true;
    }
    return value.isString() && wholeNumber(value.toString(), out);
}

bool unsignedText(std::string const& text, std::uint64_t& out)
{
    try {
        std::size_t used = 0;
        out = std::stoull(text, &used, 0);
        return used == text.size();
    } catch (std::exception const&) {
        long double real = 0.0L;
        if (!wholeNumber(text, real) || !std::isfinite(static_cast<double>(real)) || real < 0.0L) {
            return false;
        }
        out = real >= 18446744073709551616.0L ? ~std::uint64_t{0} : static_cast<std::uint64_t>(real);
        return true;
    }
}

bool unsignedValue(SwJsonValue const& value, std::uint64_t& out)
{
    if (value.isString()) {
        return unsignedText(value.toString(), out);
    }
    if (!value.isInt() && !value.isDouble()) {
        return false;
    }
    std::int64_t bits = value.toInt();
    if (value.isDouble()) {
        double const real = value.toDouble();
        if (std::isfinite(real) && std::floor(real) != real) {
            out = real >= 0.0 ? static_cast<std::uint64_t>(real) : 0;
            return real >= 0.0;
        }
        if (!std::isfinite(real)) {
            return false;
        }
        bits = real >= 9223372036854775808.0    ? INT64_MAX
               : real <= -9223372036854775808.0 ? INT64_MIN
                                                : static_cast<std::int64_t>(real);
    }
    std::int64_t const low = bits & 0xFFFFFFFF;
    out = static_cast<std::uint64_t>(low);
    return low < 0x80000000LL;
}

// -1, 0 or 1; 2 when not-a-number makes every comparison false.
template <typename Number>
int order(Number a, Number b)
{
    return a < b ? -1 : a > b ? 1 : a == b ? 0 : 2;
}

bool fits(ConditionOp op, int sign)
{
    switch (op) {
    case ConditionOp::GreaterThan:
        return sign == 1;
    case ConditionOp::GreaterOrEqual:
        return sign == 1 || sign == 0;
    case ConditionOp::LessThan:
        return sign == -1;
    case ConditionOp::LessOrEqual:
        return sign == -1 || sign == 0;
    case ConditionOp::NotEquals:
        return sign != 0;
    default:
        return sign == 0;
    }
}

bool holds(ConditionCfg const& condition, SwJsonObject const* root)
{
    if (root == nullptr || !root->contains(condition.key)) {
        return false;
    }
    SwJsonValue const& value = (*root)[condition.key];
    if (condition.hasBitmask) {
        std::uint64_t bits = 0;
        std::uint64_t operand = 0;
        if (!unsignedValue(value, bits)) {
            return false;
        }
        if (condition.op == ConditionOp::Exists && condition.value.empty()) {
            return (bits & condition.bitmask) != 0;
        }
        return unsignedText(condition.value, operand) && fits(condition.op, order(bits & condition.bitmask, operand));
    }
    long double left = 0.0L;
    long double right = 0.0L;
    bool const bothNumbers = number(value, left) && wholeNumber(condition.value, right);
    switch (condition.op) {
    case ConditionOp::Exists:
        return true;
    case ConditionOp::Equals:
    case ConditionOp::NotEquals: {
        bool const equal = bothNumbers ? static_cast<double>(std::fabs(sw_detail::extended(left - right))) < 1e-9
                                       : value.toString() == condition.value;
        return equal == (condition.op == ConditionOp::Equals);
    }
    default:
        return bothNumbers && fits(condition.op, order(left, right));
    }
}

// The block's state as a person would keep it: since when the condition holds, when it was last shown.
struct Model {
    std::uint64_t since = 0;
    std::uint64_t shown = 0;

    Visibility step(ConditionCfg const& condition, bool isTrue, std::uint64_t now)
    {
        if (!isTrue) {
            since = 0;
            bool const keeps = condition.keepAfterNs > 0 && shown > 0 && now - shown <= condition.keepAfterNs;
            return keeps ? Visibility::Keep : Visibility::Hidden;
        }
        since = since == 0 ? now : since;
        if (now - since < condition.showAfterNs) {
            return Visibility::Hidden;
        }
        shown = now;
        return Visibility::Refresh;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::istringstream input(std::string(data, data + size));
    std::string line;
    std::getline(input, line);
    SwString error;
    SwJsonDocument const document =
        SwJsonDocument::fromJson(SwString("{\"condition\":" + line + "}"), SwString(), error);
    OverlayCfg cfg;
    OverlayConditionEvaluator const evaluator;
    evaluator.parse(document.object(), cfg.condition);

    OverlayRuntime runtime;
    Model model;
    std::uint64_t now = 0;
    while (std::getline(input, line)) {
        char* rest = nullptr;
        now += std::strtoull(line.c_str(), &rest, 10);
        SwString frameError;
        SwJsonDocument const frame = SwJsonDocument::fromJson(SwString(std::string(rest)), SwString(), frameError);
        SwJsonObject const* const root = frame.isObject() ? &frame.object() : nullptr;
        Visibility const answer = evaluator.visibility(cfg, runtime, root, now);
        if (!cfg.condition.enabled) {
            require(answer == Visibility::Refresh, "a block without condition is always shown");
            require(runtime.conditionSince == 0 && runtime.conditionLastTrue == 0, "and keeps no state");
            continue;
        }
        require(answer == model.step(cfg.condition, holds(cfg.condition, root), now), "the model's answer");
        require(runtime.conditionSince == model.since, "since when it holds");
        require(runtime.conditionLastTrue == model.shown, "when it was last shown");
    }
    return 0;
}
