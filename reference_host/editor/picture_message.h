// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The preview's answer and the questions that lead to it, as they travel between page and program.
#pragma once

#include "SwJson.h"
#include "editor/preview.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace editor {

/// What a page wants to see.
struct PreviewQuestion {
    std::string text;  ///< the configuration's
    Place place;
    std::vector<std::size_t> hidden;  ///< items that are not drawn this time
};

/// Reads {"text", "hidden"} and one of "seconds", "frame" (from 1) and "step" (-1 or 1) "from" a frame. Throws
/// RequestFailure (400) with one line for anything else.
PreviewQuestion readPreviewQuestion(SwJsonObject const& body);

/// The text member `name`; RequestFailure (400) when it is missing or no text.
std::string const& textMember(SwJsonObject const& body, std::string const& name);

/// A line of JSON, a line feed, and the picture as an uncompressed bitmap of 24 bits: nothing is lost, and packing
/// would take longer than the way to the browser on the same machine.
std::string previewMessage(Shown const& shown);

/// Windows bitmap: rows from the bottom, blue first, padded to four bytes.
std::string bitmapOf(std::vector<std::uint8_t> const& rgb, int width, int height);

/// null, or {"line", "column", "text"}; the place is 1, 1 for what concerns the whole text.
SwJsonValue faultValue(std::optional<check::TextFault> const& fault);

}  // namespace editor
