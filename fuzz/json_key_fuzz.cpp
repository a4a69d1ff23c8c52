// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Any bytes as a JSON document under a key: the first byte says how many of the next are the key. Nothing
// throws; what can be read is written with the key and comes back as the kinds of its texts say.
#include "json_fuzz_support.h"

#include <algorithm>
#include <cstdint>

namespace {

SwString plainText(SwJsonValue const& value)
{
    return json_fuzz::written(value, false);
}

/// What the scalar becomes on its way through cipher text and back.
SwJsonValue afterTheKey(SwJsonValue const& value)
{
    switch (value.type()) {
    case SwJsonValue::Null:
        // Written in the clear, and no cipher text.
        return "";
    case SwJsonValue::Bool:
    case SwJsonValue::Int:
        return value;
    case SwJsonValue::Double: {
        std::string const text = plainText(value);
        if (text == "nan") {
            return text;
        }
        return text.find('.') != std::string::npos ? SwJsonValue(std::strtod(text.c_str(), nullptr))
                                                   : SwJsonValue(std::strtoll(text.c_str(), nullptr, 10));
    }
    default:
        // A string is typed by what it looks like.
        return json_fuzz::readBack(plainText(value));
    }
}

bool comesBack(SwJsonValue const& original, SwJsonValue const& read)
{
    if (original.isArray()) {
        SwJsonArray const& a = original.toArray();
        SwJsonArray const& b = read.toArray();
        return read.isArray() && std::equal(a.begin(), a.end(), b.begin(), b.end(), comesBack);
    }
    if (original.isObject()) {
        SwJsonObject const& a = original.toObject();
        SwJsonObject const& b = read.toObject();
        return read.isObject() && std::equal(a.begin(), a.end(), b.begin(), b.end(), [](auto const& x, auto const& y) {
                   return x.first == y.first && comesBack(x.second, y.second);
               });
    }
    return afterTheKey(original) == read;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    json_fuzz::QuietStandardError const quiet;
    std::string const bytes(reinterpret_cast<char const*>(data) + 1, size - 1);
    std::size_t const keySize = std::min<std::size_t>(data[0] % 8U, bytes.size());
    SwString const key = bytes.substr(0, keySize);
    std::string const input = bytes.substr(keySize);
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(input, key, error);
    if (!error.isEmpty()) {
        json_fuzz::require(document.isNull(), "an error leaves no tree", input);
        json_fuzz::require(json_fuzz::errorIsInside(error, input.size()), "the error stands within the text",
                           error.toStdString());
        return 0;
    }
    // The same tree also when the text was in the clear, so that deep properties are reached without guessing
    // cipher text.
    SwString plainError;
    SwJsonDocument const plain = SwJsonDocument::fromJson(input, SwString(), plainError);
    SwString const writingKey = key.isEmpty() ? SwString("key") : key;
    for (SwJsonValue const* const tree : {&document.root(), &plain.root()}) {
        std::string const text = json_fuzz::written(*tree, false, writingKey);
        json_fuzz::require(comesBack(*tree, json_fuzz::readBack(text, writingKey)), "the tree comes back", text);
    }
    return 0;
}
