// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Times our painter against the usual ones: the same texts, the same pictures, one thread, one after the other.
//   painter_benchmark FOLDER [SECONDS]
// Each painter draws each scene for SECONDS (3). Into FOLDER go painter.md, painter.svg and one PNG of each painter.
// Measured is the thread's processor time, which does not count the time of other programs.
#include "painter_report.h"
#include "painter_scene.h"

#include <time.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace painter_bench;

struct Contestant {
    std::string name;
    std::function<std::unique_ptr<Drawer>(Scene const&)> make;
    bool drawsRims = false;
};

double threadMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

Timing measure(Scene const& scene, Contestant const& contestant, PictureRing const& pictures, double seconds)
{
    constexpr int kWarmUp = 50;
    auto const drawer = contestant.make(scene);
    int frame = 0;
    for (; frame < kWarmUp; ++frame) {
        drawer->draw(pictures.planesOf(frame), textsOf(scene, frame));
    }
    std::vector<double> times;
    for (double spent = 0; spent < seconds * 1e3; ++frame) {
        auto const texts = textsOf(scene, frame);
        double const before = threadMilliseconds();
        drawer->draw(pictures.planesOf(frame), texts);
        times.push_back(threadMilliseconds() - before);
        spent += times.back();
    }
    std::sort(times.begin(), times.end());
    return {scene.name, contestant.name, times[times.size() / 2], times[times.size() / 50]};
}

void savePicture(std::string const& folder, Contestant const& contestant)
{
    Scene const scene{"S", 1, false, 1};
    PictureRing const pictures(scene);
    contestant.make(scene)->draw(pictures.planesOf(0), textsOf(scene, 0));
    std::string file = contestant.name;
    std::replace(file.begin(), file.end(), ' ', '_');
    writePicture(folder + "/" + file + ".png", pictures.planesOf(0), 0, 0, 960, 160);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2 || argc > 3) {
        std::cerr << "usage: painter_benchmark FOLDER [SECONDS]\n";
        return 2;
    }
    std::string const folder = argv[1];
    double const seconds = argc > 2 ? std::strtod(argv[2], nullptr) : 3.0;
    std::filesystem::create_directories(folder);
    std::vector<Contestant> const contestants{{"lower limit", makeLowerLimit, true},
                                              {"ours", makeOurs, true},
                                              {"drawtext", makeDrawtext, true},
                                              {"libass", makeLibass, false},
                                              {"textoverlay", makeTextoverlay, false}};
    constexpr std::size_t kRing = 8;
    std::vector<Scene> const scenes{{"S constant", 1, false, 1},           {"S changing", 1, true, 1},
                                    {"S4 constant", 2, false, 1},          {"S4 changing", 2, true, 1},
                                    {"S constant, ring", 1, false, kRing}, {"S changing, ring", 1, true, kRing},
                                    {"S changing, rim", 1, true, 1, 2}};
    std::vector<Timing> timings;
    for (auto const& scene : scenes) {
        PictureRing const pictures(scene);
        for (auto const& contestant : contestants) {
            if (scene.outline > 0 && !contestant.drawsRims) {
                continue;
            }
            timings.push_back(measure(scene, contestant, pictures, seconds));
            std::cout << scene.name << ", " << contestant.name << ": " << timings.back().median << " ms" << std::endl;
        }
    }
    for (auto const& contestant : contestants) {
        savePicture(folder, contestant);
    }
    writeTable(folder + "/painter.md", timings);
    writePlot(folder + "/painter.svg", timings);
    return 0;
}
