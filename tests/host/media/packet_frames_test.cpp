// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Frames told from packets are those that a decoder gives; where that is not certain the reason is told.
#include "clips.h"
#include "media/demuxer.h"
#include "media/frame_reader.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace {

using Places = std::vector<std::pair<std::uint64_t, std::int64_t>>;

Places decoded(std::string const& path)
{
    media::Demuxer demuxer(path);
    media::FrameReader reader(demuxer);
    Places places;
    while (auto const unit = reader.next()) {
        places.emplace_back(unit->number, unit->ticks);
    }
    return places;
}

struct Told {
    Places places;
    std::string doubt;
};

Told toldByPackets(std::string const& path)
{
    media::Demuxer demuxer(path);
    media::FrameReader reader(demuxer);
    reader.tellFromPackets();
    Told told;
    while (auto const place = reader.peek()) {
        told.places.emplace_back(place->number, place->ticks);
        reader.skip();
    }
    told.doubt = reader.doubt();
    return told;
}

/// Passes over `count` frames by their packets and gives the places of what is decoded from there on.
Places decodedAfter(std::string const& path, std::size_t count)
{
    media::Demuxer demuxer(path);
    media::FrameReader reader(demuxer);
    reader.tellFromPackets();
    for (std::size_t passed = 0; passed < count; ++passed) {
        EXPECT_TRUE(reader.peek());
        reader.skip();
    }
    reader.peek();
    EXPECT_TRUE(reader.settle()) << reader.doubt();
    Places places;
    while (auto const unit = reader.next()) {
        places.emplace_back(unit->number, unit->ticks);
    }
    return places;
}

void expectTold(std::string const& path)
{
    SCOPED_TRACE(path);
    Places const all = decoded(path);
    Told const told = toldByPackets(path);
    EXPECT_EQ(told.doubt, "");
    EXPECT_EQ(told.places, all);
    for (std::size_t const count : {std::size_t{0}, std::size_t{1}, all.size() / 2, all.size() - 1, all.size()}) {
        EXPECT_EQ(decodedAfter(path, count), Places(all.begin() + static_cast<std::ptrdiff_t>(count), all.end()))
            << count;
    }
}

class PacketFrames : public testing::Test {
protected:
    std::string file(std::string const& name) const { return folder_.file(name); }

    std::string made(std::string const& name, std::string const& codec, int frames = 300)
    {
        clip_test::makeClip({file(name), 96, 64, frames, codec, 90000, {}});
        return file(name);
    }

    media_test::TempFolder folder_;
};

TEST_F(PacketFrames, AreThoseOfTheDecoder)
{
    media::quietLibraries();
    expectTold(made("reordered.ts", "libx264"));
    expectTold(made("reordered.mp4", "libx264"));
    expectTold(made("reordered.mkv", "libx264"));
    expectTold(made("plain.ts", "mpeg2video"));
    expectTold(made("key_pictures.mkv", "ffv1", 30));
    expectTold(made("key_pictures.avi", "mjpeg", 30));
    expectTold(made("one.ts", "libx264", 1));
}

TEST_F(PacketFrames, OfRecordedClipsAreThoseOfTheDecoder)
{
    struct Row {
        char const* name;
        char const* doubt;
    };
    for (Row const& row :
         {Row{"osh_sim_640x480_h264_klv06.ts", ""}, Row{"kwiver_h264_160x120_klv06_nopts.ts", ""},
          Row{"kwiver_mpeg2_160x120_klv06_nopts.ts", ""}, Row{"kwiver_h264_160x120_no_klv.ts", ""},
          Row{"kwiver_aphill_720x480i_h264_eg0104.ts", "a packet holds a single field"},
          Row{"mp2tp_foreman_352x288_h264_klv15_aucell.ts", ""}, Row{"mux_car_768x432_osh_klv_30hz.ts", ""}}) {
        std::string const path = std::string(OVERLAY_RECORDED_DATA) + "/" + row.name;
        if (!std::filesystem::exists(path)) {
            GTEST_SKIP() << "recorded data is missing: " << path << " (set OVERLAY_RECORDED_DATA)";
        }
        if (*row.doubt == '\0') {
            expectTold(path);
        } else {
            EXPECT_EQ(toldByPackets(path).doubt, row.doubt);
        }
    }
}

TEST_F(PacketFrames, AreDoubtedForAReason)
{
    media::quietLibraries();
    auto const bytesOf = [](std::string const& path) {
        std::ifstream stream(path, std::ios::binary);
        return std::string{std::istreambuf_iterator<char>(stream), {}};
    };
    auto const write = [this](std::string const& name, std::string const& bytes) {
        std::ofstream(file(name), std::ios::binary) << bytes;
        return file(name);
    };
    constexpr std::size_t kPacket = 188;
    std::string const clip = bytesOf(made("a.ts", "libx264"));
    std::string gap = clip;
    gap.erase(clip.size() / 2 / kPacket * kPacket, kPacket);
    std::string const noise(400, '\x5A');
    std::string noisy = clip;
    noisy.replace(clip.size() / 2, noise.size(), noise);
    struct Row {
        std::string path;
        std::vector<std::string> doubts;
    };
    std::string const damaged = "a packet is damaged";
    for (Row const& row : {
             Row{write("gap.ts", gap), {damaged}},
             Row{write("noisy.ts", noisy), {damaged, "a packet holds no readable picture"}},
             Row{write("joined.ts", clip + clip), {"the stream's clock starts anew"}},
             Row{write("headless.ts", clip.substr(clip.size() / 3 / kPacket * kPacket)),
                 {damaged, "the stream does not begin with a key picture", "a packet holds no readable picture"}},
             Row{made("mpeg4.ts", "mpeg4"), {"packets of mpeg4 do not tell their pictures"}},
             Row{made("vp9.mkv", "libvpx-vp9", 20), {"packets of vp9 do not tell their pictures"}},
         }) {
        std::string const doubt = toldByPackets(row.path).doubt;
        EXPECT_NE(std::find(row.doubts.begin(), row.doubts.end(), doubt), row.doubts.end())
            << row.path << ": \"" << doubt << "\"";
    }
}

}  // namespace
