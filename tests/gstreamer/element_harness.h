// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The element driven by hand: pictures and telemetry in, pictures and texts out.
#pragma once

#include "SwJson.h"

#include <gst/check/gstharness.h>
#include <gst/gst.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace gst_test {

inline constexpr GstClockTime kFrame = 40 * GST_MSECOND;

/// A block that shows this text.
std::string configShowing(std::string const& text);

/// GStreamer with the element of the build tree and no other plugin. To be called first.
void initGStreamer();

/// KLV of these values.
std::vector<std::uint8_t> klvOf(SwJsonObject const& payload);
/// A buffer of these bytes.
GstBuffer* bufferOf(std::vector<std::uint8_t> const& bytes, GstClockTime time);

enum class Feed { Live, Recording };

class ElementHarness {
public:
    explicit ElementHarness(Feed feed = Feed::Live, int telemetryPads = 1, std::string const& caps = kCaps);
    ~ElementHarness();
    ElementHarness(ElementHarness const&) = delete;
    ElementHarness& operator=(ElementHarness const&) = delete;

    GstElement* element() { return element_; }
    GstHarness* video() { return video_; }
    GstHarness* klv(std::size_t number = 0) { return klv_[number]; }

    /// A grey picture in, and the one that comes out; null when none does in a minute. To be unreferenced.
    GstBuffer* draw(GstClockTime time);
    /// The same, and the texts on it, parted by "|".
    std::string textsAt(GstClockTime time);
    /// On the last picture.
    std::string texts();
    GstFlowReturn pushKlv(SwJsonObject const& payload, GstClockTime time, std::size_t number = 0);
    /// A heading, which most tests show.
    GstFlowReturn pushHeading(double degrees, GstClockTime time, std::size_t number = 0);
    void set(char const* property, std::string const& value);
    guint64 number(char const* property);
    std::string text(char const* property);
    /// The next message of these types on the bus, as its text; empty when there is none.
    std::string takeMessage(GstMessageType types);

    static constexpr char const* kCaps = "video/x-raw,format=NV12,width=320,height=240,framerate=25/1";

private:
    GstElement* element_;
    GstBus* bus_;
    GstHarness* video_;
    std::vector<GstHarness*> klv_;
};

/// A picture of this size, all of one grey.
GstBuffer* greyPicture(int width, int height, GstClockTime time);
/// Whether a picture is as greyPicture made it.
bool isGrey(GstBuffer* picture);

}  // namespace gst_test
