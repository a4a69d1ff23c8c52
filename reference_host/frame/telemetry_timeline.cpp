// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The association of telemetry and pictures by presentation time.
#include "frame/telemetry_timeline.h"

#include <algorithm>
#include <utility>

namespace frame {

std::size_t TelemetryTimeline::addProducer(std::string name)
{
    names_.push_back(std::move(name));
    entries_.emplace_back();
    return names_.size() - 1;
}

void TelemetryTimeline::add(std::size_t producer, double seconds, SwJsonObject payload)
{
    if (payload.empty()) {
        return;
    }
    std::deque<Entry>& entries = entries_[producer];
    auto const place = std::upper_bound(entries.begin(), entries.end(), seconds,
                                        [](double time, Entry const& entry) { return time < entry.seconds; });
    entries.insert(place, Entry{seconds, std::make_shared<SwJsonObject>(std::move(payload)), 0});
    if (entries.size() > maxWaiting_) {
        entries.pop_front();
    }
}

std::vector<Choice> TelemetryTimeline::choose(double seconds, std::uint64_t frameIndex)
{
    std::vector<Choice> choices;
    for (std::size_t producer = 0; producer < entries_.size(); ++producer) {
        std::deque<Entry>& entries = entries_[producer];
        auto const after = std::upper_bound(entries.begin(), entries.end(), seconds + kSameMoment,
                                            [](double time, Entry const& entry) { return time < entry.seconds; });
        if (after == entries.begin()) {
            continue;
        }
        entries.erase(entries.begin(), after - 1);
        Entry& chosen = entries.front();
        newest_ = std::max(newest_.value_or(chosen.seconds), chosen.seconds);
        if (maxAge_ && seconds - chosen.seconds > *maxAge_ + kSameMoment) {
            continue;
        }
        if (chosen.firstFrame == 0) {
            chosen.firstFrame = frameIndex;
            if (completion_) {
                completion_(names_[producer], *chosen.payload);
            }
        }
        bool const lookback = previousSeconds_ && chosen.seconds < *previousSeconds_ - kSameMoment;
        choices.push_back({names_[producer], chosen.payload, chosen.firstFrame, lookback});
    }
    previousSeconds_ = seconds;
    return choices;
}

}  // namespace frame
