// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Looks through a configuration for what may be names of keys, without knowing the rules of templates and conditions.
#include "telemetry/key_selection.h"

#include "SwJson.h"
#include "sw_text.h"
#include "telemetry/derived_keys.h"
#include "telemetry/nested_sets.h"
#include "telemetry/second_keys.h"
#include "telemetry/st0601_table.h"

#include <algorithm>
#include <set>
#include <vector>

namespace telemetry {
namespace {

/// Whether a block shows every key that is there.
bool listsAllKeys(SwJsonValue const& block)
{
    return block.isObject() && block.toObject()["formatString"].stringRef().empty();
}

/// Every text and every member's name below `root`, in any order.
std::string textsOf(SwJsonValue const& root)
{
    std::string texts;
    std::vector<SwJsonValue const*> open = {&root};
    while (!open.empty()) {
        SwJsonValue const& value = *open.back();
        open.pop_back();
        texts += value.stringRef() + "\n";
        for (SwJsonValue const& item : value.toArray()) {
            open.push_back(&item);
        }
        for (auto const& [name, member] : value.toObject()) {
            texts += name + "\n";
            open.push_back(&member);
        }
    }
    return texts;
}

/// Every key that packets and the host can deliver.
std::set<std::string> const& knownKeys()
{
    static std::set<std::string> const kKeys = [] {
        std::set<std::string> keys = {std::string(kYawKey), "video_time_s"};
        for (TableRow const& row : st0601Table()) {
            keys.emplace(row.key);
        }
        for (NestedRow const& nested : nestedTable()) {
            keys.emplace(nested.row.key);
        }
        for (SecondKey const& second : secondKeys()) {
            keys.insert(second.key);
        }
        return keys;
    }();
    return kKeys;
}

std::string lines(std::vector<std::string> const& texts)
{
    std::string all;
    for (std::string const& text : texts) {
        all += text + "\n";
    }
    return all;
}

}  // namespace

/// speed_mps is not named by ground_speed_mps: in front of a name stands no other letter of it.
bool KeySelection::namedFromItsBeginning_(std::string_view key) const
{
    auto const isLetter = [](char c) {
        return sw_detail::isDigit(c) || c == '_' || (sw_detail::toLower(c) >= 'a' && sw_detail::toLower(c) <= 'z');
    };
    for (std::size_t at = texts_.find(key); at != std::string::npos; at = texts_.find(key, at + 1)) {
        if (at == 0 || !isLetter(texts_[at - 1])) {
            return true;
        }
    }
    return false;
}

/// Names the keys of which the named ones are made.
void KeySelection::addSources_()
{
    for (DerivedKey const& derived : namedAmong(derivableFrom(knownKeys()), *this)) {
        texts_ += lines(derived.sources);
    }
    for (SecondKey const& second : secondKeys()) {
        if (named_(second.key)) {
            texts_ += lines(second.sources);
        }
    }
}

KeySelection KeySelection::namedIn(std::string const& config)
{
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(SwString(config), SwString(), error);
    SwJsonArray const& blocks = document.object()["overlay"].toArray();
    KeySelection keys;
    keys.all_ = std::any_of(blocks.begin(), blocks.end(), listsAllKeys);
    keys.texts_ = textsOf(document.root());
    keys.addSources_();
    return keys;
}

KeySelection KeySelection::withDerived()
{
    KeySelection keys;
    keys.derived_ = true;
    return keys;
}

}  // namespace telemetry
