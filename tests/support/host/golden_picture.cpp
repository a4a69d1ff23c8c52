// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Reads and writes PGM and PNG, and says where and by how much two pictures differ.
#include "golden_picture.h"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

namespace imaging_test {
namespace {

struct Grey {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes;
};

Grey greyOf(TestPicture const& picture)
{
    int const width = 2 * picture.chromaWidth();
    Grey grey{width, picture.planes().height + picture.chromaHeight(), {}};
    for (int y = 0; y < picture.planes().height; ++y) {
        for (int x = 0; x < width; ++x) {
            grey.bytes.push_back(x < picture.planes().width ? picture.y(x, y) : std::uint8_t{0});
        }
    }
    for (int row = 0; row < picture.chromaHeight(); ++row) {
        for (int pair = 0; pair < picture.chromaWidth(); ++pair) {
            grey.bytes.push_back(picture.cb(pair, row));
            grey.bytes.push_back(picture.cr(pair, row));
        }
    }
    return grey;
}

void write(Grey const& grey, std::string const& path)
{
    std::ofstream file(path, std::ios::binary);
    file << "P5\n" << grey.width << " " << grey.height << "\n255\n";
    file.write(reinterpret_cast<char const*>(grey.bytes.data()), static_cast<std::streamsize>(grey.bytes.size()));
}

bool read(std::string const& path, Grey& grey)
{
    std::ifstream file(path, std::ios::binary);
    std::string magic;
    int largest = 0;
    if (!(file >> magic >> grey.width >> grey.height >> largest) || magic != "P5" || largest != 255) {
        return false;
    }
    file.get();
    grey.bytes.resize(static_cast<std::size_t>(grey.width) * static_cast<std::size_t>(grey.height));
    file.read(reinterpret_cast<char*>(grey.bytes.data()), static_cast<std::streamsize>(grey.bytes.size()));
    return static_cast<bool>(file);
}

void writePng(std::string const& path, int width, int height, unsigned format, std::vector<std::uint8_t> const& bytes)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<unsigned>(width);
    image.height = static_cast<unsigned>(height);
    image.format = format;
    png_image_write_to_file(&image, path.c_str(), 0, bytes.data(), 0, nullptr);
}

/// As a screen shows it, each pixel three by three; BT.601 limited range, as the tests draw.
void writeForPeople(TestPicture const& picture, std::string const& path)
{
    constexpr int kScale = 3;
    int const width = picture.planes().width * kScale;
    int const height = picture.planes().height * kScale;
    std::vector<std::uint8_t> rgb;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            double const luma = (picture.y(x / kScale, y / kScale) - 16) / 219.0;
            double const cb = (picture.cb(x / kScale / 2, y / kScale / 2) - 128) / 224.0;
            double const cr = (picture.cr(x / kScale / 2, y / kScale / 2) - 128) / 224.0;
            double const red = luma + 1.402 * cr;
            double const blue = luma + 1.772 * cb;
            double const green = (luma - 0.299 * red - 0.114 * blue) / 0.587;
            for (double const part : {red, green, blue}) {
                rgb.push_back(static_cast<std::uint8_t>(std::lround(255 * std::clamp(part, 0.0, 1.0))));
            }
        }
    }
    writePng(path, width, height, PNG_FORMAT_RGB, rgb);
}

}  // namespace

std::string compareWithGolden(std::string const& name, TestPicture const& picture, Likeness likeness)
{
    std::string const base = std::string(OVERLAY_SOURCE_DIR) + "/tests/golden/painter/" + name;
    Grey const actual = greyOf(picture);
    if (std::getenv("OVERLAY_UPDATE_GOLDENS") != nullptr) {
        write(actual, base + ".pgm");
        writeForPeople(picture, base + ".png");
        return {};
    }
    Grey golden;
    if (!read(base + ".pgm", golden)) {
        return "cannot read " + base + ".pgm; scripts/update-painter-goldens writes it";
    }
    std::ostringstream difference;
    if (golden.width != actual.width || golden.height != actual.height) {
        difference << "the golden is " << golden.width << "x" << golden.height << ", the picture " << actual.width
                   << "x" << actual.height;
        return difference.str();
    }
    int largest = 0;
    double sum = 0;
    Grey shown = actual;
    for (std::size_t i = 0; i < actual.bytes.size(); ++i) {
        int const off = std::abs(int{actual.bytes[i]} - int{golden.bytes[i]});
        largest = std::max(largest, off);
        sum += off;
        shown.bytes[i] = static_cast<std::uint8_t>(std::min(255, 4 * off));
    }
    double const mean = sum / static_cast<double>(actual.bytes.size());
    bool const isAlike = likeness == Likeness::Exact ? largest == 0 : largest <= kCloseLargest && mean <= kCloseMean;
    if (isAlike) {
        return {};
    }
    writeForPeople(picture, name + ".actual.png");
    writePng(name + ".difference.png", shown.width, shown.height, PNG_FORMAT_GRAY, shown.bytes);
    difference << name << " differs by at most " << largest << " and on average " << mean << "; see " << name
               << ".actual.png and " << name << ".difference.png in the working directory";
    return difference.str();
}

}  // namespace imaging_test
