// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// docs/configuration.md against the program: every configuration on the page is rendered on a picture of the made
// flight and compared with the pictures that stand below it. With the environment variable OVERLAY_UPDATE_GOLDENS the
// pictures are written instead.
#include "clips.h"
#include "rgb_picture.h"
#include "run_program.h"
#include "temp_folder.h"

#include "flight/flight_model.h"
#include "telemetry/telemetry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using e2e::Result;
using e2e::run;
using imaging_test::Box;
using imaging_test::RgbPicture;

constexpr char kDocs[] = OVERLAY_SOURCE_DIR "/docs/";
constexpr char kFolder[] = "images/configuration/";
constexpr char kNoBlocks[] = R"({"overlay": []})";

/// At 1080 lines sizes are pixels; the whole picture is shown small.
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kWholeWidth = 240;
constexpr int kWholeHeight = 135;
/// Ground around the blocks, in pixels.
constexpr int kMargin = 8;
/// Of the colours' levels, for small files.
constexpr int kLevelStep = 4;
constexpr int kMostWidth = 480;
constexpr std::uintmax_t kMostBytes = 1'500'000;

/// Nine seconds, four times a second.
constexpr int kFrames = 37;
constexpr std::int64_t kTicksPerFrame = 22500;
constexpr double kSecondsPerFrame = 0.25;
constexpr double kGroundSeconds = 4.0;

/// A picture below a configuration: its file, and the words of its description: "4 s", "4 s, whole picture" or
/// "4 s, --outline 2".
struct Shown {
    std::string file;
    std::string seconds;
    std::vector<std::string> options;
    bool whole = false;
};

struct Snippet {
    int line = 0;
    std::string config;
    std::vector<Shown> pictures;
};

std::vector<Shown> picturesIn(std::string const& line)
{
    static std::regex const kPicture(R"(!\[([0-9.]+) s(?:, ([^\]]*))?\]\(([^)]*)\))");
    std::vector<Shown> pictures;
    for (std::sregex_iterator match(line.begin(), line.end(), kPicture), end; match != end; ++match) {
        Shown shown{(*match)[3], (*match)[1], {}, (*match)[2] == "whole picture"};
        std::istringstream words((*match)[2].str());
        for (std::string word; !shown.whole && words >> word;) {
            shown.options.push_back(word);
        }
        pictures.push_back(shown);
    }
    return pictures;
}

std::vector<Snippet> const& snippets()
{
    static std::vector<Snippet> const all = [] {
        std::vector<Snippet> found;
        int number = 0;
        bool inside = false;
        for (std::string const& line : e2e::linesOf(e2e::readFile(std::string(kDocs) + "configuration.md"))) {
            ++number;
            if (line == "```json") {
                inside = true;
                found.push_back({number, {}, {}});
            } else if (line == "```") {
                inside = false;
            } else if (inside) {
                found.back().config += line + "\n";
            } else if (!found.empty()) {
                auto const pictures = picturesIn(line);
                found.back().pictures.insert(found.back().pictures.end(), pictures.begin(), pictures.end());
            }
        }
        return found;
    }();
    return all;
}

class ConfigurationPage : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        setenv("TZ", "JST-9", 1);
        folder_ = new media_test::TempFolder;
        std::string klv;
        for (int number = 0; number < kFrames; ++number) {
            auto const packet = telemetry::encodeKlv(flight::telemetryAt(number * kSecondsPerFrame));
            klv.append(packet.begin(), packet.end());
        }
        e2e::writeFile(folder_->file("flight.klv"), klv);
        e2e::writeFile(folder_->file("none.json"), kNoBlocks);
        makeClip("large.nut", kWidth, kHeight);
        makeClip("small.nut", kWholeWidth, kWholeHeight);
    }
    static void TearDownTestSuite()
    {
        delete folder_;
        folder_ = nullptr;
    }

    static RgbPicture render(Shown const& shown, std::string const& config)
    {
        std::vector<std::string> words = {"frame",       folder_->file(shown.whole ? "small.nut" : "large.nut"),
                                          "--telemetry", folder_->file("flight.klv"),
                                          "-c",          config,
                                          "--at",        shown.seconds,
                                          "-o",          folder_->file("picture.png")};
        words.insert(words.end(), shown.options.begin(), shown.options.end());
        Result const result = run(words);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return imaging_test::readPng(folder_->file("picture.png"));
    }

    /// The pictures of a snippet, all cut out alike: where any of them shows blocks, or whole.
    static std::vector<RgbPicture> renderAll(Snippet const& snippet)
    {
        e2e::writeFile(folder_->file("config.json"), snippet.config);
        std::vector<RgbPicture> pictures;
        Box box;
        for (Shown const& shown : snippet.pictures) {
            pictures.push_back(render(shown, folder_->file("config.json")));
            RgbPicture const& ground = groundFor(shown);
            box = imaging_test::unitedBox(box, imaging_test::differingBox(pictures.back(), ground));
        }
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            if (!snippet.pictures[i].whole) {
                pictures[i] = imaging_test::cutOut(pictures[i], withMargin(box));
            }
            pictures[i] = imaging_test::inSteps(std::move(pictures[i]), kLevelStep);
        }
        return pictures;
    }

    static media_test::TempFolder* folder_;

private:
    /// Uncompressed, so that the pictures do not depend on an encoder and need no decoding. The ground stands still:
    /// between the pictures of a configuration nothing changes but its blocks.
    static void makeClip(std::string const& name, int width, int height)
    {
        clip_test::ClipSpec spec{folder_->file(name), width, height, kFrames, "rawvideo"};
        for (int number = 0; number < kFrames; ++number) {
            spec.times.push_back(number * kTicksPerFrame);
        }
        bool painted = false;
        spec.paint = [&painted](MappedNV12 const& planes) {
            if (!painted) {
                flight::paintGround(kGroundSeconds, planes);
                painted = true;
            }
        };
        clip_test::makeClip(spec);
    }

    static RgbPicture const& groundFor(Shown const& shown)
    {
        static std::map<bool, RgbPicture> grounds;
        if (auto const known = grounds.find(shown.whole); known != grounds.end()) {
            return known->second;
        }
        Shown const plain{"", "0", {}, shown.whole};
        return grounds[shown.whole] = render(plain, folder_->file("none.json"));
    }

    static Box withMargin(Box box)
    {
        return {std::max(0, box.left - kMargin), std::max(0, box.top - kMargin), std::min(kWidth, box.right + kMargin),
                std::min(kHeight, box.bottom + kMargin)};
    }
};

media_test::TempFolder* ConfigurationPage::folder_ = nullptr;

TEST_F(ConfigurationPage, ShowsWhatIsRendered)
{
    bool const update = std::getenv("OVERLAY_UPDATE_GOLDENS") != nullptr;
    for (Snippet const& snippet : snippets()) {
        SCOPED_TRACE("line " + std::to_string(snippet.line));
        EXPECT_FALSE(snippet.pictures.empty()) << "no picture below the configuration";
        std::vector<RgbPicture> const pictures = renderAll(snippet);
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            std::string const path = kDocs + snippet.pictures[i].file;
            EXPECT_LE(pictures[i].width, kMostWidth) << path;
            if (update) {
                EXPECT_TRUE(imaging_test::writePng(path, pictures[i])) << path;
                continue;
            }
            std::string const difference =
                imaging_test::differenceBeyondClose(imaging_test::readPng(path), pictures[i]);
            EXPECT_EQ(difference, "") << path << "; scripts/update-docs-pictures draws it anew";
        }
    }
}

TEST_F(ConfigurationPage, HasNoConfigurationThatCheckFindsFaultWith)
{
    for (Snippet const& snippet : snippets()) {
        SCOPED_TRACE("line " + std::to_string(snippet.line));
        e2e::writeFile(folder_->file("config.json"), snippet.config);
        Result const result = run({"check", folder_->file("config.json")});
        EXPECT_EQ(result.exitCode, 0) << result.out;
    }
}

TEST(ConfigurationPictures, AreShownOnceEachAndSmall)
{
    std::set<std::string> shown;
    for (Snippet const& snippet : snippets()) {
        for (Shown const& picture : snippet.pictures) {
            EXPECT_TRUE(shown.insert(picture.file).second) << "twice: " << picture.file;
        }
    }
    std::set<std::string> present;
    std::uintmax_t bytes = 0;
    for (auto const& entry : std::filesystem::directory_iterator(std::string(kDocs) + kFolder)) {
        present.insert(kFolder + entry.path().filename().string());
        bytes += entry.file_size();
    }
    EXPECT_EQ(shown, present);
    EXPECT_LT(bytes, kMostBytes);
}

}  // namespace
