// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Shared by the JSON fuzz targets: quiet diagnostics, a failing check, the index of an error message.
#pragma once

#include "SwJson.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <streambuf>
#include <string>

namespace json_fuzz {

/// Standard error goes nowhere while it lives: coercion and decryption write a line for every failure.
class QuietStandardError {
public:
    QuietStandardError() : previous_(std::cerr.rdbuf(&nowhere_)) {}
    QuietStandardError(QuietStandardError const&) = delete;
    QuietStandardError& operator=(QuietStandardError const&) = delete;
    ~QuietStandardError() { std::cerr.rdbuf(previous_); }

private:
    class Nowhere : public std::streambuf {
        int_type overflow(int_type byte) override { return traits_type::not_eof(byte); }
        std::streamsize xsputn(char const*, std::streamsize count) override { return count; }
    };
    Nowhere nowhere_;
    std::streambuf* previous_;
};

/// Ends the run when a property does not hold.
inline void require(bool holds, char const* property, std::string const& text)
{
    if (!holds) {
        std::fprintf(stderr, "property does not hold: %s\n%s\n", property, text.c_str());
        std::abort();
    }
}

/// An error stands within the text or at its end, or is the one about what follows the value.
inline bool errorIsInside(std::string const& error, std::size_t size)
{
    constexpr char kPlace[] = " (index ";
    std::size_t const place = error.find(kPlace);
    if (place == std::string::npos) {
        return error == "Unexpected characters at the end of JSON.";
    }
    return std::strtoull(error.c_str() + place + sizeof kPlace - 1, nullptr, 10) <= size;
}

inline std::string written(SwJsonValue const& value, bool pretty, SwString const& key = SwString())
{
    SwString text;
    SwJsonDocument::generateJson(value, text, pretty, 0, key);
    return text;
}

/// The value of a document that has to be readable.
inline SwJsonValue readBack(std::string const& text, SwString const& key = SwString())
{
    SwString error;
    SwJsonDocument document = SwJsonDocument::fromJson(text, key, error);
    require(error.isEmpty(), "what was written can be read", text + "\n" + error.toStdString());
    return document.takeRoot();
}

}  // namespace json_fuzz
