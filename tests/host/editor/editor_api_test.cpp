// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The page's questions to a real clip, as far as they go beyond what the parts below answer: shapes and statuses.
#include "editor/editor_api.h"

#include "clips.h"
#include "editor/page_files.h"
#include "file_bytes.h"
#include "telemetry/json_text.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/stat.h>

namespace {

using editor::Response;
using file_test::readFile;
using file_test::writeFile;

constexpr char const* kToken = "0123456789abcdef0123456789abcdef";
constexpr char const* kConfig = R"({"overlay": [{"formatString": "%heading_deg", "textSise": 9}]})";

/// The editor of a short clip with telemetry; its page asks without sockets.
class EditorApi : public testing::Test {
protected:
    EditorApi()
    {
        clip_test::ClipSpec spec{folder_.file("a.ts"), 320, 240, 10, "mpeg2video"};
        spec.klvStreams.emplace_back(10, SwJsonObject{{"heading_deg", 12.5}, {"camera_name", "nose"}});
        clip_test::makeClip(spec);
        clip::ClipSource source;
        source.input = spec.path;
        preview_.emplace(source);
        api_.emplace(*preview_, store_);
        handler_.emplace(static_cast<unsigned short>(4711), kToken, "", api_->routes());
    }

    Response ask(std::string const& method, std::string const& path, std::string const& body = "")
    {
        return handler_->answer({method,
                                 path,
                                 {{"Host", "127.0.0.1:4711"},
                                  {"Cookie", std::string("stanag_editor_4711=") + kToken},
                                  {"Content-Type", "application/json"}},
                                 body});
    }
    /// The members of an answer with this status.
    SwJsonObject askJson(int status, std::string const& method, std::string const& path, std::string const& body = "")
    {
        Response const answer = ask(method, path, body);
        EXPECT_EQ(answer.status, status) << answer.body;
        EXPECT_EQ(answer.headers.front().value, "application/json");
        std::string error;
        SwJsonValue const value = telemetry::parseJsonText(answer.body, error);
        EXPECT_EQ(error, "") << answer.body;
        return value.toObject();
    }
    static std::string save(std::string const& text, std::string const& etag)
    {
        return "{\"text\": \"" + SwJsonValue::escapeString(text) + "\", \"etag\": \"" + etag + "\"}";
    }
    static std::string show(std::string const& text, std::string const& rest)
    {
        return "{\"text\": \"" + SwJsonValue::escapeString(text) + "\", " + rest + "}";
    }

    media_test::TempFolder folder_;
    std::string path_ = folder_.file("c.json");
    editor::ConfigStore store_{path_};
    std::optional<editor::Preview> preview_;
    std::optional<editor::EditorApi> api_;
    std::optional<editor::RequestHandler> handler_;
};

TEST_F(EditorApi, ServesThePage)
{
    Response const page = ask("GET", "/");
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.headers.front().value, "text/html; charset=utf-8");
    for (editor::PageFile const& file : editor::pageFiles()) {
        int const status = ask("GET", "/" + std::string(file.name)).status;
        EXPECT_EQ(status, file.name == "index.html" ? 404 : 200) << file.name;
    }
}

TEST_F(EditorApi, TellsOfTheClip)
{
    SwJsonObject const clip = askJson(200, "GET", "/api/clip");
    EXPECT_EQ(clip["name"].toString(), "a.ts");
    EXPECT_EQ(clip["width"].toInt(), 320);
    EXPECT_EQ(clip["height"].toInt(), 240);
    EXPECT_EQ(clip["config"].toString(), path_);
    EXPECT_DOUBLE_EQ(clip["frameSeconds"].toDouble(), 0.04);
    EXPECT_NEAR(clip["seconds"].toDouble(), 0.4, 0.05);
    EXPECT_TRUE(clip["frames"].isNull() || clip["frames"].toInt() == 10);
}

TEST_F(EditorApi, TellsOfTheKeys)
{
    SwJsonObject const keys = askJson(200, "GET", "/api/keys");
    auto const has = [&keys](char const* list, char const* key) {
        SwJsonArray const& all = keys[list].toArray();
        return std::any_of(all.begin(), all.end(), [key](SwJsonValue const& each) { return each.toString() == key; });
    };
    EXPECT_TRUE(has("keys", "heading_deg"));
    EXPECT_TRUE(has("keys", "frame_index"));
    EXPECT_FALSE(has("keys", "sensor_lat_deg"));
    EXPECT_TRUE(has("derivable", "heading_compass"));
    EXPECT_FALSE(has("derivable", "sensor_mgrs"));
    EXPECT_EQ(ask("GET", "/api/schema").body, preview_->schema());
    EXPECT_NE(preview_->schema().find("heading_deg"), std::string::npos);
}

TEST_F(EditorApi, LoadsTheConfigurationWithItsFindings)
{
    writeFile(path_, kConfig);
    SwJsonObject const config = askJson(200, "GET", "/api/config");
    EXPECT_EQ(config["path"].toString(), path_);
    EXPECT_EQ(config["text"].toString(), kConfig);
    EXPECT_EQ(config["etag"].toString(), editor::etagOf(kConfig));
    EXPECT_TRUE(config["error"].isNull());
    ASSERT_EQ(config["findings"].toArray().size(), 1U);
    EXPECT_EQ(config["findings"].toArray()[0],
              SwJsonValue(SwJsonObject{{"place", "overlay[0].textSise"},
                                       {"text", "unknown key, ignored; did you mean \"textSize\"?"}}));
}

TEST_F(EditorApi, BeginsWithoutAFile)
{
    SwJsonObject const config = askJson(200, "GET", "/api/config");
    EXPECT_EQ(config["etag"].toString(), "");
    EXPECT_EQ(config["text"].toString(), "{\n  \"overlay\": []\n}\n");
    EXPECT_FALSE(std::filesystem::exists(path_));
    EXPECT_EQ(askJson(200, "PUT", "/api/config", save(kConfig, ""))["etag"].toString(), editor::etagOf(kConfig));
    EXPECT_EQ(readFile(path_), kConfig);
}

TEST_F(EditorApi, OpensATextThatIsNoJson)
{
    writeFile(path_, "{\"overlay\": [\n}");
    SwJsonObject const config = askJson(200, "GET", "/api/config");
    EXPECT_EQ(config["error"].toObject()["line"].toInt(), 2);
    EXPECT_EQ(config["error"].toObject()["column"].toInt(), 1);
    EXPECT_TRUE(config["findings"].toArray().empty());
}

TEST_F(EditorApi, ShowsBothWhenTheFileWasChangedMeanwhile)
{
    writeFile(path_, "{\"overlay\": [], \"theirs\": 1}");
    SwJsonObject const conflict = askJson(412, "PUT", "/api/config", save(kConfig, editor::etagOf("before")));
    EXPECT_EQ(conflict["error"].toString(), "the file was changed meanwhile");
    EXPECT_EQ(conflict["text"].toString(), "{\"overlay\": [], \"theirs\": 1}");
    EXPECT_EQ(conflict["etag"].toString(), editor::etagOf("{\"overlay\": [], \"theirs\": 1}"));
    EXPECT_EQ(readFile(path_), "{\"overlay\": [], \"theirs\": 1}");
    std::filesystem::remove(path_);
    SwJsonObject const gone = askJson(412, "PUT", "/api/config", save(kConfig, editor::etagOf("before")));
    EXPECT_EQ(gone["error"].toString(), "the file is no longer there");
    EXPECT_EQ(gone["etag"].toString(), "");
    EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(EditorApi, SavesNothingThatIsNoConfiguration)
{
    EXPECT_EQ(askJson(422, "PUT", "/api/config", save("{\"overlay\": [", ""))["error"].toString(),
              "line 1, column 14: Unterminated JSON array; mend the JSON there");
    EXPECT_EQ(askJson(422, "PUT", "/api/config", save("{}", ""))["error"].toString(),
              "\"overlay\" is missing; write {\"overlay\": [ ... ]}");
    EXPECT_EQ(askJson(400, "PUT", "/api/config", R"({"text": "{\"overlay\":[]}"})")["error"].toString(),
              "\"etag\" is a text");
    EXPECT_EQ(askJson(400, "PUT", "/api/config", R"({"text": 5, "etag": ""})")["error"].toString(),
              "\"text\" is a text");
    EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(EditorApi, SaysWhyTheFileCannotBeSaved)
{
    writeFile(path_, "{\"overlay\": []}");
    chmod(path_.c_str(), 0444);
    EXPECT_EQ(
        askJson(409, "PUT", "/api/config", save(kConfig, editor::etagOf("{\"overlay\": []}")))["error"].toString(),
        path_ + ": cannot be saved: the file is read-only; make it writable and save again");
    EXPECT_EQ(readFile(path_), "{\"overlay\": []}");
}

TEST_F(EditorApi, ChecksATextThatIsNotSaved)
{
    SwJsonObject const good = askJson(200, "POST", "/api/check", show(kConfig, "\"x\": 1"));
    EXPECT_TRUE(good["error"].isNull());
    EXPECT_EQ(good["findings"].toArray().size(), 1U);
    SwJsonObject const unknown = askJson(
        200, "POST", "/api/check", show(R"({"overlay": [{"formatString": "%heading_dag %sensor_mgrs"}]})", "\"x\": 1"));
    ASSERT_EQ(unknown["findings"].toArray().size(), 2U);
    EXPECT_EQ(unknown["findings"].toArray()[0].toObject()["place"].toString(), "overlay[0].formatString");
    SwJsonObject const bad = askJson(200, "POST", "/api/check", show("{\"overlay\": 5}", "\"x\": 1"));
    EXPECT_EQ(bad["error"].toObject()["text"].toString(), "\"overlay\" is no array; write {\"overlay\": [ ... ]}");
    EXPECT_EQ(askJson(400, "POST", "/api/check", "{}")["error"].toString(), "\"text\" is a text");
}

TEST_F(EditorApi, ShowsPictures)
{
    Response const answer = ask("POST", "/api/preview", show(kConfig, "\"frame\": 3"));
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.headers.front().value, "application/octet-stream");
    std::size_t const end = answer.body.find('\n');
    std::string error;
    SwJsonObject const head = telemetry::parseJsonText(answer.body.substr(0, end), error).toObject();
    EXPECT_EQ(error, "");
    EXPECT_EQ(head["frame"].toInt(), 3);
    EXPECT_EQ(head["width"].toInt(), 320);
    EXPECT_EQ(head["boxes"].toArray().size(), 1U);
    EXPECT_NEAR(head["values"].toObject()["heading_deg"].toDouble(), 12.5, 0.01);
    EXPECT_EQ(answer.body.size() - end - 1, 54U + 320U * 240U * 3U);
    EXPECT_EQ(askJson(400, "POST", "/api/preview", show(kConfig, "\"frame\": 0"))["error"].toString(),
              "\"frame\" is a whole number from 1");
}

TEST_F(EditorApi, HidesBlocks)
{
    Response const answer = ask("POST", "/api/preview", show(kConfig, R"("frame": 3, "hidden": [0])"));
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body.substr(0, 13), "{\"boxes\": [],");
}

}  // namespace
