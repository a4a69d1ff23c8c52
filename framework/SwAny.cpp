// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The variant: storage, typed access and conversion through the process-wide registry. Hosts hand frame
// inputs to the plugin as such values; the rules themselves stand in SwAnyConversions.cpp.
#include "SwAny.h"

#include "sw_any_registry.h"
#include "sw_diagnostic.h"

using sw_detail::AnyRegistry;

SwAny::SwAny(SwAny&& other) noexcept
    : ops_(std::exchange(other.ops_, nullptr))
    , data_(std::exchange(other.data_, nullptr))
    , typeName_(std::move(other.typeName_))
{
    other.typeName_.clear();
}

SwAny& SwAny::operator=(SwAny const& other)
{
    if (this != &other) {
        copyFrom(other);
    }
    return *this;
}

SwAny& SwAny::operator=(SwAny&& other) noexcept
{
    // Taken out first: `other` may stand inside the value that is given up here, or be this one.
    SwAny taken(std::move(other));
    std::swap(ops_, taken.ops_);
    std::swap(data_, taken.data_);
    typeName_.swap(taken.typeName_);
    return *this;
}

SwAny SwAny::fromRawPointer(std::string const& typeName, void const* value)
{
    SwAny result;
    result.typeName_ = typeName;
    result.ops_ = findOps(typeName);
    if (value != nullptr && result.ops_ != nullptr) {
        result.data_ = result.ops_->construct(value);
    }
    return result;
}

void SwAny::copyFrom(SwAny const& other)
{
    if (this == &other) {
        return;
    }
    // Copied before the old value goes: `other` may stand inside it.
    TypeOps const* const ops = other.ops_;
    std::string typeName = other.typeName_;
    void* data = nullptr;
    if (other.data_ != nullptr) {
        ops->copy(data, other.data_);
    }
    clear();
    ops_ = ops;
    data_ = data;
    typeName_ = std::move(typeName);
}

void SwAny::clear() noexcept
{
    if (data_ != nullptr) {
        ops_->clear(data_);
    }
    ops_ = nullptr;
    data_ = nullptr;
    typeName_.clear();
}

void* SwAny::data() noexcept
{
    return data_ == nullptr ? nullptr : ops_->data(data_);
}

void const* SwAny::data() const noexcept
{
    return data_ == nullptr ? nullptr : ops_->data(data_);
}

void* SwAny::checkedData_(std::string const& wanted) const
{
    if (typeName_ != wanted) {
        throw std::runtime_error("Type mismatch in SwAny::get");
    }
    if (data_ == nullptr) {
        throw std::runtime_error("Null storage in SwAny::get");
    }
    return ops_->data(data_);
}

SwAny SwAny::convert(std::string const& targetTypeName) const
{
    AnyRegistry& registry = AnyRegistry::instance();
    if (typeName_ == targetTypeName) {
        return *this;
    }
    std::shared_ptr<Converter const> const converter = registry.findConverter(typeName_, targetTypeName);
    if (!converter) {
        sw_detail::writeDiagnostic("No conversion rule registered from ", typeName_ + " to " + targetTypeName);
        return {};
    }
    return (*converter)(*this);
}

bool SwAny::canConvert(std::string const& targetTypeName) const
{
    return typeName_ == targetTypeName || AnyRegistry::instance().findConverter(typeName_, targetTypeName) != nullptr;
}

SwString SwAny::toString(int /*reserved*/) const
{
    if (isEmpty()) {
        return {};
    }
    if (holds<SwString>()) {
        return get<SwString>();
    }
    if (holds<double>()) {
        return sw_detail::generalNumberText(get<double>(), sw_detail::kDoubleTextDigits);
    }
    if (holds<float>()) {
        return sw_detail::generalNumberText(static_cast<double>(get<float>()), sw_detail::kFloatTextDigits);
    }
    SwAny const text = convert<SwString>();
    return text.isEmpty() ? SwString() : text.get<SwString>();
}

SwAny::TypeOps const* SwAny::storeOps(std::string const& typeName, TypeOps const& ops)
{
    return AnyRegistry::instance().storeOps(typeName, ops);
}

SwAny::TypeOps const* SwAny::findOps(std::string const& typeName)
{
    return AnyRegistry::instance().findOps(typeName);
}

void SwAny::addConverter(std::string const& from, std::string const& to, Converter converter)
{
    AnyRegistry::instance().addConverter(from, to, std::move(converter));
}

SwAny::ConverterMap const SwAny::getConverters()
{
    return AnyRegistry::instance().converters();
}

SwAny::ConversionRules const SwAny::getConversionRules()
{
    return AnyRegistry::instance().rules();
}

bool SwAny::registerAllType()
{
    AnyRegistry::instance();
    return true;
}
