// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Which stream a person means by a PID or a number.
#include "clip/stream_choice.h"

#include "media/encoder.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using clip::StreamChoice;

AVStream streamOf(int index, int id)
{
    AVStream stream{};
    stream.index = index;
    stream.id = id;
    return stream;
}

TEST(StreamName, IsThePidOrTheNumber)
{
    EXPECT_EQ(clip::streamName(streamOf(1, 0x101)), "0x101");
    EXPECT_EQ(clip::streamName(streamOf(2, 0)), "2");
}

TEST(StreamChoice, TakesWhatIsMeant)
{
    struct Row {
        char const* text;
        int index;
        int id;
        bool taken;
    };
    Row const rows[] = {
        {"", 1, 0x101, true},      {"", 0, 0, true},         {"0x101", 1, 0x101, true},  {"0X101", 1, 0x101, true},
        {"0x1F1", 2, 0x1f1, true}, {"0x0101", 1, 257, true}, {"0x101", 1, 0x102, false}, {"1", 1, 0x101, true},
        {"1", 2, 1, false},        {"257", 1, 257, false},   {"0", 0, 0, true},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string(row.text) + " of " + std::to_string(row.index));
        EXPECT_EQ(StreamChoice(row.text).takes(streamOf(row.index, row.id)), row.taken);
    }
}

TEST(StreamChoice, TakesStreamsByTheirNames)
{
    EXPECT_TRUE(StreamChoice("").takes("0x101"));
    EXPECT_TRUE(StreamChoice("").takes(""));
    EXPECT_TRUE(StreamChoice("0x1F1").takes("0x1f1"));
    EXPECT_TRUE(StreamChoice("2").takes("2"));
    EXPECT_FALSE(StreamChoice("2").takes("0x2"));
    EXPECT_FALSE(StreamChoice("0x2").takes("2"));
    EXPECT_FALSE(StreamChoice("2").takes(""));
}

TEST(StreamChoice, RefusesWhatNamesNoStream)
{
    for (char const* const text : {"x", "0x", "0xg1", "-1", "0x-1", "1.5", "1 ", " 1", "99999999999", "0x1ffffffff"}) {
        try {
            StreamChoice const choice{text};
            ADD_FAILURE() << text << " is taken";
        } catch (media::UnknownChoice const& failure) {
            EXPECT_EQ(std::string(failure.what()),
                      "--klv " + std::string(text) + ": give a PID such as 0x1f1, or the stream's number");
        }
    }
}

TEST(StreamChoice, ListsTheStreamsThatAreThere)
{
    auto const failureOf = [](std::vector<std::string> const& names) -> std::string {
        try {
            StreamChoice("0x1f1").requireAmong(names, "f");
        } catch (std::runtime_error const& failure) {
            return failure.what();
        }
        return "none";
    };
    EXPECT_EQ(failureOf({"0x101", "0x1f1"}), "none");
    EXPECT_EQ(failureOf({"0x101"}), "f: has no KLV stream 0x1f1; there is 0x101");
    EXPECT_EQ(failureOf({"0x101", "2"}), "f: has no KLV stream 0x1f1; there are 0x101, 2");
    StreamChoice("").requireAmong({}, "f");  // all streams, of which there need be none
    EXPECT_EQ(failureOf({}), "f: has no KLV stream 0x1f1 and no other; leave out --klv");
}

}  // namespace
