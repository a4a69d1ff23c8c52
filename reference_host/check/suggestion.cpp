// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Suggestions for misspelt keys; used by the configuration check.
#include "check/suggestion.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace check {
namespace {

/// Longer words are compared by their beginning only: a hostile configuration may hold huge keys.
constexpr std::size_t kMaxLetters = 64;

std::string lowered(std::string_view word)
{
    std::string lower(word.substr(0, kMaxLetters));
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    return lower;
}

/// How many letters must be inserted, dropped or replaced (Levenshtein).
std::size_t distance(std::string const& a, std::string const& b)
{
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t column = 0; column <= b.size(); ++column) {
        row[column] = column;
    }
    for (std::size_t line = 1; line <= a.size(); ++line) {
        std::size_t diagonal = row[0];
        row[0] = line;
        for (std::size_t column = 1; column <= b.size(); ++column) {
            std::size_t const above = row[column];
            std::size_t const replaced = diagonal + (a[line - 1] == b[column - 1] ? 0 : 1);
            row[column] = std::min({above + 1, row[column - 1] + 1, replaced});
            diagonal = above;
        }
    }
    return row[b.size()];
}

/// How many letters may differ; very short words have no neighbours.
std::size_t mostDifferences(std::string const& word)
{
    return word.size() < 3 ? 0 : word.size() < 6 ? 1 : std::max<std::size_t>(2, word.size() / 3);
}

}  // namespace

std::string nearestWord(std::string_view word, std::vector<std::string> const& known)
{
    std::string const wanted = lowered(word);
    std::size_t best = mostDifferences(wanted) + 1;
    std::string nearest;
    for (std::string const& candidate : known) {
        std::string const letters = lowered(candidate);
        bool const beginning = wanted.size() >= 4 && letters.compare(0, wanted.size(), wanted) == 0;
        std::size_t const away = beginning ? 1 : distance(wanted, letters);
        if (away < best) {
            best = away;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string didYouMean(std::string_view word, std::vector<std::string> const& known)
{
    std::string const nearest = nearestWord(word, known);
    return nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?";
}

}  // namespace check
