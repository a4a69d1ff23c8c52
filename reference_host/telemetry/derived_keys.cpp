// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Which derived keys there can be, and how they come into a payload; derived_table.cpp computes them.
#include "telemetry/derived_keys.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <optional>
#include <utility>

namespace telemetry {
namespace {

/// Sources in a row are few.
constexpr std::size_t kMaxSources = 8;

std::vector<std::string_view> wordsOf(std::string_view text)
{
    std::vector<std::string_view> words;
    while (!text.empty()) {
        std::size_t const end = std::min(text.find(' '), text.size());
        words.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

/// What the "*" of a pattern stands for in a name; empty text for a pattern without one that is the name itself, and
/// nothing when they do not fit.
std::optional<std::string_view> stemOf(std::string_view name, std::string_view pattern)
{
    if (pattern.front() != '*') {
        return name == pattern ? std::optional(std::string_view()) : std::nullopt;
    }
    std::string_view const ending = pattern.substr(1);
    bool const fits = name.size() > ending.size() && name.substr(name.size() - ending.size()) == ending;
    return fits ? std::optional(name.substr(0, name.size() - ending.size())) : std::nullopt;
}

std::string nameFrom(std::string_view pattern, std::string_view stem)
{
    return pattern.front() == '*' ? std::string(stem) + std::string(pattern.substr(1)) : std::string(pattern);
}

DerivedKey keyFrom(DerivedRow const& row, std::string_view stem)
{
    DerivedKey derived{nameFrom(row.key, stem), {}, row.compute};
    for (std::string_view const source : wordsOf(row.sources)) {
        derived.sources.push_back(nameFrom(source, stem));
    }
    return derived;
}

std::vector<std::string> missingOf(DerivedKey const& derived, std::set<std::string> const& keys)
{
    std::vector<std::string> missing;
    std::copy_if(derived.sources.begin(), derived.sources.end(), std::back_inserter(missing),
                 [&keys](std::string const& source) { return keys.count(source) == 0; });
    return missing;
}

/// The key's value from the payload's; Null when a source is missing or no number.
SwJsonValue compute(DerivedKey const& derived, SwJsonObject const& payload)
{
    double values[kMaxSources] = {};
    std::size_t count = 0;
    for (std::string const& source : derived.sources) {
        SwJsonValue const& value = payload[source];
        if (!value.isDouble() && !value.isInt()) {
            return {};
        }
        values[count] = value.isInt() ? static_cast<double>(value.toInt()) : value.toDouble();
        if (!std::isfinite(values[count++])) {
            return {};
        }
    }
    return derived.compute(std::span(values).first(count));
}

}  // namespace

std::vector<DerivedKey> derivableFrom(std::set<std::string> const& keys)
{
    std::set<std::string> known = keys;
    std::vector<DerivedKey> all;
    for (DerivedRow const& row : derivedTable()) {
        std::string_view const first = wordsOf(row.sources).front();
        std::vector<DerivedKey> fitting;
        for (std::string const& key : known) {
            auto const stem = stemOf(key, first);
            if (!stem || (row.takes != nullptr && !row.takes(*stem))) {
                continue;
            }
            DerivedKey derived = keyFrom(row, *stem);
            if (missingOf(derived, known).empty()) {
                fitting.push_back(std::move(derived));
            }
        }
        for (DerivedKey& derived : fitting) {
            known.insert(derived.key);
            all.push_back(std::move(derived));
        }
    }
    return all;
}

std::vector<DerivedKey> namedAmong(std::vector<DerivedKey> all, KeySelection const& wanted)
{
    std::set<std::string> needed;
    std::vector<DerivedKey> named;
    for (auto each = all.rbegin(); each != all.rend(); ++each) {
        if (needed.count(each->key) != 0 || wanted.names(each->key)) {
            needed.insert(each->sources.begin(), each->sources.end());
            named.push_back(std::move(*each));
        }
    }
    std::reverse(named.begin(), named.end());
    return named;
}

std::vector<std::string> missingSources(std::string const& key, std::set<std::string> const& keys)
{
    std::vector<std::string> fewest;
    std::set<std::string> known = keys;
    for (DerivedKey const& derived : derivableFrom(keys)) {
        known.insert(derived.key);
    }
    for (DerivedRow const& row : derivedTable()) {
        auto const stem = stemOf(key, row.key);
        if (stem && (row.takes == nullptr || row.takes(*stem))) {
            std::vector<std::string> missing = missingOf(keyFrom(row, *stem), known);
            if (!missing.empty() && (fewest.empty() || missing.size() < fewest.size())) {
                fewest = std::move(missing);
            }
        }
    }
    return fewest;
}

DerivedKeyMaker::DerivedKeyMaker(KeySelection const& wanted) : wanted_(wanted)
{
    any_ = std::any_of(derivedTable().begin(), derivedTable().end(), [&wanted](DerivedRow const& row) {
        return wanted.wants(row.key.substr(row.key.front() == '*' ? 1 : 0));
    });
}

void DerivedKeyMaker::learn_(SwJsonObject const& payload)
{
    bool isNew = false;
    for (auto const& [key, value] : payload) {
        isNew = seen_.insert(key).second || isNew;
    }
    if (isNew) {
        made_ = namedAmong(derivableFrom({seen_.begin(), seen_.end()}), wanted_);
    }
}

void DerivedKeyMaker::addTo(SwJsonObject& payload)
{
    if (!any_) {
        return;
    }
    learn_(payload);
    for (DerivedKey const& derived : made_) {
        if (payload.contains(derived.key)) {
            continue;
        }
        SwJsonValue value = compute(derived, payload);
        if (!value.isNull()) {
            payload.insertOrAssign(derived.key, std::move(value));
        }
    }
}

}  // namespace telemetry
