// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The configuration check against the plugin's parser on the same text.
#pragma once

#include <string>

namespace check_agreement {

/// Where the check and the record disagree, empty when they agree everywhere: of a member about which the check says
/// nothing the record must hold what stands in the text, read literally; what it says a member becomes must be what
/// the record holds; of what it calls ignored the record must hold the default. Every finding must be about a member
/// of the text. Unreadable texts agree. Texts in which a name has other bytes than letters, digits and "_" are checked
/// but not compared, because places could then stand for two members.
std::string disagreement(std::string const& text);

/// The same for the keys of a template: those that the check names must be those that the plugin looks up, in that
/// order, and an unclosed brace must be one. Bytes below 0x04 serve as marks: texts with them are not compared.
std::string templateDisagreement(std::string const& text);

}  // namespace check_agreement
