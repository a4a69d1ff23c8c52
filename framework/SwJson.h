// The framework's JSON: value tree, reader and writer.
//
// Differences from RFC 8259, all on purpose (tests/framework/json_reader_test.cpp pins each):
//   - a trailing comma is accepted in objects and arrays: {"a":1,} and [1,2,]
//   - vertical tab and form feed count as white space
//   - a repeated member name replaces the earlier value
//   - a string value that looks like a literal or a number is read as one: "12" is Int 12, "true" is
//     Bool true, "0.1" is the Double nearest to the float 0.1; member names are never touched
//   - integers outside 64 bits and doubles outside the double range (too small included) are errors
//   - bytes of 0x80 and above are not checked to be UTF-8
//   - with a key, string values and bare tokens are decrypted while reading
#pragma once

#include "SwString.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

class SwJsonObject;
class SwJsonArray;

/// One JSON value. Copies are deep, moves transfer; nesting of any depth is copied and destroyed
/// without recursion.
class SwJsonValue {
public:
    enum Type : std::int32_t { Null = 0, Bool = 1, Int = 2, Double = 3, String = 4, Object = 5, Array = 6 };

    SwJsonValue() noexcept = default;
    SwJsonValue(std::nullptr_t) noexcept {}
    SwJsonValue(bool value) noexcept : type_(Bool), bool_(value) {}
    /// Any integer type; an unsigned value above the signed range wraps to its two's complement.
    template <typename T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>, int> = 0>
    SwJsonValue(T value) noexcept : type_(Int)
                                  , int_(static_cast<std::int64_t>(value))
    {
    }
    SwJsonValue(double value) noexcept : type_(Double), double_(value) {}
    SwJsonValue(char const* text) : type_(String), string_(text == nullptr ? "" : text) {}
    SwJsonValue(std::string text) noexcept : type_(String), string_(std::move(text)) {}
    SwJsonValue(SwString const& text) : type_(String), string_(text.toStdString()) {}
    SwJsonValue(SwJsonObject object);
    SwJsonValue(SwJsonArray array);
    /// Values of kind Object or Array over an existing container, which may be null.
    SwJsonValue(std::shared_ptr<SwJsonObject> object) noexcept;
    SwJsonValue(std::shared_ptr<SwJsonArray> array) noexcept;

    SwJsonValue(SwJsonValue const& other);
    SwJsonValue(SwJsonValue&& other) noexcept;  ///< leaves `other` Null
    SwJsonValue& operator=(SwJsonValue const& other);
    SwJsonValue& operator=(SwJsonValue&& other) noexcept;
    ~SwJsonValue();

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

    /// Same kind, same field, same container contents.
    friend bool operator==(SwJsonValue const& a, SwJsonValue const& b);
    friend bool operator!=(SwJsonValue const& a, SwJsonValue const& b) { return !(a == b); }

private:
    friend class SwJsonTree;

    Type type_ = Null;
    bool bool_ = false;
    std::int64_t int_ = 0;
    double double_ = 0.0;
    std::string string_;
    std::shared_ptr<SwJsonObject> object_;
    std::shared_ptr<SwJsonArray> array_;
};

/// Ordered map from byte-string keys to values, in plain byte order: "B" before "a" before "b".
class SwJsonObject {
public:
    using Map = std::map<std::string, SwJsonValue, std::less<>>;
    using iterator = Map::iterator;
    using const_iterator = Map::const_iterator;

    SwJsonObject() = default;
    SwJsonObject(std::initializer_list<std::pair<std::string const, SwJsonValue>> members);

    /// The value under `key`, or one shared Null value when it is absent; never inserts.
    SwJsonValue const& operator[](std::string_view key) const;
    /// The value under `key`, inserted as Null first when it is absent.
    SwJsonValue& operator[](std::string_view key);
    void insertOrAssign(std::string key, SwJsonValue value);

    const_iterator find(std::string_view key) const { return members_.find(key); }
    iterator find(std::string_view key) { return members_.find(key); }
    bool contains(std::string_view key) const { return members_.find(key) != members_.end(); }
    std::size_t size() const noexcept { return members_.size(); }
    bool empty() const noexcept { return members_.empty(); }
    bool isEmpty() const noexcept { return members_.empty(); }
    void clear() { members_.clear(); }
    std::size_t erase(std::string_view key);

    const_iterator begin() const noexcept { return members_.begin(); }
    const_iterator end() const noexcept { return members_.end(); }
    iterator begin() noexcept { return members_.begin(); }
    iterator end() noexcept { return members_.end(); }

    /// The member names in order.
    std::vector<std::string> keys() const;

    friend bool operator==(SwJsonObject const& a, SwJsonObject const& b) { return a.members_ == b.members_; }
    friend bool operator!=(SwJsonObject const& a, SwJsonObject const& b) { return !(a == b); }

private:
    friend class SwJsonTree;
    Map members_;
};

/// Growable sequence of values.
class SwJsonArray {
public:
    using const_iterator = std::vector<SwJsonValue>::const_iterator;
    using iterator = std::vector<SwJsonValue>::iterator;

    SwJsonArray() = default;
    SwJsonArray(std::initializer_list<SwJsonValue> items) : items_(items) {}

    void append(SwJsonValue value) { items_.push_back(std::move(value)); }
    std::size_t size() const noexcept { return items_.size(); }
    bool empty() const noexcept { return items_.empty(); }
    bool isEmpty() const noexcept { return items_.empty(); }
    /// The item at `index`, which must be below size().
    SwJsonValue const& operator[](std::size_t index) const { return items_[index]; }
    SwJsonValue& operator[](std::size_t index) { return items_[index]; }
    void clear() { items_.clear(); }

    const_iterator begin() const noexcept { return items_.begin(); }
    const_iterator end() const noexcept { return items_.end(); }
    iterator begin() noexcept { return items_.begin(); }
    iterator end() noexcept { return items_.end(); }

    friend bool operator==(SwJsonArray const& a, SwJsonArray const& b) { return a.items_ == b.items_; }
    friend bool operator!=(SwJsonArray const& a, SwJsonArray const& b) { return !(a == b); }

private:
    friend class SwJsonTree;
    std::vector<SwJsonValue> items_;
};

/// A document: root value, reader and writer.
class SwJsonDocument {
public:
    SwJsonDocument() = default;
    explicit SwJsonDocument(SwJsonValue root) : root_(std::move(root)) {}

    SwJsonValue const& root() const noexcept { return root_; }
    /// Gives the root away; the document's own root is Null afterwards.
    SwJsonValue takeRoot() { return std::move(root_); }
    bool isNull() const noexcept { return root_.isNull(); }
    bool isObject() const noexcept { return root_.isObject(); }
    bool isArray() const noexcept { return root_.isArray(); }
    SwJsonObject const& object() const noexcept { return root_.toObject(); }
    SwJsonArray const& array() const noexcept { return root_.toArray(); }

    /// Loads a whole document. `error` must come in empty (a text in it counts as the first error) and
    /// comes back empty on success; after an error the root is Null. Bytes other than white space after
    /// the value give "Unexpected characters at the end of JSON.".
    static SwJsonDocument fromJson(SwString const& text, SwString const& key, SwString& error);

    /// Reads one value from byte `cursor` on, leading white space skipped, and leaves the cursor after
    /// it. An error leaves the cursor at or near the problem and gives Null. With a non-empty key
    /// string values and bare tokens are decrypted.
    static SwJsonValue parseJson(SwString const& text, std::size_t& cursor, SwString const& key, SwString& error);

    /// Reads a string whose opening quote is at `cursor`; on an error gives "".
    static std::string parseString(SwString const& text, std::size_t& cursor, SwString& error);

    /// Decodes one escape whose first hex digit (just after \u) is at `cursor`, with its low-surrogate
    /// partner, and appends its UTF-8 form to `out`. Returns false after recording an error.
    static bool parseUnicodeEscapeSequence(SwString const& text, std::size_t& cursor, std::string& out,
                                           SwString& error);

    /// Records the first error: message, " (index N) near \"", up to 20 bytes on either side, and "\"".
    /// A later error changes nothing.
    static void reportError(SwString& error, SwString const& text, std::size_t index, std::string_view message);

    /// Appends the text of `value` to `out`: compact, or indented by two spaces a level. Whole doubles
    /// are written as integers (saturating), others fixed with six digits. With a key, scalars become
    /// bare cipher text and strings quoted cipher text; null stays in clear.
    static void generateJson(SwJsonValue const& value, SwString& out, bool pretty, int level, SwString const& key);

    /// The root's text; see generateJson.
    SwString toJson(bool pretty = false, SwString const& key = SwString()) const;

private:
    SwJsonValue root_;
};
