// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The host's picture types as a render plugin sees them. Implemented by the imaging library
// (libZelvoTools): the real one in the field, the reference one in reference_host/imaging here.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

/// A picture's NV12 planes while they are mapped for the processor. Not owned.
struct MappedNV12 {
    std::uint8_t* y = nullptr;   ///< luma, height rows
    std::uint8_t* uv = nullptr;  ///< interleaved Cb Cr, (height + 1) / 2 rows of (width + 1) / 2 pairs
    int width = 0;               ///< pixels
    int height = 0;              ///< pixels
    int yStride = 0;             ///< bytes from one luma row to the next; 0 means width
    int uvStride = 0;            ///< bytes from one chroma row to the next; 0 means width rounded up to even
};

/// What a backend maps: made by a picture, owned by whoever asked for it.
class IRenderTarget {
public:
    virtual ~IRenderTarget() = default;
};

namespace zelvo {

/// A frame's picture.
class ZelvoPicture {
public:
    /// Keys of the telemetry that a host attaches to a picture.
    struct BaseMetadata {
        struct Keys;
    };

    /// A picture of the given size in pixels, black.
    ZelvoPicture(unsigned width, unsigned height);
    ~ZelvoPicture();
    ZelvoPicture(ZelvoPicture const&) = delete;
    ZelvoPicture& operator=(ZelvoPicture const&) = delete;

    unsigned width() const;
    unsigned height() const;

    /// A render target for drawing on this picture, which must outlive it; may be null.
    std::unique_ptr<IRenderTarget> makeRenderTarget();

    struct Impl;
    Impl& impl() { return *impl_; }
    Impl const& impl() const { return *impl_; }

private:
    std::unique_ptr<Impl> impl_;
};

/// Gives pictures whose memory is used again.
class ZelvoPicturePool {
public:
    ZelvoPicturePool();
    ~ZelvoPicturePool();
    ZelvoPicturePool(ZelvoPicturePool const&) = delete;
    ZelvoPicturePool& operator=(ZelvoPicturePool const&) = delete;

    /// A private copy of `source`, or null when none can be had. May be called from several threads.
    std::shared_ptr<ZelvoPicture> clone(ZelvoPicture const& source);

    struct Impl;
    Impl& impl() { return *impl_; }

private:
    std::unique_ptr<Impl> impl_;
};

/// Names of the telemetry values in a "stanag.v1" payload.
struct ZelvoPicture::BaseMetadata::Keys {
    inline static std::string const sourceNs = "source_ns";
    inline static std::string const cameraIndex = "camera_index";
    inline static std::string const cameraName = "camera_name";
    inline static std::string const cameraModelName = "camera_model_name";
    inline static std::string const cameraType = "camera_type";
    inline static std::string const utcTimestampUs = "utc_timestamp_us";
    inline static std::string const hfovDeg = "hfov_deg";
    inline static std::string const vfovDeg = "vfov_deg";
    inline static std::string const zoomRatio = "zoom_ratio";
    inline static std::string const panDeg = "pan_deg";
    inline static std::string const tiltDeg = "tilt_deg";
    inline static std::string const rollDeg = "roll_deg";
    inline static std::string const pitchDeg = "pitch_deg";
    inline static std::string const yawDeg = "yaw_deg";
    inline static std::string const headingDeg = "heading_deg";
    inline static std::string const sensorLatDeg = "sensor_lat_deg";
    inline static std::string const sensorLonDeg = "sensor_lon_deg";
    inline static std::string const sensorAltM = "sensor_alt_m";
    inline static std::string const frameCenterLatDeg = "frame_center_lat_deg";
    inline static std::string const frameCenterLonDeg = "frame_center_lon_deg";
    inline static std::string const frameCenterElevM = "frame_center_elev_m";
    inline static std::string const targetLrfLatDeg = "target_lrf_lat_deg";
    inline static std::string const targetLrfLonDeg = "target_lrf_lon_deg";
    inline static std::string const targetLrfElevM = "target_lrf_elev_m";
    inline static std::string const measuredSlantRangeM = "measured_slant_range_m";
    inline static std::string const laserRangeEnabled = "laser_range_enabled";
    inline static std::string const velocityNorthMps = "velocity_north_mps";
    inline static std::string const velocityEastMps = "velocity_east_mps";
    inline static std::string const velocityDownMps = "velocity_down_mps";
    inline static std::string const azimuthRateDps = "azimuth_rate_dps";
    inline static std::string const elevationRateDps = "elevation_rate_dps";
    inline static std::string const rollRateDps = "roll_rate_dps";
    inline static std::string const navSatCount = "nav_sat_count";
    inline static std::string const positioningMethodSource = "positioning_method_source";
    inline static std::string const platformStatus = "platform_status";
    inline static std::string const gimbalModeRaw = "gimbal_mode_raw";
    inline static std::string const laserPrfCode = "laser_prf_code";
    inline static std::string const quatX = "quat_x";
    inline static std::string const quatY = "quat_y";
    inline static std::string const quatZ = "quat_z";
    inline static std::string const quatW = "quat_w";
    inline static std::string const gimbalModelCode = "gimbal_model_code";
    inline static std::string const partNumber = "part_number";
    inline static std::string const serialNumber = "serial_number";
    inline static std::string const softwareVersion = "software_version";
    inline static std::string const followMeEnabledCommand = "ordalis.follow_me_enabled_command";
};

}  // namespace zelvo
