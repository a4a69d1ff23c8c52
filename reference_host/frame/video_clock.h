// Lets a plugin live in the time of the video. Plugins read the steady clock for durations such as "show
// after two seconds"; a file runs through faster or slower than it plays, so that real time would make
// them last too long or too short in the picture.
#pragma once

namespace frame {

/// While one lives, the steady clock of this thread stands at the given time; of scopes within each other
/// the inner one counts. Other threads and other clocks go on as always.
class VideoClockScope {
public:
    /// `seconds` from any fixed origin, at least 0.
    explicit VideoClockScope(double seconds);
    ~VideoClockScope();
    VideoClockScope(VideoClockScope const&) = delete;
    VideoClockScope& operator=(VideoClockScope const&) = delete;

private:
    long long outer_;
};

}  // namespace frame
