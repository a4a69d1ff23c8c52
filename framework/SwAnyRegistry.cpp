// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Storage and look-up of the variant's registry; its built-in contents stand in SwAnyConversions.cpp.
#include "sw_any_registry.h"

#include <algorithm>
#include <mutex>

namespace sw_detail {

namespace {

bool sameOps(SwAny::TypeOps const& a, SwAny::TypeOps const& b)
{
    return a.construct == b.construct && a.copy == b.copy && a.move == b.move && a.clear == b.clear && a.data == b.data;
}

}  // namespace

SwAny::TypeOps const* AnyRegistry::storeOps(std::string_view typeName, SwAny::TypeOps const& ops)
{
    std::unique_lock const lock(mutex_);
    auto const found = types_.find(typeName);
    if (found != types_.end() && (found->second.builtIn || sameOps(*found->second.ops, ops))) {
        return found->second.ops;
    }
    // Stored before they are named: memory may end in between, and a name always has operations.
    SwAny::TypeOps const* const stored = &storage_.emplace_back(ops);
    types_.insert_or_assign(std::string(typeName), Registered{stored, !builtInDone_});
    return stored;
}

SwAny::TypeOps const* AnyRegistry::findOps(std::string_view typeName) const
{
    std::shared_lock const lock(mutex_);
    auto const found = types_.find(typeName);
    return found == types_.end() ? nullptr : found->second.ops;
}

void AnyRegistry::addConverter(std::string_view from, std::string_view to, SwAny::Converter converter)
{
    std::unique_lock const lock(mutex_);
    // Memory may end at any step: the target is listed last, by a step that takes none.
    std::vector<std::string>& targets = rules_[std::string(from)];
    std::string target(to);
    targets.reserve(targets.size() + 1);
    converters_.insert_or_assign(NamePair(from, to), std::make_shared<SwAny::Converter const>(std::move(converter)));
    if (std::find(targets.begin(), targets.end(), to) == targets.end()) {
        targets.push_back(std::move(target));
    }
}

std::shared_ptr<SwAny::Converter const> AnyRegistry::findConverter(std::string_view from, std::string_view to) const
{
    std::shared_lock const lock(mutex_);
    auto const found = converters_.find(std::pair(from, to));
    return found == converters_.end() ? nullptr : found->second;
}

SwAny::ConverterMap AnyRegistry::converters() const
{
    std::shared_lock const lock(mutex_);
    SwAny::ConverterMap snapshot;
    for (auto const& [names, converter] : converters_) {
        snapshot.emplace(names, *converter);
    }
    return snapshot;
}

SwAny::ConversionRules AnyRegistry::rules() const
{
    std::shared_lock const lock(mutex_);
    return rules_;
}

}  // namespace sw_detail
