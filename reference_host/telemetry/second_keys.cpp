// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Names, flags and corners from the keys of one packet.
#include "telemetry/second_keys.h"

#include "telemetry/st0601_table.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <utility>

namespace telemetry {
namespace {

constexpr std::string_view kIcing[] = {"detector off", "no icing detected", "icing detected"};
constexpr std::string_view kFieldsOfView[] = {"ultranarrow",    "narrow",         "medium",
                                              "wide",           "ultrawide",      "narrow medium",
                                              "2x ultranarrow", "4x ultranarrow", "continuous zoom"};
constexpr std::string_view kModes[] = {"other", "operational", "training", "exercise", "maintenance", "test"};
constexpr std::string_view kPlatformStates[] = {
    "active",  "pre-flight",       "pre-flight taxiing", "run-up",        "take-off",
    "ingress", "manual operation", "automated orbit",    "transitioning", "egress",
    "landing", "landed, taxiing",  "landed, parked"};
constexpr std::string_view kControlModes[] = {
    "off",         "home position",          "uncontrolled",  "manual control",
    "calibrating", "auto, holding position", "auto, tracking"};

constexpr CodeRow kCodes[] = {
    {"icing_detected", "icing_detected_text", kIcing},
    {"sensor_fov_name", "sensor_fov_name_text", kFieldsOfView},
    {"operational_mode", "operational_mode_text", kModes},
    {"platform_status", "platform_status_text", kPlatformStates},
    {"sensor_control_mode", "sensor_control_mode_text", kControlModes},
};

constexpr FlagRow kFlags[] = {
    {0, kLaserKey, "the laser measures ranges"},
    {1, "auto_track", "the sensor tracks by itself"},
    {2, "ir_polarity_black", "hot is black in an infrared picture"},
    {3, "icing", "icing is detected"},
    {4, "slant_range_measured", "the slant range is measured, not computed"},
    {5, "image_invalid", "the picture is not valid"},
};

/// Bits of the positioning method, the lowest first.
constexpr std::string_view kPositioning[] = {"INS",   "GPS",     "Galileo",  "QZSS",
                                             "NAVIC", "GLONASS", "BeiDou-1", "BeiDou-2"};
constexpr std::string_view kPositioningKey = "positioning_method_source";
constexpr std::string_view kPositioningTextKey = "positioning_method_source_text";

constexpr std::string_view kCenter = "frame_center";

std::vector<Place> allPlaces()
{
    constexpr int kCorners = 4;
    std::vector<Place> places;
    for (int corner = 1; corner <= kCorners; ++corner) {
        places.push_back({"corner" + std::to_string(corner), "corner_" + std::to_string(corner)});
    }
    places.push_back({"vmti_target", "vmti_target"});
    return places;
}

struct Position {
    double latDeg = 0.0;
    double lonDeg = 0.0;
};

std::optional<double> numberAt(SwJsonObject const& payload, std::string const& key)
{
    SwJsonValue const& value = payload[key];
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

/// The pair of `name` + "_lat" + `end` and `name` + "_lon" + `end`, when both are there.
std::optional<Position> positionAt(SwJsonObject const& payload, std::string const& name, char const* end = "_deg")
{
    auto const lat = numberAt(payload, name + "_lat" + end);
    auto const lon = numberAt(payload, name + "_lon" + end);
    return lat && lon ? std::optional(Position{*lat, *lon}) : std::nullopt;
}

/// The frame center moved by the offset of `name`; empty beyond a pole.
std::optional<Position> fromOffset(SwJsonObject const& payload, std::string const& name)
{
    constexpr double kFullCircle = 360.0;
    auto const center = positionAt(payload, std::string(kCenter));
    auto const offset = positionAt(payload, name, "_offset_deg");
    if (!center || !offset || std::abs(center->latDeg + offset->latDeg) > 90.0) {
        return std::nullopt;
    }
    double const lonDeg = center->lonDeg + offset->lonDeg;
    bool const inside = std::abs(lonDeg) <= 180.0;
    return Position{center->latDeg + offset->latDeg, inside ? lonDeg : std::remainder(lonDeg, kFullCircle)};
}

void addPosition(SwJsonObject& payload, std::string const& name, std::optional<Position> const& position)
{
    if (position) {
        payload.insertOrAssign(name + "_lat_deg", SwJsonValue(position->latDeg));
        payload.insertOrAssign(name + "_lon_deg", SwJsonValue(position->lonDeg));
    }
}

/// "INS+GPS" of the bits.
std::string positioningText(std::int64_t bits)
{
    std::string text;
    for (std::size_t bit = 0; bit < std::size(kPositioning); ++bit) {
        if (((bits >> bit) & 1) != 0) {
            text += (text.empty() ? "" : "+");
            text += kPositioning[bit];
        }
    }
    return text;
}

/// Both keys of a position come from all that can tell it.
void addPlace(std::vector<SecondKey>& keys, Place const& place)
{
    std::vector<std::string> const sources = {std::string(kCenter) + "_lat_deg", std::string(kCenter) + "_lon_deg",
                                              place.item + "_lat_deg",           place.item + "_lon_deg",
                                              place.item + "_lat_offset_deg",    place.item + "_lon_offset_deg"};
    keys.push_back({place.key + "_lat_deg", sources});
    keys.push_back({place.key + "_lon_deg", sources});
}

std::vector<SecondKey> allSecondKeys()
{
    std::vector<SecondKey> keys;
    for (CodeRow const& row : kCodes) {
        keys.push_back({std::string(row.textKey), {std::string(row.codeKey)}});
    }
    for (FlagRow const& row : kFlags) {
        keys.push_back({std::string(row.key), {std::string(kFlagsKey)}});
    }
    keys.push_back({std::string(kPositioningTextKey), {std::string(kPositioningKey)}});
    for (Place const& place : allPlaces()) {
        addPlace(keys, place);
    }
    return keys;
}

}  // namespace

std::span<CodeRow const> st0601Codes()
{
    return kCodes;
}

std::span<FlagRow const> genericFlagRows()
{
    return kFlags;
}

std::vector<SecondKey> const& secondKeys()
{
    static std::vector<SecondKey> const kKeys = allSecondKeys();
    return kKeys;
}

SecondKeyMaker::SecondKeyMaker(KeySelection const& wanted) : positioning_(wanted.wants(kPositioningTextKey))
{
    std::copy_if(std::begin(kCodes), std::end(kCodes), std::back_inserter(codes_),
                 [&wanted](CodeRow const& row) { return wanted.wants(row.textKey); });
    std::copy_if(std::begin(kFlags), std::end(kFlags), std::back_inserter(flags_),
                 [&wanted](FlagRow const& row) { return wanted.wants(row.key); });
    for (Place const& place : allPlaces()) {
        if (wanted.wants(place.key + "_lat_deg") || wanted.wants(place.key + "_lon_deg")) {
            places_.push_back(place);
        }
    }
}

void SecondKeyMaker::addTo(SwJsonObject& payload) const
{
    SwJsonObject const& keys = payload;
    for (CodeRow const& row : codes_) {
        SwJsonValue const& code = keys[row.codeKey];
        if (code.isInt()) {
            std::string_view const name = nameOf(row, code.toInt());
            payload.insertOrAssign(row.textKey, name.empty() ? SwJsonValue(std::to_string(code.toInt())) : name);
        }
    }
    SwJsonValue const flags = keys[kFlagsKey];
    for (FlagRow const& row : flags_) {
        if (flags.isInt()) {
            payload.insertOrAssign(row.key, SwJsonValue(((flags.toInt() >> row.bit) & 1) != 0));
        }
    }
    if (std::string const text = positioning_ ? positioningText(keys[kPositioningKey].toInt()) : ""; !text.empty()) {
        payload.insertOrAssign(kPositioningTextKey, SwJsonValue(text));
    }
    for (Place const& place : places_) {
        auto const full = positionAt(payload, place.item);
        addPosition(payload, place.key, full ? full : fromOffset(payload, place.item));
    }
}

}  // namespace telemetry
