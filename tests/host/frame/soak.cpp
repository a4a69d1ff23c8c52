// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A long run of the whole way of a frame: telemetry by time, shipped plugin, reference painter and picture pool,
// with telemetry keys that never come twice. Prints how much memory the process holds as it goes on.
//   soak FRAMES    prints "frame,new,heap,resident" in bytes, a hundred lines
#include "changing_telemetry.h"
#include "frame/frame_renderer.h"
#include "frame/telemetry_timeline.h"
#include "live_memory.h"

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

namespace {

constexpr double kFramesPerSecond = 25;
constexpr unsigned kWidth = 320;
constexpr unsigned kHeight = 180;

SwJsonObject objectOf(std::string const& text)
{
    SwString error;
    return SwJsonDocument::fromJson(text, SwString(), error).object();
}

void printMemory(std::uint64_t frameNumber)
{
    std::cout << frameNumber << ',' << live_memory::newBytes() << ',' << live_memory::heapBytes() << ','
              << live_memory::residentBytes() << std::endl;
}

void run(std::uint64_t frames)
{
    frame::FrameRenderer renderer;
    frame::TelemetryTimeline timeline;
    timeline.addProducer("first");
    timeline.addProducer("second");
    std::cout << "frame,new,heap,resident" << std::endl;
    for (std::uint64_t number = 1; number <= frames; ++number) {
        double const seconds = static_cast<double>(number) / kFramesPerSecond;
        if (number % changing_telemetry::kPeriod == 1) {
            renderer.plugin().setConfig(changing_telemetry::config());
        }
        timeline.add(0, seconds, objectOf(changing_telemetry::payload(0, number)));
        timeline.add(1, seconds, objectOf(changing_telemetry::payload(1, number)));
        auto const source = renderer.takePicture(kWidth, kHeight);
        renderer.render(number, source, timeline.producers(), timeline.choose(seconds, number));
        if (number % (frames / 100) == 0) {
            printMemory(number);
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    std::uint64_t const frames = argc == 2 ? std::strtoull(argv[1], nullptr, 10) : 0;
    if (frames < 100) {
        std::cerr << "usage: soak FRAMES, at least 100\n";
        return 2;
    }
    run(frames);
    return 0;
}
