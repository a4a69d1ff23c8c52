// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Texts of positions against those that the library's own command line tool prints for the same points.
#include "telemetry/position_text.h"

#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

struct Point {
    double lat;
    double lon;
};

/// 10,000 points: all over the earth, and where the squares are irregular.
std::vector<Point> points()
{
    std::vector<Point> all = {{90, 0},  {90, 180}, {-90, 0}, {-90, -180}, {0, 0},
                              {0, 180}, {0, -180}, {84, 10}, {-80, 10}};
    std::mt19937_64 random(12);
    auto const addWithin = [&](std::size_t until, double south, double north, double west, double east) {
        std::uniform_real_distribution<double> lat(south, north);
        std::uniform_real_distribution<double> lon(west, east);
        while (all.size() < until) {
            double const latDeg = lat(random);
            all.push_back({latDeg, lon(random)});
        }
    };
    addWithin(6000, -90, 90, -180, 180);
    addWithin(6700, 83.5, 90, -180, 180);
    addWithin(7400, -90, -79.5, -180, 180);
    addWithin(8100, 55.5, 64.5, -1, 13);   // Norway
    addWithin(8800, 71.5, 84.5, -1, 43);   // Svalbard
    addWithin(9400, -80, 84, 179.9, 180);  // both sides of 180 degrees
    addWithin(10000, -80, 84, -180, -179.9);
    return all;
}

/// What the tool prints with these options, one line per point.
std::vector<std::string> told(std::vector<Point> const& asked, std::string const& options)
{
    media_test::TempFolder const folder;
    std::string const input = folder.file("points.txt");
    std::string const output = folder.file("told.txt");
    {
        std::ofstream file(input);
        for (Point const& point : asked) {
            char line[80];
            std::snprintf(line, sizeof line, "%.17g %.17g\n", point.lat, point.lon);
            file << line;
        }
    }
    std::string const command =
        "GeoConvert " + options + " --input-file '" + input + "' --output-file '" + output + "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << command << " (package geographiclib-tools)";
    std::vector<std::string> lines;
    std::ifstream file(output);
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string packed(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return text;
}

/// "4Q FJ ..." as the tool writes it: "04QFJ...".
std::string asToolWrites(std::string const& square)
{
    std::size_t const digits = square.find_first_not_of("0123456789");
    return (digits == 1 ? "0" : "") + packed(square);
}

TEST(PositionTruth, MgrsOfTenThousandPoints)
{
    std::vector<Point> const asked = points();
    ASSERT_EQ(asked.size(), 10000U);
    std::vector<std::string> const squares = told(asked, "-m -p 0");
    ASSERT_EQ(squares.size(), asked.size());
    for (std::size_t i = 0; i < asked.size(); ++i) {
        ASSERT_EQ(asToolWrites(telemetry::mgrs(asked[i].lat, asked[i].lon)), squares[i])
            << asked[i].lat << " " << asked[i].lon;
    }
}

TEST(PositionTruth, DegreesMinutesSecondsOfTenThousandPoints)
{
    std::vector<Point> const asked = points();
    std::vector<std::string> const texts = told(asked, "-d -p 1");
    ASSERT_EQ(texts.size(), asked.size());
    std::string const degree = "\u00B0";
    for (std::size_t i = 0; i < asked.size(); ++i) {
        std::string both = telemetry::latitudeDms(asked[i].lat) + " " + telemetry::longitudeDms(asked[i].lon);
        for (std::size_t at = both.find(degree); at != std::string::npos; at = both.find(degree)) {
            both.replace(at, degree.size(), "d");
        }
        ASSERT_EQ(both, texts[i]) << asked[i].lat << " " << asked[i].lon;
    }
}

}  // namespace
