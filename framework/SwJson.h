// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The framework's JSON: value tree, reader and writer.
//
// Differences from RFC 8259, all on purpose (tests/framework/json_reader*_test.cpp pin each):
//   - a trailing comma is accepted in objects and arrays: {"a":1,} and [1,2,]
//   - vertical tab and form feed count as white space
//   - a repeated member name replaces the earlier value
//   - a string value that looks like a literal or a number is read as one: "12" is Int 12, "true" is
//     Bool true, "0.1" is the Double nearest to the float 0.1; member names are never touched
//   - integers outside 64 bits and doubles outside the double range (too small included) are errors
//   - bytes of 0x80 and above are not checked to be UTF-8
//   - half a surrogate pair is an error: "\ud800"
//   - with a key, string values and bare tokens are decrypted while reading
#pragma once

#include "SwJsonArray.h"
#include "SwJsonObject.h"
#include "SwJsonValue.h"
#include "SwString.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

/// A document: root value, reader and writer.
class SwJsonDocument {
public:
    SwJsonDocument() noexcept = default;
    explicit SwJsonDocument(SwJsonValue root) noexcept : root_(std::move(root)) {}

    SwJsonValue const& root() const noexcept { return root_; }
    /// Gives the root away; the document's own root is Null afterwards.
    SwJsonValue takeRoot() noexcept { return std::move(root_); }
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
    /// string values and bare tokens are decrypted. With an error that is there already it does nothing.
    static SwJsonValue parseJson(SwString const& text, std::size_t& cursor, SwString const& key, SwString& error);

    /// Reads a string whose opening quote is at `cursor`; on an error gives "".
    static std::string parseString(SwString const& text, std::size_t& cursor, SwString& error);

    /// Decodes one escape whose first hex digit (just after \u) is at `cursor`, with its low-surrogate
    /// partner, and appends its UTF-8 form to `out`. There is no error to report to: what is wrong is returned
    /// ("" when nothing is), `out` is then as before, and the cursor stands where reportError wants it reported.
    static std::string_view parseUnicodeEscapeSequence(SwString const& text, std::size_t& cursor, std::string& out);

    /// Records the first error: message, " (index N) near \"", up to 20 bytes on either side, and "\"".
    /// A later error changes nothing.
    static void reportError(SwString& error, SwString const& text, std::size_t index, std::string_view message);

    /// Appends the text of `value` to `out`: compact, or indented by two spaces a level. Whole doubles
    /// are written as integers (saturating), others fixed with six digits. With a key, scalars become
    /// bare cipher text and strings quoted cipher text; null stays in clear. What
    /// cannot be encrypted is left out, with a line on standard error. A level below 0 counts as 0. Numbers
    /// have a point whatever locale is set. When memory runs out, `out` is as before.
    static void generateJson(SwJsonValue const& value, SwString& out, bool pretty, int level, SwString const& key);

    /// The root's text; see generateJson.
    SwString toJson(bool pretty = false, SwString const& key = SwString()) const;

private:
    SwJsonValue root_;
};
