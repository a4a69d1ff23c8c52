// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// PNG pictures for people that tests hold: read, cut out, compared, written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace imaging_test {

/// Rows of red, green and blue bytes.
struct RgbPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes{};
};

/// Pixels from left and top up to right and bottom, which are not included.
struct Box {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

/// Empty (0x0) when the file is no PNG.
RgbPicture readPng(std::string const& path);

/// False when the file cannot be written.
bool writePng(std::string const& path, RgbPicture const& picture);

/// The smallest box that holds every pixel in which two pictures of equal size differ; empty when none does.
Box differingBox(RgbPicture const& one, RgbPicture const& other);

/// The smallest box around both; an empty one does not count.
Box unitedBox(Box one, Box other);

/// Precondition: the box lies in the picture.
RgbPicture cutOut(RgbPicture const& picture, Box box);

/// The same with every byte rounded down to a multiple of `step`: with 4 the eye sees no difference, and the file is a
/// third smaller.
RgbPicture inSteps(RgbPicture picture, int step);

/// Whether two pictures are alike as Likeness::Close of golden_picture.h says: empty, else one line that says how they
/// differ.
std::string differenceBeyondClose(RgbPicture const& golden, RgbPicture const& actual);

}  // namespace imaging_test
