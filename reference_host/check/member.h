// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One value of the configuration, as the file has it and as the JSON reader gives it, and what is said about it.
#pragma once

#include "SwJson.h"

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

namespace check {

/// One thing that is not taken as it stands.
struct Finding {
    std::string place;  ///< "overlay[0].position.x"; empty for the root
    std::string text;   ///< "1.5 becomes 1 (allowed: 0 to 1)"
};
using Findings = std::vector<Finding>;

/// Not owned: both trees stay as long as the check runs.
struct Member {
    std::string place;
    SwJsonValue const& written;  ///< in the tree of readAsWritten()
    SwJsonValue const& read;

    bool has(std::string const& name) const { return read.toObject().contains(name); }
    /// The member of an object, null when it is absent: overlay[0] and textSize give overlay[0].textSize.
    Member member(std::string const& name) const;
    /// The item of an array: overlay and 0 give overlay[0].
    Member item(std::size_t index) const;
};

/// Compares what stands in the file with what the record holds, and says so where they differ.
using Rule = void (*)(Member const& member, Findings& findings);

struct KnownMember {
    char const* name;
    Rule rule;  ///< null: known, and checked together with others
};

/// Runs the rules of the members that are there, in the order of the rules, then names the unknown ones.
void checkMembers(Member const& object, std::initializer_list<KnownMember> known, Findings& findings);

/// Names the members that are not known, with the nearest known name.
void refuseUnknown(std::string const& place, SwJsonObject const& object, std::vector<std::string> const& known,
                   Findings& findings);

// ---- what rules say; each compares first and says nothing when the record holds what stands in the file ----

/// "999 becomes 256 (allowed: 6 to 256)"
void becomesNumber(Member const& member, double held, double least, double most, Findings& findings);

/// The same for a number that the record keeps in single precision.
void becomesFraction(Member const& member, float held, Findings& findings);

/// A bool, also written as 0 or 1.
void becomesSwitch(Member const& member, Findings& findings);

/// A text that replaces the default only when it is read as one.
void keepsDefaultText(Member const& member, Findings& findings);

/// A text made of any scalar; the same number in other digits is the same.
void becomesOperandText(Member const& member, Findings& findings);

/// One of few words, taken in the text form of any scalar; everything else becomes the fallback.
void becomesWord(Member const& member, std::initializer_list<char const*> words, char const* fallback,
                 Findings& findings);

}  // namespace check
