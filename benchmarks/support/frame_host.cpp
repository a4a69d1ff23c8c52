// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A flight in numbers, and the six blocks that show it.
#include "frame_host.h"

#include <array>
#include <charconv>
#include <utility>

namespace {

using Keys = zelvo::ZelvoPicture::BaseMetadata::Keys;

struct Real {
    std::string const* key;
    double start;
    double step;
};

std::array<Real, 31> const kReals{{
    {&Keys::hfovDeg, 12.75, 0.013},
    {&Keys::vfovDeg, 7.171875, 0.0073},
    {&Keys::zoomRatio, 3.5, 0.125},
    {&Keys::panDeg, 134.21875, 0.731},
    {&Keys::tiltDeg, -31.4140625, 0.017},
    {&Keys::rollDeg, 1.25390625, -0.11},
    {&Keys::pitchDeg, 3.0078125, 0.09},
    {&Keys::yawDeg, 271.53125, 0.33},
    {&Keys::headingDeg, 271.53125, 0.33},
    {&Keys::sensorLatDeg, 48.858370123456, 0.000037},
    {&Keys::sensorLonDeg, 2.294481234567, -0.000041},
    {&Keys::sensorAltM, 1523.4765625, 0.7},
    {&Keys::frameCenterLatDeg, 48.871234567891, 0.000029},
    {&Keys::frameCenterLonDeg, 2.309876543219, 0.000031},
    {&Keys::frameCenterElevM, 87.1953125, 0.21},
    {&Keys::targetLrfLatDeg, 48.871239999123, 0.000023},
    {&Keys::targetLrfLonDeg, 2.309870000456, 0.000019},
    {&Keys::targetLrfElevM, 88.40234375, 0.17},
    {&Keys::measuredSlantRangeM, 2874.30078125, 3.9},
    {&Keys::velocityNorthMps, 31.70703125, 0.03},
    {&Keys::velocityEastMps, -12.04296875, 0.05},
    {&Keys::velocityDownMps, 0.4140625, -0.01},
    {&Keys::azimuthRateDps, 0.7265625, 0.019},
    {&Keys::elevationRateDps, -0.1875, 0.023},
    {&Keys::rollRateDps, 0.03125, 0.0029},
    {&Keys::quatX, 0.0123456789, 0.00017},
    {&Keys::quatY, 0.7071067811, -0.00013},
    {&Keys::quatZ, 0.0234567891, 0.00011},
    {&Keys::quatW, 0.7064567123, 0.00019},
    {&Keys::sourceNs, 91823746512345.0, 33366667.0},
    {&Keys::utcTimestampUs, 1700000000123456.0, 33366.0},
}};

struct Text {
    std::string const* key;
    char const* text;
};

std::array<Text, 7> const kTexts{{
    {&Keys::cameraName, "EO narrow"},
    {&Keys::cameraModelName, "long range day camera"},
    {&Keys::cameraType, "EO"},
    {&Keys::positioningMethodSource, "GNSS and inertial"},
    {&Keys::partNumber, "A-4711-02"},
    {&Keys::serialNumber, "SN 0042-B"},
    {&Keys::softwareVersion, "v2.11.0"},
}};

struct Whole {
    std::string const* key;
    std::int64_t value;
};

std::array<Whole, 6> const kWholes{{
    {&Keys::cameraIndex, 2},
    {&Keys::navSatCount, 11},
    {&Keys::platformStatus, 9},
    {&Keys::gimbalModeRaw, 5},
    {&Keys::laserPrfCode, 1688},
    {&Keys::gimbalModelCode, 17},
}};

/// Names like the known ones, spread over the alphabet.
std::string extraKey(std::size_t index)
{
    return std::string(1, static_cast<char>('a' + index % 26)) + "ux_sensor_value_" + std::to_string(index);
}

char const* const kFormats = R"("formats": {
    "sensor_lat_deg": {"decimals": 6, "minValue": -90, "maxValue": 90.5, "holdLastMs": 1000},
    "sensor_lon_deg": {"decimals": 6, "minValue": -180, "maxValue": 180.5, "holdLastMs": 1000},
    "frame_center_lat_deg": {"decimals": 6, "holdLastMs": 1000},
    "frame_center_lon_deg": {"decimals": 6, "holdLastMs": 1000},
    "target_lrf_lat_deg": {"decimals": 5, "invalidValues": [0, "N/A"]},
    "target_lrf_lon_deg": {"decimals": 5, "invalidValues": [0, "N/A"]},
    "measured_slant_range_m": {"decimals": 0, "refreshEveryMs": 200, "invalidValues": [-1]},
    "utc_timestamp_us": {"date": true, "timestampUnit": "us", "dateFormat": "%Y-%m-%d %H:%M:%S"},
    "source_ns": {"date": true, "timestampUnit": "us", "timezone": "local"},
    "heading_deg": {"decimals": 1, "refreshEveryMs": 100, "holdLastMs": 500},
    "camera_name": {"missingPlaceholder": "no camera", "invalidValues": [""]},
    "laser_prf_code": {"decimals": 0, "minValue": 1000, "maxValue": 2000}
})";

struct Block {
    char const* formatString;
    char const* condition;
};

std::array<Block, 6> const kBlocks{{
    {R"(%camera_name %camera_model_name\n%camera_type %part_number %serial_number %software_version\n%utc_timestamp_us UTC %source_ns)",
     R"({"key": "camera_name"})"},
    {R"(LAT %{sensor_lat_deg} LON %{sensor_lon_deg}\nALT %sensor_alt_m m\nHDG %heading_deg YAW %yaw_deg\nROLL %roll_deg PITCH %pitch_deg SAT %nav_sat_count)",
     R"({"key": "nav_sat_count", "operator": ">=", "value": 4, "showAfterMs": 1})"},
    {R"(HFOV %hfov_deg VFOV %vfov_deg\nZOOM %zoom_ratio PAN %pan_deg TILT %tilt_deg\nMODE %gimbal_mode_raw CAM %camera_index MODEL %gimbal_model_code)",
     R"({"key": "gimbal_mode_raw", "equals": 5, "keepAfterMs": 300})"},
    {R"(CENTER %frame_center_lat_deg %frame_center_lon_deg\nELEV %frame_center_elev_m m\nTARGET %target_lrf_lat_deg %target_lrf_lon_deg\nELEV %target_lrf_elev_m m RNG %measured_slant_range_m PRF %laser_prf_code)",
     R"({"key": "laser_range_enabled", "equals": true, "keepAfterMs": 300})"},
    {R"(VN %velocity_north_mps VE %velocity_east_mps VD %velocity_down_mps\nAZ %azimuth_rate_dps EL %elevation_rate_dps RO %roll_rate_dps\n%positioning_method_source %platform_status)",
     R"({"key": "platform_status", "bitmask": "0x8"})"},
    {R"(Q %quat_x %quat_y %quat_z %quat_w\nLASER %laser_range_enabled FOLLOW %ordalis.follow_me_enabled_command\nHDG %heading_deg RNG %measured_slant_range_m)",
     R"({"key": "heading_deg", "operator": "lt", "value": "360.5"})"},
}};

}  // namespace

SwJsonObject telemetryAt(std::size_t moment, std::size_t extraKeys)
{
    auto const at = static_cast<double>(moment);
    SwJsonObject object;
    for (Real const& real : kReals) {
        object[*real.key] = real.start + at * real.step;
    }
    for (Text const& text : kTexts) {
        object[*text.key] = text.text;
    }
    for (Whole const& whole : kWholes) {
        object[*whole.key] = whole.value;
    }
    object[Keys::laserRangeEnabled] = true;
    object[Keys::followMeEnabledCommand] = false;
    for (std::size_t i = 0; i < extraKeys; ++i) {
        object[extraKey(i)] = static_cast<double>(i) + at * 0.125;
    }
    return object;
}

std::string telemetryTextAt(std::size_t moment, std::size_t extraKeys)
{
    std::string out = "{";
    for (auto const& [key, value] : telemetryAt(moment, extraKeys)) {
        out += out.size() == 1 ? "\"" : ",\"";
        out += key + "\":";
        if (value.isDouble()) {
            std::array<char, 32> digits{};
            auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value.toDouble());
            out.append(digits.data(), end.ptr);
        } else {
            out += value.isString() ? "\"" + value.stringRef() + "\"" : value.toString();
        }
    }
    return out + "}";
}

SwAny payloadAt(PayloadKind kind, std::size_t moment, std::size_t extraKeys)
{
    if (kind == PayloadKind::Text) {
        return {telemetryTextAt(moment, extraKeys)};
    }
    return {telemetryAt(moment, extraKeys)};
}

std::string blocksConfig(std::size_t blocks, int updateEveryNFrames)
{
    std::string out = R"({"overlay": [)";
    for (std::size_t i = 0; i < blocks; ++i) {
        Block const& block = kBlocks[i % kBlocks.size()];
        out += i == 0 ? "{" : ",{";
        out += R"("formatString": ")" + std::string(block.formatString) + R"(", "condition": )" + block.condition;
        out += R"(, "decimals": 3, "textSize": 24, "position": {"x": )" + std::string(i % 2 == 0 ? "0.02" : "0.6");
        out += R"(, "y": 0.)" + std::to_string(i / 2 % 3 * 3) + R"(5}, "updateEveryNFrames": )";
        out += std::to_string(updateEveryNFrames) + ", " + kFormats + "}";
    }
    return out + "]}";
}

FrameHost::FrameHost(std::size_t producers, PayloadOf payloadOf)
{
    std::vector<RenderInput>& inputs = context_.inputsByType["stanag.v1"].inputs;
    for (std::size_t i = 0; i < producers; ++i) {
        // In byte order, as the plugin will visit them.
        inputs.push_back({std::string(1, static_cast<char>('a' + i)), "", 0, false});
    }
    accessor_.callable = [payloadOf = std::move(payloadOf)](std::uint64_t frame, std::string const& key) {
        return payloadOf(static_cast<std::size_t>(key[0] - 'a'), frame);
    };
    context_.payloadAccessor = &accessor_;
    context_.picture.reset("/camera", 1, std::make_shared<zelvo::ZelvoPicture>(1920U, 1080U),
                           std::make_shared<zelvo::ZelvoPicturePool>(), {});
}

RenderContext& FrameHost::next()
{
    ++context_.frameIndex;
    return context_;
}

FrameHost::PayloadOf copiesOf(PayloadKind kind, std::size_t extraKeys)
{
    std::vector<SwAny> payloads;
    payloads.reserve(kMoments);
    for (std::size_t moment = 0; moment < kMoments; ++moment) {
        payloads.push_back(payloadAt(kind, moment, extraKeys));
    }
    return [payloads = std::move(payloads)](std::size_t producer, std::uint64_t frame) {
        return payloads[(frame + producer) % kMoments];
    };
}
