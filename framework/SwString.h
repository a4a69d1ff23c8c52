// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The framework's byte string: UTF-8 by convention, never validated.
// Its number conversions are lenient on purpose and report failure by a flag and one line on
// standard error, never by an exception. All numbers are read in the "C" locale whatever locale
// the process has set. Positions and lengths are int; longer strings are whole in toStdString().
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class SwString {
public:
    SwString() = default;
    SwString(std::string text) noexcept : text_(std::move(text)) {}
    /// A null pointer gives the empty string.
    SwString(char const* text) : text_(text == nullptr ? "" : text) {}
    /// Neither nullptr nor the number 0 is a text: without this, arg(0) would put in "" for "0".
    SwString(std::nullptr_t) = delete;

    operator std::string const&() const noexcept { return text_; }
    operator std::string_view() const noexcept { return text_; }
    std::string const& toStdString() const noexcept { return text_; }

    /// The number of bytes; the greatest int for a longer string.
    int size() const noexcept;
    int length() const noexcept { return size(); }
    bool isEmpty() const noexcept { return text_.empty(); }
    bool empty() const noexcept { return text_.empty(); }
    char const* data() const noexcept { return text_.data(); }
    char const* c_str() const noexcept { return text_.c_str(); }
    /// The byte at `index`, which must be at least 0 and below size().
    char operator[](int index) const { return text_[static_cast<std::size_t>(index)]; }
    /// Makes room for `bytes` in all; a number that is not positive changes nothing.
    void reserve(int bytes) { text_.reserve(bytes < 0 ? 0 : static_cast<std::size_t>(bytes)); }
    void clear() noexcept { text_.clear(); }

    /// Appends bytes in place; the writer builds its output with it.
    SwString& append(std::string_view bytes)
    {
        text_.append(bytes);
        return *this;
    }
    SwString& operator+=(SwString const& other) { return append(other.text_); }

    /// Gives the bytes away; the string is empty afterwards.
    std::string takeStdString() noexcept { return std::exchange(text_, std::string()); }

    /// A new string: this one followed by the other.
    SwString operator+(SwString const& other) const;
    friend SwString operator+(char const* left, SwString const& right) { return SwString(left) + right; }
    friend SwString operator+(std::string const& left, SwString const& right) { return SwString(left) + right; }

    /// A copy without leading and trailing space, tab, line feed and carriage return. Vertical tab
    /// and form feed stay: trimmed("\v a ") is "\v a".
    SwString trimmed() const;

    /// The bytes from `position`, at most `length` of them. A negative position, or one at or beyond
    /// the size, gives "". A negative length, or one beyond the end, means "to the end":
    /// SwString("abcdef").mid(2, -1) is "cdef".
    SwString mid(int position, int length) const;

    /// A copy in which the first "%" directly followed by a digit is replaced, with that digit, by
    /// `value`; without such a placeholder the copy is unchanged: "x=%1, y=%1" with arg("3") is
    /// "x=3, y=%1".
    SwString arg(SwString const& value) const;

    /// The pieces between separators. Empty pieces are kept but for a trailing one: "a,b," gives
    /// a and b; ",a" gives "" and a; "" gives no piece.
    std::vector<SwString> split(char separator) const;

    /// Reads a 32-bit signed integer: surrounding white space and every "_" are dropped, then an
    /// optional sign with "0b" binary digits, or the automatic base of strtoll ("0x1F" is 31, "010" is
    /// 8), where bytes after the number are ignored. Failure (no number, out of range) gives 0, sets
    /// `*ok` to false and writes "Invalid int conversion in SwString: " and the text to standard error.
    int toInt(bool* ok = nullptr) const;

    /// Reads a number as double: with ".", "e" or "E" by strtod, otherwise by the integer rules of
    /// toInt without the 32-bit limit. Returns whether a number was read; `out` is untouched on failure.
    /// Writes nothing: the callers name the conversion in their own message.
    bool parseNumericDouble(double& out) const;

    /// Reads a number the way strtoll does with automatic base; no number, or one outside 64 bits, gives 0
    /// without a message. Bytes after the number are ignored.
    long toLong() const;

    /// Reads an unsigned number the way strtoull does with automatic base after trimming; a leading
    /// "-", no digits, or a value above `max` gives 0. Bytes after the number are ignored.
    unsigned long toUnsigned(unsigned long max) const;

    /// AES-256-ECB under the SHA-256 of `key`, as base64 text. On any failure, one of memory too, writes
    /// "Encryption error: " and the reason to standard error and returns "".
    SwString encryptAES(SwString const& key) const;

    /// The plain text of this base64 cipher text. Wrong padding is tolerated: the bytes come back as
    /// they are. On any failure, one of memory too, writes "Decryption error: " and the reason to
    /// standard error and returns "".
    SwString decryptAES(SwString const& key) const;

    friend bool operator==(SwString const& a, SwString const& b) noexcept { return a.text_ == b.text_; }
    friend bool operator!=(SwString const& a, SwString const& b) noexcept { return a.text_ != b.text_; }
    friend bool operator<(SwString const& a, SwString const& b) noexcept { return a.text_ < b.text_; }
    friend std::ostream& operator<<(std::ostream& out, SwString const& s) { return out << s.text_; }

private:
    std::string text_;
};
