// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Comparing one member with what its record holds, and the sentences about it.
#include "check/member.h"

#include "check/reading_rules.h"
#include "check/suggestion.h"
#include "check/written_config.h"

#include "sw_number_text.h"
#include "sw_numbers.h"

#include <algorithm>
#include <optional>

namespace check {
namespace {

std::string quoted(std::string const& text)
{
    return '"' + printable(text) + '"';
}

void add(Member const& member, std::string const& says, Findings& findings)
{
    findings.push_back({member.place, shown(member.written) + says});
}

void addNumber(Member const& member, double held, double least, double most, Findings& findings)
{
    add(member,
        (isNumber(member.read) ? " becomes " : " is no number and becomes ") + sw_text::numberText(held) +
            " (allowed: " + sw_text::numberText(least) + " to " + sw_text::numberText(most) + ")",
        findings);
}

}  // namespace

Member Member::member(std::string const& name) const
{
    return {inside(place, name), written.toObject()[name], read.toObject()[name]};
}

Member Member::item(std::size_t index) const
{
    return {place + "[" + std::to_string(index) + "]", written.toArray()[index], read.toArray()[index]};
}

void checkMembers(Member const& object, std::initializer_list<KnownMember> known, Findings& findings)
{
    std::vector<std::string> names;
    for (KnownMember const& member : known) {
        names.emplace_back(member.name);
        if (member.rule != nullptr && object.has(member.name)) {
            member.rule(object.member(member.name), findings);
        }
    }
    refuseUnknown(object.place, object.read.toObject(), names, findings);
}

void refuseUnknown(std::string const& place, SwJsonObject const& object, std::vector<std::string> const& known,
                   Findings& findings)
{
    for (auto const& [name, value] : object) {
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            findings.push_back({inside(place, name), "unknown key, ignored" + didYouMean(name, known)});
        }
    }
}

void becomesNumber(Member const& member, double held, double least, double most, Findings& findings)
{
    if (literalNumber(member.written) != held) {
        addNumber(member, held, least, most, findings);
    }
}

void becomesFraction(Member const& member, float held, Findings& findings)
{
    std::optional<double> const number = literalNumber(member.written);
    if (!number || sw_detail::nearestFloat(*number) != held) {
        addNumber(member, static_cast<double>(held), 0.0, 1.0, findings);
    }
}

void becomesSwitch(Member const& member, Findings& findings)
{
    std::string const held = switchHeld(member.read) ? "true" : "false";
    bool const isSame =
        literalText(member.written) == held || literalNumber(member.written) == (switchHeld(member.read) ? 1.0 : 0.0);
    if (!isSame) {
        add(member, " becomes " + held + " (allowed: true, false)", findings);
    }
}

void keepsDefaultText(Member const& member, Findings& findings)
{
    if (member.read.isString()) {
        return;
    }
    bool const isContainer = member.read.isObject() || member.read.isArray();
    add(member,
        std::string(isContainer ? " is no text" : ", even in quotes, is read as no text") +
            " and is ignored; the default stays",
        findings);
}

void becomesOperandText(Member const& member, Findings& findings)
{
    std::string const held = member.read.toString();
    if (!meansTheSame(member.written, held)) {
        add(member, " becomes " + quoted(held), findings);
    }
}

void becomesWord(Member const& member, std::initializer_list<char const*> words, char const* fallback,
                 Findings& findings)
{
    std::string const held = member.read.toString();
    std::string allowed;
    for (char const* const word : words) {
        if (held == word) {
            return;
        }
        allowed += (allowed.empty() ? "" : ", ") + quoted(word);
    }
    add(member, " becomes " + quoted(fallback) + " (allowed: " + allowed + ")", findings);
}

}  // namespace check
