// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// When a block is shown: its members are read only where the condition counts at all, and shortcuts overrule others.
#include "check/condition_check.h"

#include "check/reading_rules.h"
#include "check/suggestion.h"
#include "check/written_config.h"
#include "sw_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace check {
namespace {

constexpr char const* kAlwaysShown = ": the condition is ignored and the block is always shown";

void checkDelay(Member const& delay, Findings& findings)
{
    becomesNumber(delay, millisecondsHeld(delay.read), 0, 600000, findings);
}

void checkMask(Member const& mask, Findings& findings)
{
    std::optional<std::uint64_t> const held = maskHeld(mask.read);
    if (held) {
        if (literalLongNumber(mask.written) != static_cast<long double>(*held)) {
            findings.push_back({mask.place, shown(mask.written) + " becomes " + std::to_string(*held)});
        }
        return;
    }
    bool const isText = mask.read.isString();
    bool const hasDigits = isText && mask.read.stringRef().find_first_of("0123456789") != std::string::npos;
    findings.push_back(
        {mask.place, shown(mask.written) + (hasDigits ? " is no whole number and is ignored"
                                            : isText  ? " is no number and is ignored"
                                                      : " is no bit mask and is ignored; masks from bit 31 on need "
                                                        "quotes and 0x")});
}

void checkOperator(Member const& condition, Findings& findings)
{
    static std::vector<std::string> const kWords = {
        "exists",         "equals", "eq", "==",       "notequals", "ne",          "!=",  "greaterthan", "gt", ">",
        "greaterorequal", "gte",    ">=", "lessthan", "lt",        "lessorequal", "lte", "<",           "<="};
    Member const member = condition.member("operator");
    std::string word = member.read.toString();
    std::transform(word.begin(), word.end(), word.begin(), sw_detail::toLower);
    if (std::find(kWords.begin(), kWords.end(), word) == kWords.end()) {
        std::string const held = condition.has("value") ? "\"equals\"" : "\"exists\"";
        findings.push_back(
            {member.place, shown(member.written) + " is no operator and becomes " + held + didYouMean(word, kWords)});
    }
}

/// The shortcut that makes the operator, or the members "operator" and "value" themselves.
void checkComparison(Member const& condition, Findings& findings)
{
    char const* const winner = condition.has("equals") ? "equals" : condition.has("notEquals") ? "notEquals" : nullptr;
    if (condition.has("operator") && winner == nullptr) {
        checkOperator(condition, findings);
    }
    std::string const operand = winner == nullptr ? "value" : winner;
    if (condition.has(operand)) {
        becomesOperandText(condition.member(operand), findings);
    }
    if (winner == nullptr) {
        return;
    }
    for (char const* const loser : {"notEquals", "operator", "value"}) {
        if (loser != operand && condition.has(loser)) {
            findings.push_back({condition.member(loser).place, std::string("has no effect: \"") + winner + "\" wins"});
        }
    }
}

/// Whether the condition counts at all.
bool checkKey(Member const& condition, Findings& findings)
{
    if (!condition.has("key")) {
        findings.push_back({condition.place, std::string("\"key\" is missing") + kAlwaysShown});
        return false;
    }
    Member const key = condition.member("key");
    if (!key.read.isString() || key.read.stringRef().empty()) {
        findings.push_back({key.place, shown(key.written) + " is no key" + kAlwaysShown});
        return false;
    }
    return true;
}

}  // namespace

void checkCondition(Member const& condition, Findings& findings)
{
    if (!condition.read.isObject()) {
        findings.push_back(
            {condition.place, shown(condition.written) + " is no object and is ignored: the block is always shown"});
        return;
    }
    if (checkKey(condition, findings)) {
        checkComparison(condition, findings);
        for (auto const& [name, rule] : std::initializer_list<KnownMember>{
                 {"bitmask", checkMask}, {"showAfterMs", checkDelay}, {"keepAfterMs", checkDelay}}) {
            if (condition.has(name)) {
                rule(condition.member(name), findings);
            }
        }
    }
    refuseUnknown(condition.place, condition.read.toObject(),
                  {"key", "operator", "value", "equals", "notEquals", "bitmask", "showAfterMs", "keepAfterMs"},
                  findings);
}

}  // namespace check
