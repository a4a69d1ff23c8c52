// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One element's pictures on their way through the plugin: what is drawn, how, and at what time.
#pragma once

#include "Picture.h"
#include "frame/frame_renderer.h"
#include "imaging/imaging_access.h"
#include "telemetry/derived_keys.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace gst_overlay {

/// Where the plugin's library lies when this code is in a library itself: in its folder, the one above, or that of the
/// installed plugin.
std::vector<std::string> moduleFolders();

/// How colours become luma and chroma.
struct PictureColor {
    bool bt709 = false;
    bool fullRange = false;
    friend bool operator==(PictureColor const&, PictureColor const&) = default;
};

/// A picture's time and telemetry.
struct PictureMoment {
    std::uint64_t runningNs = 0;
    std::vector<std::string> producers;   ///< all that could deliver
    std::vector<frame::Choice> choices;   ///< what they deliver
    std::optional<double> newestSeconds;  ///< of all telemetry so far, in running time
};

/// Operations may come from any thread; each waits for the picture that is being drawn.
class PictureOverlay {
public:
    /// Loads the plugin and the font. Throws std::runtime_error with one line.
    explicit PictureOverlay(frame::Look look);

    /// For the next picture and all after it. `config` is one that the plugin can use.
    void setConfig(std::string config);
    /// Throws std::runtime_error with one line when there is no such font; then all is as before.
    void setLook(frame::Look look);
    void setColor(PictureColor color);
    /// Times begin anew: nothing that was held counts any more, and frames are counted from 0.
    void restart();

    /// The number that the next picture gives its telemetry, from 1.
    std::uint64_t nextIndex() const;
    /// Lets the plugin draw. `planes` is asked for them only when there is telemetry. Returns false when there was
    /// none, and the picture is as it was.
    bool draw(PictureMoment moment, std::function<MappedNV12()> const& planes);

    /// The plugin's description of its configuration, with the keys that telemetry has brought.
    std::string schema();
    std::vector<std::string> availableKeys() const;
    /// What was drawn on the last picture.
    std::vector<imaging::DrawnText> draws() const;

private:
    /// A producer's packet with the keys that are derived from it.
    struct Completed {
        std::shared_ptr<SwJsonObject const> packet;
        std::shared_ptr<SwJsonObject const> payload;
    };

    void applyConfig_();
    void complete_(frame::Choice& choice);
    void addHostKeys_(PictureMoment& moment);
    std::uint64_t frameTime_(std::uint64_t runningNs);

    mutable std::mutex lock_;
    frame::FrameRenderer renderer_;
    std::string config_ = R"({"overlay":[]})";
    std::optional<telemetry::DerivedKeyMaker> derived_;
    bool hostKeysWanted_ = false;
    std::map<std::string, Completed> completed_;  ///< by producer
    std::set<std::string> keys_;
    std::vector<imaging::DrawnText> draws_;
    std::uint64_t frameIndex_ = 0;  ///< of the last picture
    std::optional<std::uint64_t> firstNs_;
    std::uint64_t lastTime_ = 0;
};

}  // namespace gst_overlay
