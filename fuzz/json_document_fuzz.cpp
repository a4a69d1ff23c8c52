// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Any bytes as a JSON document. What can be read is written, compact and indented, and read again: the same
// tree but for doubles, which come back cut to six decimals; from then on the text stays the same.
#include "json_fuzz_support.h"

#include <cstdint>
#include <limits>

namespace {

/// Whether `read` is what the text of `original` says.
bool sameButForDoubles(SwJsonValue const& original, SwJsonValue const& read)
{
    if (original.isDouble()) {
        double const number = original.toDouble();
        double whole = 0.0;
        if (std::modf(number, &whole) != 0.0) {
            // Half a unit of the last decimal, and what the text loses when it becomes a double again.
            double const tolerance = 5.000001e-7 + std::abs(number) * std::numeric_limits<double>::epsilon();
            return read.isDouble() && std::abs(read.toDouble() - number) <= tolerance;
        }
        // Whole ones are written as integers.
        return read.isInt() && (static_cast<double>(read.toInt()) == number || std::abs(number) >= 9.2e18);
    }
    if (original.type() != read.type()) {
        return false;
    }
    if (original.isArray()) {
        SwJsonArray const& a = original.toArray();
        SwJsonArray const& b = read.toArray();
        for (std::size_t i = 0; i < a.size(); ++i) {
            if (b.size() != a.size() || !sameButForDoubles(a[i], b[i])) {
                return false;
            }
        }
        return a.size() == b.size();
    }
    if (original.isObject()) {
        auto member = read.toObject().begin();
        for (auto const& [key, value] : original.toObject()) {
            if (member == read.toObject().end() || member->first != key || !sameButForDoubles(value, member->second)) {
                return false;
            }
            ++member;
        }
        return member == read.toObject().end();
    }
    return original == read;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    json_fuzz::QuietStandardError const quiet;
    std::string const input(reinterpret_cast<char const*>(data), size);
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(input, SwString(), error);
    if (!error.isEmpty()) {
        json_fuzz::require(document.isNull(), "an error leaves no tree", input);
        json_fuzz::require(json_fuzz::errorIsInside(error, size), "the error stands within the text",
                           error.toStdString());
        return 0;
    }
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is compared
    SwJsonValue const copy = document.root();
    json_fuzz::require(copy == document.root(), "a copy equals its source", input);
    for (bool const pretty : {false, true}) {
        std::string const once = json_fuzz::written(document.root(), pretty);
        SwJsonValue const read = json_fuzz::readBack(once);
        json_fuzz::require(sameButForDoubles(document.root(), read), "the tree comes back", once);
        std::string const twice = json_fuzz::written(read, pretty);
        json_fuzz::require(json_fuzz::written(json_fuzz::readBack(twice), pretty) == twice, "the text is stable",
                           twice);
    }
    return 0;
}
