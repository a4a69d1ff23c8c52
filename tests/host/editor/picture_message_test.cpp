// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What the page asks for and how the picture is packed.
#include "editor/picture_message.h"

#include "editor/request_handler.h"
#include "telemetry/json_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Row {
    char const* name;
    char const* body;
    char const* meaning;  ///< "text @seconds", "text #frame", then the hidden items; or what is wrong
};

std::string meaningOf(std::string const& body)
{
    std::string error;
    SwJsonValue const value = telemetry::parseJsonText(body, error);
    EXPECT_EQ(error, "");
    try {
        editor::PreviewQuestion const question = editor::readPreviewQuestion(value.toObject());
        std::string meaning = question.text + (question.place.frame ? " #" + std::to_string(*question.place.frame)
                                                                    : " @" + std::to_string(question.place.seconds));
        for (std::size_t const item : question.hidden) {
            meaning += " -" + std::to_string(item);
        }
        return meaning;
    } catch (editor::RequestFailure const& failure) {
        EXPECT_EQ(failure.status, 400);
        return failure.what();
    }
}

class Questions : public testing::TestWithParam<Row> {};

TEST_P(Questions, AreReadOrRefused)
{
    EXPECT_EQ(meaningOf(GetParam().body), GetParam().meaning);
}

constexpr char const* kOneWay = "one of \"seconds\", \"frame\" and \"step\" names the picture";

INSTANTIATE_TEST_SUITE_P(
    Rows, Questions,
    testing::Values(
        Row{"seconds", R"({"text": "a", "seconds": 3.25})", "a @3.250000"},
        Row{"whole_seconds", R"({"text": "a", "seconds": 3})", "a @3.000000"},
        Row{"frame", R"({"text": "a", "frame": 97})", "a #97"},
        Row{"step_back", R"({"text": "a", "step": -1, "from": 97})", "a #96"},
        Row{"step_on", R"({"text": "a", "step": 1, "from": 97})", "a #98"},
        Row{"step_before_the_first", R"({"text": "a", "step": -1, "from": 1})", "a #1"},
        Row{"hidden", R"({"text": "a", "frame": 1, "hidden": [0, 2]})", "a #1 -0 -2"},
        Row{"numeric_text", R"({"text": "12", "frame": 1})", "12 #1"},
        Row{"no_text", R"({"frame": 1})", "\"text\" is a text"},
        Row{"other_text", R"({"text": 12, "frame": 1})", "\"text\" is a text"},
        Row{"no_place", R"({"text": "a"})", kOneWay},
        Row{"two_places", R"({"text": "a", "frame": 1, "seconds": 1})", kOneWay},
        Row{"negative_seconds", R"({"text": "a", "seconds": -0.5})", "\"seconds\" is a number from 0"},
        Row{"endless_seconds", R"({"text": "a", "seconds": 1e300})", "\"seconds\" is a number from 0"},
        Row{"text_seconds", R"({"text": "a", "seconds": "1"})", "\"seconds\" is a number from 0"},
        Row{"frame_zero", R"({"text": "a", "frame": 0})", "\"frame\" is a whole number from 1"},
        Row{"half_frame", R"({"text": "a", "frame": 1.5})", "\"frame\" is a whole number from 1"},
        Row{"huge_frame", R"({"text": "a", "frame": 9223372036854775807})", "\"frame\" is a whole number from 1"},
        Row{"long_step", R"({"text": "a", "step": 2, "from": 1})", "\"step\" is -1 or 1"},
        Row{"step_from_nowhere", R"({"text": "a", "step": 1})", "\"from\" is a whole number from 1"},
        Row{"hidden_number", R"({"text": "a", "frame": 1, "hidden": 3})", "\"hidden\" is an array of whole numbers"},
        Row{"hidden_negative", R"({"text": "a", "frame": 1, "hidden": [-1]})",
            "\"hidden\" is an array of whole numbers"},
        Row{"hidden_text", R"({"text": "a", "frame": 1, "hidden": ["0"]})", "\"hidden\" is an array of whole numbers"}),
    [](auto const& row) { return row.param.name; });

TEST(BitmapOf, HasRowsFromTheBottomBlueFirst)
{
    // Two columns, two rows: red, green / blue, white. Rows of six bytes are padded to eight.
    std::vector<std::uint8_t> const rgb{255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255};
    std::string const head("BM\x46\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x02\0\0\0\x02\0\0\0\x01\0\x18\0\0\0\0\0\x10\0\0\0",
                           38);
    std::string const rows("\xFF\0\0\xFF\xFF\xFF\0\0\0\0\xFF\0\xFF\0\0\0", 16);
    EXPECT_EQ(editor::bitmapOf(rgb, 2, 2), head + std::string(16, '\0') + rows);
}

TEST(PreviewMessage, IsALineAndThePicture)
{
    editor::Shown shown;
    shown.frame = 97;
    shown.seconds = 3.2;
    shown.last = true;
    shown.width = 1;
    shown.height = 1;
    shown.rgb = {1, 2, 3};
    shown.boxes = {{2, 10, 20, 30, 40, 12, 22}};
    shown.values = SwJsonObject{{"camera_name", "a\nb"}, {"heading_deg", 12.5}};
    EXPECT_EQ(editor::previewMessage(shown),
              "{\"boxes\": [{\"anchorX\": 12, \"anchorY\": 22, \"block\": 2, \"bottom\": 40, \"left\": 10, \"right\": "
              "30, \"top\": 20}], \"error\": null, \"frame\": 97, \"height\": 1, \"last\": true, \"seconds\": 3.2, "
              "\"values\": {\"camera_name\": \"a\\nb\", \"heading_deg\": 12.5}, \"width\": 1}\n" +
                  editor::bitmapOf({1, 2, 3}, 1, 1));
}

TEST(FaultValue, NamesAPlaceAlways)
{
    EXPECT_TRUE(editor::faultValue({}).isNull());
    EXPECT_EQ(editor::faultValue(check::TextFault{check::TextPlace{3, 7}, "x"}),
              SwJsonValue(SwJsonObject{{"line", 3}, {"column", 7}, {"text", "x"}}));
    EXPECT_EQ(editor::faultValue(check::TextFault{{}, "x"}),
              SwJsonValue(SwJsonObject{{"line", 1}, {"column", 1}, {"text", "x"}}));
}

}  // namespace
