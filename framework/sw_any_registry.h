// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The registry behind SwAny: operations by type name and conversions by pair of names. Internal.
#pragma once

#include "SwAny.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <utility>

namespace sw_detail {

/// Significant digits of the texts of a float and of a double.
constexpr int kFloatTextDigits = 10;
constexpr int kDoubleTextDigits = 15;

/// The number in a stream's general notation with `digits` significant digits, at most kDoubleTextDigits. Always with
/// ".": the text is read back as a number, by whomever and under whatever locale.
std::string generalNumberText(double number, int digits);

/// One per process. It is built with the framework's own types and conversions before anybody can reach
/// it; everything later comes in and is read under the mutex, since modules may still register.
class AnyRegistry {
public:
    static AnyRegistry& instance();
    AnyRegistry(AnyRegistry const&) = delete;
    AnyRegistry& operator=(AnyRegistry const&) = delete;

    /// The operations to use for the type: the framework's for its own types, else `ops`. What is
    /// returned stays valid for the rest of the process.
    SwAny::TypeOps const* storeOps(std::string_view typeName, SwAny::TypeOps const& ops);
    SwAny::TypeOps const* findOps(std::string_view typeName) const;

    void addConverter(std::string_view from, std::string_view to, SwAny::Converter converter);
    std::shared_ptr<SwAny::Converter const> findConverter(std::string_view from, std::string_view to) const;

    SwAny::ConverterMap converters() const;
    SwAny::ConversionRules rules() const;

private:
    using NamePair = std::pair<std::string, std::string>;
    struct NamePairLess {
        using is_transparent = void;
        template <typename A, typename B>
        bool operator()(A const& a, B const& b) const
        {
            int const order = std::string_view(a.first).compare(b.first);
            return order != 0 ? order < 0 : std::string_view(a.second) < std::string_view(b.second);
        }
    };

    AnyRegistry();
    void registerMetaTypes_();
    void registerTextConversions_();
    void registerJsonConversions_();
    void registerIntegerConversions_();
    void registerFloatConversions_();
    void registerListConversions_();
    template <typename T>
    void addType_();
    template <typename From, typename To, typename Function>
    void add_(Function function);

    mutable std::shared_mutex mutex_;
    bool builtInDone_ = false;
    /// Operations are never moved nor removed: values point at them.
    std::deque<SwAny::TypeOps> storage_;
    struct Registered {
        SwAny::TypeOps const* ops = nullptr;
        bool builtIn = false;
    };
    std::map<std::string, Registered, std::less<>> types_;
    std::map<NamePair, std::shared_ptr<SwAny::Converter const>, NamePairLess> converters_;
    SwAny::ConversionRules rules_;
};

}  // namespace sw_detail
