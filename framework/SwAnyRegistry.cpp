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
    auto found = types_.find(typeName);
    if (found == types_.end()) {
        found = types_.emplace(typeName, Registered{}).first;
        found->second.builtIn = !builtInDone_;
    } else if (found->second.builtIn || sameOps(*found->second.ops, ops)) {
        return found->second.ops;
    }
    found->second.ops = &storage_.emplace_back(ops);
    return found->second.ops;
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
    converters_.insert_or_assign(NamePair(from, to), std::make_shared<SwAny::Converter const>(std::move(converter)));
    std::vector<std::string>& targets = rules_[std::string(from)];
    if (std::find(targets.begin(), targets.end(), to) == targets.end()) {
        targets.emplace_back(to);
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
