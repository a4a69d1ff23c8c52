// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From the times of single frames to tables and plot.
#include "painter_report.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <iomanip>
#include <sstream>

namespace painter_bench {
namespace {

constexpr char const* kOurs = "ours";
constexpr char const* kLimit = "lower limit";

std::vector<std::string> distinct(std::vector<Timing> const& timings, std::string Timing::*field)
{
    std::vector<std::string> names;
    for (auto const& timing : timings) {
        if (std::find(names.begin(), names.end(), timing.*field) == names.end()) {
            names.push_back(timing.*field);
        }
    }
    return names;
}

std::string fixed(double value, int digits)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value;
    return text.str();
}

/// Null for a painter that does not draw the scene.
Timing const* find(std::vector<Timing> const& timings, std::string const& scene, std::string const& painter)
{
    auto const found = std::find_if(timings.begin(), timings.end(),
                                    [&](Timing const& t) { return t.scene == scene && t.painter == painter; });
    return found != timings.end() ? &*found : nullptr;
}

/// What we want of a ratio of two painters' times in one scene: at least so much, or at most.
struct Target {
    char const* scene;
    char const* dividend;
    char const* divisor;
    char const* bound;
    double value;
};

constexpr std::array<Target, 7> kTargets{{{"S constant", "drawtext", kOurs, "at least", 25.0},
                                          {"S constant, ring", "drawtext", kOurs, "at least", 25.0},
                                          {"S constant", kOurs, kLimit, "at most", 2.5},
                                          {"S constant, ring", kOurs, kLimit, "at most", 2.5},
                                          {"S changing", "drawtext", kOurs, "at least", 10.0},
                                          {"S changing, ring", "drawtext", kOurs, "at least", 10.0},
                                          {"S changing, rim", "drawtext", kOurs, "at least", 8.0}}};

void writeTargets(std::ostream& out, std::vector<Timing> const& timings)
{
    out << "| scene | ratio | is | target | met |\n| --- | --- | ---: | ---: | --- |\n";
    for (auto const& target : kTargets) {
        double const ratio =
            medianOf(timings, target.scene, target.dividend) / medianOf(timings, target.scene, target.divisor);
        bool const isMet = std::string(target.bound) == "at least" ? ratio >= target.value : ratio <= target.value;
        out << "| " << target.scene << " | " << target.dividend << " to " << target.divisor << " | " << fixed(ratio, 2)
            << " | " << target.bound << " " << fixed(target.value, 1) << " | " << (isMet ? "yes" : "no") << " |\n";
    }
    out << "\n";
}

}  // namespace

double medianOf(std::vector<Timing> const& timings, std::string const& scene, std::string const& painter)
{
    Timing const* const timing = find(timings, scene, painter);
    return timing != nullptr ? timing->median : 0.0;
}

void writeTable(std::string const& path, std::vector<Timing> const& timings)
{
    auto const scenes = distinct(timings, &Timing::scene);
    auto const painters = distinct(timings, &Timing::painter);
    std::ofstream out(path);
    writeTargets(out, timings);
    auto const header = [&](char const* what) {
        out << "| " << what << " |";
        for (auto const& painter : painters) {
            out << " " << painter << " |";
        }
        out << "\n| --- |" << [&] {
            std::string rule;
            for (std::size_t i = 0; i < painters.size(); ++i) {
                rule += " ---: |";
            }
            return rule;
        }() << "\n";
    };
    header("time of a frame, ours = 1");
    for (auto const& scene : scenes) {
        double const ours = medianOf(timings, scene, kOurs);
        out << "| " << scene << " |";
        for (auto const& painter : painters) {
            double const ratio = medianOf(timings, scene, painter) / ours;
            out << " " << (ratio > 0 ? fixed(ratio, ratio < 10 ? 2 : 1) : "-") << " |";
        }
        out << "\n";
    }
    out << "\n";
    header("milliseconds a frame, median (2nd percentile)");
    for (auto const& scene : scenes) {
        out << "| " << scene << " |";
        for (auto const& painter : painters) {
            Timing const* const timing = find(timings, scene, painter);
            out << " " << (timing != nullptr ? fixed(timing->median, 3) + " (" + fixed(timing->fastest, 3) + ")" : "-")
                << " |";
        }
        out << "\n";
    }
}

void writePlot(std::string const& path, std::vector<Timing> const& timings)
{
    constexpr int kLeft = 230;
    constexpr int kWidth = 560;
    constexpr int kBar = 16;
    constexpr double kLeast = 0.01;
    constexpr double kMost = 50.0;
    constexpr std::array<char const*, 5> kColors{"#c8c8c8", "#2a7de1", "#e0803a", "#6aa84f", "#9a62b5"};
    auto const scenes = distinct(timings, &Timing::scene);
    auto const painters = distinct(timings, &Timing::painter);
    auto const position = [&](double ms) {
        return kWidth *
               std::clamp((std::log10(ms) - std::log10(kLeast)) / (std::log10(kMost) - std::log10(kLeast)), 0.0, 1.0);
    };
    auto const rows = scenes.size() * (painters.size() + 1);
    int const height = 40 + static_cast<int>(rows) * kBar + 30;
    std::ofstream out(path);
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << kLeft + kWidth + 90 << "\" height=\"" << height
        << "\" font-family=\"sans-serif\" font-size=\"12\">\n<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
        << "<text x=\"10\" y=\"20\" font-size=\"14\">Milliseconds a frame (logarithmic, shorter is better)</text>\n";
    for (double const tick : {0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0, 20.0, 50.0}) {
        double const x = kLeft + position(tick);
        out << "<line x1=\"" << x << "\" x2=\"" << x << "\" y1=\"34\" y2=\"" << height - 24
            << "\" stroke=\"#e4e4e4\"/><text x=\"" << x << "\" y=\"" << height - 8 << "\" text-anchor=\"middle\">"
            << tick << "</text>\n";
    }
    int y = 40;
    for (auto const& scene : scenes) {
        out << "<text x=\"10\" y=\"" << y + 12 << "\" font-weight=\"bold\">" << scene << "</text>\n";
        for (std::size_t i = 0; i < painters.size(); ++i) {
            double const ms = medianOf(timings, scene, painters[i]);
            if (ms <= 0) {
                continue;
            }
            out << "<text x=\"" << kLeft - 6 << "\" y=\"" << y + 12 << "\" text-anchor=\"end\">" << painters[i]
                << "</text><rect x=\"" << kLeft << "\" y=\"" << y + 2 << "\" width=\"" << position(ms) << "\" height=\""
                << kBar - 3 << "\" fill=\"" << kColors[i % kColors.size()] << "\"/><text x=\""
                << kLeft + position(ms) + 5 << "\" y=\"" << y + 13 << "\">" << fixed(ms, 3) << "</text>\n";
            y += kBar;
        }
        y += kBar;
    }
    out << "</svg>\n";
}

void writePicture(std::string const& path, MappedNV12 const& planes, int left, int top, int width, int height)
{
    std::vector<std::uint8_t> rgb;
    for (int y = top; y < top + height; ++y) {
        for (int x = left; x < left + width; ++x) {
            auto const* const chroma = planes.uv + std::ptrdiff_t{y / 2} * planes.uvStride + (x & ~1);
            double const luma = (planes.y[std::ptrdiff_t{y} * planes.yStride + x] - 16) / 219.0;
            double const red = luma + 1.5748 * (chroma[1] - 128) / 224.0;
            double const blue = luma + 1.8556 * (chroma[0] - 128) / 224.0;
            double const green = (luma - 0.2126 * red - 0.0722 * blue) / 0.7152;
            for (double const part : {red, green, blue}) {
                rgb.push_back(static_cast<std::uint8_t>(std::lround(255 * std::clamp(part, 0.0, 1.0))));
            }
        }
    }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<unsigned>(width);
    image.height = static_cast<unsigned>(height);
    image.format = PNG_FORMAT_RGB;
    png_image_write_to_file(&image, path.c_str(), 0, rgb.data(), 0, nullptr);
}

}  // namespace painter_bench
