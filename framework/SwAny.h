// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The framework's variant: one value of any copyable type, the run-time name of that type, and a
// process-wide registry of conversions. Host and plugin share it because the framework is one shared
// library. Reading and converting are safe from several threads on different values.
#pragma once

#include "SwJson.h"
#include "SwString.h"

#include <functional>
#include <map>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

/// A plain list; the registry knows SwList<unsigned char> as the byte string of hexadecimal text.
template <typename T>
class SwList : public std::vector<T> {
public:
    using std::vector<T>::vector;
};

/// A set of flags of an enumeration.
template <typename Enum>
class SwFlagSet {
public:
    SwFlagSet() = default;
    SwFlagSet(Enum flag) : bits_(static_cast<unsigned>(flag)) {}
    SwFlagSet& set(Enum flag, bool on = true)
    {
        bits_ = on ? (bits_ | static_cast<unsigned>(flag)) : (bits_ & ~static_cast<unsigned>(flag));
        return *this;
    }
    bool test(Enum flag) const { return (bits_ & static_cast<unsigned>(flag)) != 0; }
    void clear() { bits_ = 0; }
    friend bool operator==(SwFlagSet a, SwFlagSet b) { return a.bits_ == b.bits_; }

private:
    unsigned bits_ = 0;
};

enum class WindowFlag : unsigned { None = 0, Frameless = 1, Resizable = 2 };
enum class EntryType : unsigned { None = 0, File = 1, Folder = 2 };
enum class DrawTextFormat : unsigned { None = 0, Left = 1, Center = 2, Right = 4 };

class SwAny {
public:
    /// What the registry knows of a type. `data` gives the address of the value behind the storage
    /// pointer; `construct` makes a new value as a copy of the one a raw pointer stands on.
    struct TypeOps {
        void* (*construct)(void const* source);
        void (*copy)(void*& destination, void const* source);
        void (*move)(void*& destination, void*& source);
        void (*clear)(void* value);
        void* (*data)(void* value);
    };

    using Converter = std::function<SwAny(SwAny const&)>;
    using ConverterMap = std::map<std::pair<std::string, std::string>, Converter>;
    using ConversionRules = std::map<std::string, std::vector<std::string>>;

    SwAny() = default;
    /// Holds a copy of `value`, whose type registers its operations on the way.
    template <typename T, std::enable_if_t<!std::is_same_v<std::decay_t<T>, SwAny>, int> = 0>
    SwAny(T&& value) : ops_(registerMetaType<std::decay_t<T>>())
                     , typeName_(nameOf<std::decay_t<T>>())
    {
        // Last: nothing can fail after it and leave it without an owner.
        data_ = new std::decay_t<T>(std::forward<T>(value));
    }
    SwAny(SwAny const& other) { copyFrom(other); }
    SwAny(SwAny&& other) noexcept;
    SwAny& operator=(SwAny const& other);
    SwAny& operator=(SwAny&& other) noexcept;
    ~SwAny() { clear(); }

    /// A value of the registered type `typeName` copied from a raw pointer. A null pointer gives the type
    /// name without a value; so does a type that is not registered.
    static SwAny fromRawPointer(std::string const& typeName, void const* value);

    /// Replaces this value by a copy of `other`.
    void copyFrom(SwAny const& other);
    /// Destroys the value; pointer and type name are empty afterwards.
    void clear() noexcept;

    bool isEmpty() const noexcept { return data_ == nullptr; }
    std::string const& typeName() const noexcept { return typeName_; }
    void* data() noexcept;
    void const* data() const noexcept;

    /// Whether the stored type is T.
    template <typename T>
    bool holds() const
    {
        return typeName_ == nameOf<T>();
    }

    /// The stored T. Throws std::runtime_error "Type mismatch in SwAny::get" when another type is
    /// stored, "Null storage in SwAny::get" when there is no value.
    template <typename T>
    T& get()
    {
        return *static_cast<T*>(checkedData_(nameOf<T>()));
    }
    template <typename T>
    T const& get() const
    {
        return *static_cast<T const*>(checkedData_(nameOf<T>()));
    }

    /// This value as `targetTypeName`: a copy when that is the stored type, else what the registered
    /// conversion gives. Without one, writes "No conversion rule registered from A to B" to standard
    /// error and gives an empty value.
    /// A name without a value has nothing to convert: throws "Null storage in SwAny::get" like get. What
    /// SwString gives as char const* points into this value.
    SwAny convert(std::string const& targetTypeName) const;
    template <typename T>
    SwAny convert() const
    {
        return convert(nameOf<T>());
    }
    /// Whether the registry can turn the stored type into `targetTypeName` (the same type included).
    bool canConvert(std::string const& targetTypeName) const;

    /// The value as text: an SwString as it is, float and double in a stream's general notation with 10 and
    /// 15 significant digits and always ".", other types by their conversion to SwString; an empty value gives "".
    /// The argument is reserved and changes nothing.
    SwString toString(int reserved = 0) const;

    /// The name that keys the registry: std::type_info::name() without a leading "*".
    template <typename T>
    static std::string const& nameOf()
    {
        static std::string const name = plainName(typeid(T).name());
        return name;
    }
    static std::string plainName(char const* rawName) { return *rawName == '*' ? rawName + 1 : rawName; }

    /// Makes the type's operations known under its name and returns those to use. A type that the
    /// framework registers itself keeps the framework's operations, whatever module registers it again:
    /// that module may be unloaded while its values live on. Any other type takes the newer operations.
    template <typename T>
    static TypeOps const* registerMetaType()
    {
        static TypeOps const* const ops = storeOps(nameOf<T>(), opsOf<T>());
        return ops;
    }
    static TypeOps const* storeOps(std::string const& typeName, TypeOps const& ops);
    /// The operations of a registered type, null for an unknown one.
    static TypeOps const* findOps(std::string const& typeName);

    /// Adds a conversion; one that exists for the same pair is replaced.
    template <typename From, typename To>
    static void registerConversion(std::function<To(From const&)> function)
    {
        registerMetaType<From>();
        registerMetaType<To>();
        addConverter(nameOf<From>(), nameOf<To>(), [function = std::move(function)](SwAny const& source) {
            return SwAny(function(source.get<From>()));
        });
    }
    static void addConverter(std::string const& from, std::string const& to, Converter converter);

    /// The conversions by (source, target) and, per source, the targets in the order of registration.
    /// Both are snapshots that hold the built-in rules too, and const: a rule is added by registerConversion,
    /// in a copy it would be lost. A conversion added by a module must not be used after the module is unloaded.
    static ConverterMap const getConverters();
    static ConversionRules const getConversionRules();

    /// Registers the built-in types and conversions, once per process; true when done. Every user of the
    /// registry calls it. Writes the banner line to standard error on its one run.
    static bool registerAllType();

    /// The operations of T as this module compiles them.
    template <typename T>
    static TypeOps opsOf()
    {
        return TypeOps{
            [](void const* source) -> void* { return new T(*static_cast<T const*>(source)); },
            [](void*& destination, void const* source) { destination = new T(*static_cast<T const*>(source)); },
            [](void*& destination, void*& source) { destination = std::exchange(source, nullptr); },
            [](void* value) { delete static_cast<T*>(value); },
            [](void* value) { return value; },
        };
    }

private:
    void* checkedData_(std::string const& wanted) const;

    TypeOps const* ops_ = nullptr;
    void* data_ = nullptr;
    std::string typeName_;
};
