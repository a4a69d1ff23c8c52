// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The nearest known word to a misspelt one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace check {

/// The known word that is closest to `word` without regard to letter case, empty when none is close: about
/// a third of the letters may differ, or `word` is the beginning of the known one.
/// nearestWord("textsize", {"textSize"}) is "textSize".
std::string nearestWord(std::string_view word, std::vector<std::string> const& known);

/// "; did you mean "textSize"?", or nothing when no word is close.
std::string didYouMean(std::string_view word, std::vector<std::string> const& known);

}  // namespace check
