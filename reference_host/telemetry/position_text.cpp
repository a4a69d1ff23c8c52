// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Texts of positions, by GeographicLib: its datum is WGS 84, as that of ST 0601.
#include "telemetry/position_text.h"

#include <GeographicLib/DMS.hpp>
#include <GeographicLib/MGRS.hpp>
#include <GeographicLib/UTMUPS.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace telemetry {
namespace {

using GeographicLib::DMS;

constexpr double kMaxLatitude = 90.0;
constexpr double kMaxLongitude = 180.0;

bool isWithin(double deg, double limit)
{
    return std::abs(deg) <= limit;  // false for not-a-number
}

std::string dmsText(double deg, DMS::flag half)
{
    constexpr unsigned kDecimals = 2;
    std::string text = DMS::Encode(deg, DMS::SECOND, kDecimals, half);
    if (text.find_first_of("123456789") == std::string::npos) {
        text = DMS::Encode(0.0, DMS::SECOND, kDecimals, half);
    }
    return text.replace(text.find('d'), 1, "\u00B0");
}

/// "16SED3003340491" to "16S ED 30033 40491".
std::string spaced(std::string const& square)
{
    constexpr std::size_t kSquareLetters = 2;
    std::size_t const band = square.find_first_not_of("0123456789");
    std::size_t const letters = band + 1;
    std::size_t const digits = letters + kSquareLetters;
    std::size_t const half = (square.size() - digits) / 2;
    std::string const text = square.substr(0, letters) + " " + square.substr(letters, kSquareLetters) + " " +
                             square.substr(digits, half) + " " + square.substr(digits + half);
    return text.substr(text.front() == '0' ? 1 : 0);
}

}  // namespace

std::string latitudeDms(double latDeg)
{
    return isWithin(latDeg, kMaxLatitude) ? dmsText(latDeg, DMS::LATITUDE) : "";
}

std::string longitudeDms(double lonDeg)
{
    return isWithin(lonDeg, kMaxLongitude) ? dmsText(lonDeg, DMS::LONGITUDE) : "";
}

std::string mgrs(double latDeg, double lonDeg)
{
    constexpr int kOneMetre = 5;
    if (!isWithin(latDeg, kMaxLatitude) || !isWithin(lonDeg, kMaxLongitude)) {
        return "";
    }
    int zone = 0;
    bool north = false;
    double x = 0.0;
    double y = 0.0;
    GeographicLib::UTMUPS::Forward(latDeg, lonDeg, zone, north, x, y);
    std::string square;
    GeographicLib::MGRS::Forward(zone, north, x, y, latDeg, kOneMetre, square);
    return spaced(square);
}

}  // namespace telemetry
