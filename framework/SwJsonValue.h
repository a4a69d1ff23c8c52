// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One JSON value: the node of the tree that the reader builds and the writer walks.
#pragma once

#include "SwString.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

class SwJsonObject;
class SwJsonArray;

/// One JSON value. Copies are deep, moves transfer; nesting of any depth is copied, compared and destroyed
/// without using the thread's stack for it. Example: SwJsonValue(2.5).toString() is "2.500000".
class SwJsonValue {
public:
    enum Type : std::int32_t { Null = 0, Bool = 1, Int = 2, Double = 3, String = 4, Object = 5, Array = 6 };

    // Not defaulted: a value made with () would then be cleared twice, once as so many plain bytes.
    SwJsonValue() noexcept {}
    SwJsonValue(std::nullptr_t) noexcept {}
    /// A Bool of bool, a Double of any floating type, an Int of any other number; an unsigned value above the signed
    /// range wraps to its two's complement. Nothing else becomes a number by itself, pointers in particular.
    template <typename T, std::enable_if_t<std::is_arithmetic_v<T>, int> = 0>
    SwJsonValue(T value) noexcept
    {
        if constexpr (std::is_same_v<T, bool>) {
            type_ = Bool;
            bool_ = value;
        } else if constexpr (std::is_floating_point_v<T>) {
            type_ = Double;
            double_ = static_cast<double>(value);
        } else {
            type_ = Int;
            int_ = static_cast<std::int64_t>(value);
        }
    }
    /// A null pointer gives the empty String.
    SwJsonValue(char const* text) : type_(String), string_(text == nullptr ? "" : text) {}
    SwJsonValue(std::string text) noexcept : type_(String), string_(std::move(text)) {}
    SwJsonValue(std::string_view text) : type_(String), string_(text) {}
    SwJsonValue(SwString const& text) : type_(String), string_(text.toStdString()) {}
    SwJsonValue(SwJsonObject object);
    SwJsonValue(SwJsonArray array);
    /// Values of kind Object or Array over an existing container, which may be null.
    SwJsonValue(std::shared_ptr<SwJsonObject> object) noexcept;
    SwJsonValue(std::shared_ptr<SwJsonArray> array) noexcept;

    SwJsonValue(SwJsonValue const& other)
        : type_(other.type_)
        , bool_(other.bool_)
        , int_(other.int_)
        , double_(other.double_)
        , string_(other.string_)
    {
        if (other.hasContainer()) {
            copyContainer_(other);
        }
    }
    SwJsonValue(SwJsonValue&& other) noexcept  ///< leaves `other` Null
        : type_(std::exchange(other.type_, Null))
        , bool_(std::exchange(other.bool_, false))
        , int_(std::exchange(other.int_, 0))
        , double_(std::exchange(other.double_, 0.0))
        , string_(std::move(other.string_))
        , object_(std::move(other.object_))
        , array_(std::move(other.array_))
    {
        other.string_.clear();
    }
    SwJsonValue& operator=(SwJsonValue const& other) { return *this = SwJsonValue(other); }
    SwJsonValue& operator=(SwJsonValue&& other) noexcept
    {
        // Taken out first: `other` may stand inside the container that this value gives up.
        SwJsonValue taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~SwJsonValue()
    {
        if (hasContainer()) {
            releaseContainer_();
        }
    }
    void swap(SwJsonValue& other) noexcept
    {
        std::swap(type_, other.type_);
        std::swap(bool_, other.bool_);
        std::swap(int_, other.int_);
        std::swap(double_, other.double_);
        string_.swap(other.string_);
        object_.swap(other.object_);
        array_.swap(other.array_);
    }

    Type type() const noexcept { return type_; }
    bool isNull() const noexcept { return type_ == Null; }
    bool isBool() const noexcept { return type_ == Bool; }
    bool isInt() const noexcept { return type_ == Int; }
    bool isDouble() const noexcept { return type_ == Double; }
    bool isString() const noexcept { return type_ == String; }
    bool isObject() const noexcept { return type_ == Object; }
    bool isArray() const noexcept { return type_ == Array; }

    /// The stored field; a value of another kind gives false, 0, 0.0: nothing is converted.
    bool toBool() const noexcept { return bool_; }
    std::int64_t toInt() const noexcept { return int_; }
    double toDouble() const noexcept { return double_; }

    /// The short text form, the one used for display and comparison: a String as it is, "true" or
    /// "false", a decimal integer, "%f" of a Double in the "C" locale (2.5 gives "2.500000"), "null",
    /// and "{}" for every Object and every Array.
    std::string toString() const;

    /// The string of a String, "" of any other kind; no copy.
    std::string const& stringRef() const noexcept { return string_; }

    /// The container; a value of another kind, or a null container, gives a shared empty one.
    SwJsonObject const& toObject() const noexcept;
    SwJsonArray const& toArray() const noexcept;

    /// The container for changing it in place, null when the value is of another kind.
    SwJsonObject* editObject() noexcept { return object_.get(); }
    SwJsonArray* editArray() noexcept { return array_.get(); }
    /// Whether the value owns a container (an Object or Array may hold a null one).
    bool hasContainer() const noexcept { return object_ != nullptr || array_ != nullptr; }

    /// JSON escaping of a byte string without the surrounding quotes: a tab becomes \t, byte 0x01
    /// becomes \u0001 (upper-case digits), "/" and bytes of 0x7F and above stay.
    static std::string escapeString(std::string_view text);

    /// Same kind, same field, same container contents; a null container has the contents of an empty one.
    friend bool operator==(SwJsonValue const& a, SwJsonValue const& b);
    friend bool operator!=(SwJsonValue const& a, SwJsonValue const& b) { return !(a == b); }

private:
    friend class SwJsonTree;

    void copyContainer_(SwJsonValue const& other);
    void releaseContainer_() noexcept;

    // Every field is there whatever the kind; those that the kind does not use are cleared.
    Type type_ = Null;
    bool bool_ = false;
    std::int64_t int_ = 0;
    double double_ = 0.0;
    std::string string_;
    std::shared_ptr<SwJsonObject> object_;
    std::shared_ptr<SwJsonArray> array_;
};
