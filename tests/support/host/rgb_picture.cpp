// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// PNG through libpng's short interface.
#include "rgb_picture.h"

#include "golden_picture.h"

#include <algorithm>
#include <cstdlib>
#include <png.h>
#include <sstream>

namespace imaging_test {
namespace {

constexpr int kParts = 3;

std::size_t placeOf(RgbPicture const& picture, int x, int y)
{
    return static_cast<std::size_t>(kParts) *
           (static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) + static_cast<std::size_t>(x));
}

bool isEmpty(Box box)
{
    return box.right <= box.left;
}

}  // namespace

RgbPicture readPng(std::string const& path)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) {
        return {};
    }
    image.format = PNG_FORMAT_RGB;
    RgbPicture picture{static_cast<int>(image.width), static_cast<int>(image.height), {}};
    picture.bytes.resize(PNG_IMAGE_SIZE(image));
    return png_image_finish_read(&image, nullptr, picture.bytes.data(), 0, nullptr) != 0 ? picture : RgbPicture();
}

bool writePng(std::string const& path, RgbPicture const& picture)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    return png_image_write_to_file(&image, path.c_str(), 0, picture.bytes.data(), 0, nullptr) != 0;
}

Box differingBox(RgbPicture const& one, RgbPicture const& other)
{
    Box box;
    for (int y = 0; y < one.height; ++y) {
        for (int x = 0; x < one.width; ++x) {
            auto const first = one.bytes.begin() + static_cast<std::ptrdiff_t>(placeOf(one, x, y));
            auto const second = other.bytes.begin() + static_cast<std::ptrdiff_t>(placeOf(one, x, y));
            if (!std::equal(first, first + kParts, second)) {
                box = unitedBox(box, {x, y, x + 1, y + 1});
            }
        }
    }
    return box;
}

Box unitedBox(Box one, Box other)
{
    if (isEmpty(one) || isEmpty(other)) {
        return isEmpty(one) ? other : one;
    }
    return {std::min(one.left, other.left), std::min(one.top, other.top), std::max(one.right, other.right),
            std::max(one.bottom, other.bottom)};
}

RgbPicture cutOut(RgbPicture const& picture, Box box)
{
    RgbPicture part{box.right - box.left, box.bottom - box.top, {}};
    for (int y = box.top; y < box.bottom; ++y) {
        auto const row = picture.bytes.begin() + static_cast<std::ptrdiff_t>(placeOf(picture, box.left, y));
        part.bytes.insert(part.bytes.end(), row, row + static_cast<std::ptrdiff_t>(kParts) * part.width);
    }
    return part;
}

RgbPicture inSteps(RgbPicture picture, int step)
{
    for (std::uint8_t& byte : picture.bytes) {
        byte = static_cast<std::uint8_t>(byte - byte % step);
    }
    return picture;
}

std::string differenceBeyondClose(RgbPicture const& golden, RgbPicture const& actual)
{
    std::ostringstream difference;
    if (golden.width != actual.width || golden.height != actual.height) {
        difference << "the golden is " << golden.width << "x" << golden.height << ", the picture " << actual.width
                   << "x" << actual.height;
        return difference.str();
    }
    int largest = 0;
    double sum = 0;
    for (std::size_t i = 0; i < actual.bytes.size(); ++i) {
        int const off = std::abs(int{actual.bytes[i]} - int{golden.bytes[i]});
        largest = std::max(largest, off);
        sum += off;
    }
    double const mean = actual.bytes.empty() ? 0 : sum / static_cast<double>(actual.bytes.size());
    if (largest > kCloseLargest || mean > kCloseMean) {
        difference << "differs by at most " << largest << " and on average " << mean;
    }
    return difference.str();
}

}  // namespace imaging_test
