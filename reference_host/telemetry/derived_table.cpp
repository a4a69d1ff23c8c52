// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The table of derived keys and its computations: one row per key, one short function per computation.
#include "telemetry/derived_keys.h"
#include "telemetry/position_text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <numbers>
#include <string>
#include <utility>

namespace telemetry {
namespace {

using Values = std::span<double const>;

constexpr double kMetresPerFoot = 0.3048;
constexpr double kMetresPerNauticalMile = 1852.0;
constexpr double kSecondsPerHour = 3600.0;
constexpr double kFullCircle = 360.0;

/// Texts that could not be made are empty.
SwJsonValue textOrNull(std::string text)
{
    return text.empty() ? SwJsonValue() : SwJsonValue(std::move(text));
}

/// What an overflow leaves is no value.
SwJsonValue numberOrNull(double number)
{
    return std::isfinite(number) ? SwJsonValue(number + 0.0) : SwJsonValue();
}

SwJsonValue toFeet(Values metres)
{
    return numberOrNull(metres[0] / kMetresPerFoot);
}

SwJsonValue toKilometres(Values metres)
{
    return numberOrNull(metres[0] / 1000.0);
}

SwJsonValue toNauticalMiles(Values metres)
{
    return numberOrNull(metres[0] / kMetresPerNauticalMile);
}

SwJsonValue toKnots(Values metresPerSecond)
{
    return numberOrNull(metresPerSecond[0] * kSecondsPerHour / kMetresPerNauticalMile);
}

SwJsonValue toKilometresPerHour(Values metresPerSecond)
{
    return numberOrNull(metresPerSecond[0] * kSecondsPerHour / 1000.0);
}

SwJsonValue toLatitudeDms(Values degrees)
{
    return textOrNull(latitudeDms(degrees[0]));
}

SwJsonValue toLongitudeDms(Values degrees)
{
    return textOrNull(longitudeDms(degrees[0]));
}

SwJsonValue toMgrs(Values position)
{
    return textOrNull(mgrs(position[0], position[1]));
}

/// Directions may also be counted from -180; beyond a full circle they are none.
bool isDirection(double degrees)
{
    return degrees >= -kFullCircle / 2.0 && degrees <= kFullCircle;
}

/// In [0, 360).
double turned(double degrees)
{
    double const rest = std::fmod(degrees, kFullCircle);
    double const positive = rest < 0.0 ? rest + kFullCircle : rest;
    return positive < kFullCircle ? positive + 0.0 : 0.0;
}

/// The nearest of `count` directions, counted clockwise from 0; on a border the further one.
std::size_t nearestOf(std::size_t count, double degrees)
{
    double const step = kFullCircle / static_cast<double>(count);
    return static_cast<std::size_t>(std::floor(turned(degrees) / step + 0.5)) % count;
}

SwJsonValue toCompassPoint(Values degrees)
{
    constexpr std::array<char const*, 16> kPoints = {"N", "NNE", "NE", "ENE", "E", "ESE", "SE", "SSE",
                                                     "S", "SSW", "SW", "WSW", "W", "WNW", "NW", "NNW"};
    return isDirection(degrees[0]) ? SwJsonValue(kPoints[nearestOf(kPoints.size(), degrees[0])]) : SwJsonValue();
}

/// Rounded first, so that 359.6 is 000.
SwJsonValue toThreeDigits(Values degrees)
{
    if (!isDirection(degrees[0])) {
        return {};
    }
    char text[8];
    std::snprintf(text, sizeof text, "%03d", static_cast<int>(std::round(turned(degrees[0]))) % 360);
    return SwJsonValue(text);
}

double toDegrees(double radians)
{
    return radians * 180.0 / std::numbers::pi;
}

SwJsonValue toCourse(Values northEast)
{
    if (northEast[0] == 0.0 && northEast[1] == 0.0) {
        return {};  // what stands still has no course
    }
    return numberOrNull(turned(toDegrees(std::atan2(northEast[1], northEast[0]))));
}

SwJsonValue toSpeed(Values northEast)
{
    return numberOrNull(std::hypot(northEast[0], northEast[1]));
}

/// A day and a time of day in UTC; false for a stamp that is none, or beyond the year 9999.
struct Moment {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
    bool valid = false;
};

Moment momentOf(double microseconds)
{
    using namespace std::chrono;
    constexpr double kYear10000 = 253402300800e6;
    if (!(microseconds >= 1.0 && microseconds < kYear10000)) {
        return {};
    }
    sys_time<std::chrono::microseconds> const stamp(std::chrono::microseconds(static_cast<std::int64_t>(microseconds)));
    auto const day = floor<days>(stamp);
    year_month_day const date(day);
    hh_mm_ss const time(floor<milliseconds>(stamp - day));
    return {int(date.year()),
            unsigned(date.month()),
            unsigned(date.day()),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count()),
            static_cast<int>(time.subseconds().count()),
            true};
}

std::string dateText(Moment const& moment)
{
    char text[48];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", moment.year, moment.month, moment.day);
    return text;
}

std::string clockText(int hours, int minutes, int seconds, int milliseconds)
{
    char text[64];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d", hours, minutes, seconds, milliseconds);
    return text;
}

std::string clockText(Moment const& moment)
{
    return clockText(moment.hour, moment.minute, moment.second, moment.millisecond);
}

SwJsonValue toIsoTime(Values microseconds)
{
    Moment const moment = momentOf(microseconds[0]);
    return moment.valid ? SwJsonValue(dateText(moment) + "T" + clockText(moment) + "Z") : SwJsonValue();
}

SwJsonValue toDate(Values microseconds)
{
    Moment const moment = momentOf(microseconds[0]);
    return moment.valid ? SwJsonValue(dateText(moment)) : SwJsonValue();
}

SwJsonValue toClock(Values microseconds)
{
    Moment const moment = momentOf(microseconds[0]);
    return moment.valid ? SwJsonValue(clockText(moment)) : SwJsonValue();
}

SwJsonValue toDateTimeGroup(Values microseconds)
{
    constexpr char const* kMonths[] = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                       "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};
    Moment const moment = momentOf(microseconds[0]);
    if (!moment.valid) {
        return {};
    }
    char text[48];
    std::snprintf(text, sizeof text, "%02u%02d%02dZ%s%02d", moment.day, moment.hour, moment.minute,
                  kMonths[moment.month - 1], moment.year % 100);
    return SwJsonValue(text);
}

/// Whole milliseconds that have passed. A time in doubles may lie a little before the microsecond that it means.
SwJsonValue toVideoTime(Values seconds)
{
    constexpr double kMaxSeconds = 1e9;
    if (!(seconds[0] >= 0.0 && seconds[0] <= kMaxSeconds)) {
        return {};
    }
    std::int64_t const all = std::llround(seconds[0] * 1e6) / 1000;
    std::int64_t const minutes = all / 60000;
    return SwJsonValue(clockText(static_cast<int>(minutes / 60), static_cast<int>(minutes % 60),
                                 static_cast<int>(all / 1000 % 60), static_cast<int>(all % 1000)));
}

/// `deg` by whole circles next to `to`: corners on both sides of 180 degrees lie beside each other.
double unwrapped(double deg, double to)
{
    return to + std::remainder(deg - to, kFullCircle);
}

/// North on the picture, clockwise from its upper edge: the middle of the upper edge lies from that of the lower one
/// in the direction that is up.
SwJsonValue northFromCorners(Values corners)
{
    // About ten centimetres: corners that fall together tell no direction.
    constexpr double kSmallest = 2e-6;
    for (std::size_t i = 0; i < corners.size(); i += 2) {
        if (std::abs(corners[i]) > 90.0 || std::abs(corners[i + 1]) > 180.0) {
            return {};
        }
    }
    double const lon1 = corners[1];
    double const meanLat = (corners[0] + corners[2] + corners[4] + corners[6]) / 4.0;
    double const north = corners[0] + corners[2] - corners[4] - corners[6];
    double const lonDifference =
        lon1 + unwrapped(corners[3], lon1) - unwrapped(corners[5], lon1) - unwrapped(corners[7], lon1);
    double const east = lonDifference * std::cos(meanLat * std::numbers::pi / 180.0);
    if (std::hypot(north, east) < kSmallest) {
        return {};
    }
    return numberOrNull(turned(-toDegrees(std::atan2(east, north))));
}

SwJsonValue northFromAttitude(Values headingAndAzimuth)
{
    if (!isDirection(headingAndAzimuth[0]) || !isDirection(headingAndAzimuth[1])) {
        return {};
    }
    return SwJsonValue(turned(-(headingAndAzimuth[0] + headingAndAzimuth[1])));
}

SwJsonValue toArrow(Values degrees)
{
    constexpr std::array<char const*, 8> kArrows = {"\u2191", "\u2197", "\u2192", "\u2198",
                                                    "\u2193", "\u2199", "\u2190", "\u2196"};
    return SwJsonValue(kArrows[nearestOf(kArrows.size(), degrees[0])]);
}

/// Whether degrees under this name go round in a full circle.
bool isDirectionName(std::string_view name)
{
    constexpr std::string_view kEndings[] = {"heading",     "yaw",        "course",         "direction", "bearing",
                                             "track",       "azimuth",    "azimuth_start",  "pan",       "rel_roll",
                                             "north_angle", "true_north", "image_rotation", "roll_start"};
    return std::any_of(std::begin(kEndings), std::end(kEndings), [name](std::string_view ending) {
        bool const ends = name.size() >= ending.size() && name.substr(name.size() - ending.size()) == ending;
        return ends && (name.size() == ending.size() || name[name.size() - ending.size() - 1] == '_');
    });
}

constexpr std::string_view kCorners = "corner1_lat_deg corner1_lon_deg corner2_lat_deg corner2_lon_deg "
                                      "corner3_lat_deg corner3_lon_deg corner4_lat_deg corner4_lon_deg";

constexpr DerivedRow kTable[] = {
    {"course_deg", "velocity_north_mps velocity_east_mps", "course over ground, 0 to 360", toCourse},
    {"speed_mps", "velocity_north_mps velocity_east_mps", "speed over ground", toSpeed},
    {"north_angle_deg", kCorners, "north on the picture, clockwise from its upper edge", northFromCorners},
    {"north_angle_deg", "heading_deg pan_deg", "the same where a corner is missing", northFromAttitude},
    {"north_arrow", "north_angle_deg", "an arrow to the north on the picture, one of 8, as \u2197", toArrow},
    {"utc_iso_ms", "utc_timestamp_us", "2025-06-14T09:30:04.123Z", toIsoTime},
    {"utc_dtg", "utc_timestamp_us", "date-time group, 140930ZJUN25", toDateTimeGroup},
    {"utc_date", "utc_timestamp_us", "2025-06-14", toDate},
    {"utc_clock_ms", "utc_timestamp_us", "09:30:04.123", toClock},
    {"video_time_text", "video_time_s", "00:01:07.433", toVideoTime},
    {"*_lat_dms", "*_lat_deg", "34\u00B043'08.91\"N", toLatitudeDms},
    {"*_lon_dms", "*_lon_deg", "086\u00B040'19.34\"W", toLongitudeDms},
    {"*_mgrs", "*_lat_deg *_lon_deg", "the square of one metre, 16S ED 30033 40491", toMgrs},
    {"*_ft", "*_m", "feet", toFeet},
    {"*_km", "*_m", "kilometres", toKilometres},
    {"*_nmi", "*_m", "nautical miles", toNauticalMiles},
    {"*_kt", "*_mps", "knots", toKnots},
    {"*_kmh", "*_mps", "kilometres per hour", toKilometresPerHour},
    {"*_compass", "*_deg", "one of 16 compass points, NNW; of directions", toCompassPoint, isDirectionName},
    {"*_3digits", "*_deg", "three digits, 007; of directions", toThreeDigits, isDirectionName},
};

}  // namespace

std::span<DerivedRow const> derivedTable()
{
    return kTable;
}

}  // namespace telemetry
