// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The editor as a program: its address, its end, who is refused, what is saved and what is not.
#include "clips.h"
#include "edit_session.h"
#include "raw_http.h"
#include "rgb_picture.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using e2e::EditSession;
using e2e::errorOf;
using e2e::etagOf;
using e2e::readFile;
using e2e::Result;
using e2e::runEdit;
using e2e::writeFile;
using raw_http::bodyOf;
using raw_http::statusOf;

constexpr char const* kConfig = "{\"overlay\": [\n  {\"formatString\": \"%heading_deg\", \"textSize\": 60}\n]}\n";
constexpr char const* kChanged = "{\"overlay\": [\n  {\"formatString\": \"%heading_deg\", \"textSize\": 90}\n]}\n";

/// A short clip with telemetry and a configuration, in a folder of their own.
class Edit : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        clips_ = std::make_unique<media_test::TempFolder>();
        clip_test::ClipSpec clip{clips_->file("a.ts"), 320, 240, 10, "mpeg2video"};
        clip.klvStreams.emplace_back(10, SwJsonObject{{"heading_deg", 12.5}});
        clip_test::makeClip(clip);
    }
    static void TearDownTestSuite() { clips_.reset(); }

    void SetUp() override { writeFile(config_, kConfig); }

    std::vector<std::string> arguments() const { return {clip_, "-c", config_}; }
    /// Nothing was written beside the configuration, and nothing to it.
    void expectUntouched() const
    {
        EXPECT_EQ(readFile(config_), kConfig);
        EXPECT_EQ(folder_.count(), 1U);
    }

    static std::unique_ptr<media_test::TempFolder> clips_;
    media_test::TempFolder folder_;
    std::string clip_ = clips_->file("a.ts");
    std::string config_ = folder_.file("c.json");
};

std::unique_ptr<media_test::TempFolder> Edit::clips_;

TEST_F(Edit, PrintsItsAddressAndEndsBySignalsInGoodOrder)
{
    for (int const signal : {SIGINT, SIGTERM}) {
        bool visited = false;
        Result const result = runEdit(
            arguments(),
            [&visited](EditSession const& session) {
                visited = true;
                EXPECT_EQ(session.token().size(), 32U);
                std::string const entry =
                    session.sendRaw("GET /?token=" + session.token() + " HTTP/1.1\r\n" + session.hostLine() + "\r\n");
                EXPECT_EQ(statusOf(entry), 303);
                EXPECT_NE(entry.find("\r\nSet-" + session.cookieLine().substr(0, session.cookieLine().size() - 2) +
                                     "; HttpOnly; SameSite=Strict; Path=/\r\n"),
                          std::string::npos)
                    << entry;
                EXPECT_EQ(statusOf(session.ask("GET", "/")), 200);
            },
            {}, signal);
        EXPECT_TRUE(visited);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        expectUntouched();
    }
}

// What answers were made with went before the server did.
TEST_F(Edit, EndsInGoodOrderWhileItIsAsked)
{
    for (int round = 0; round < 3; ++round) {
        std::vector<std::thread> visitors;
        Result const result = runEdit(arguments(), [&visitors](EditSession const& session) {
            for (int visitor = 0; visitor < 4; ++visitor) {
                visitors.emplace_back([session, visitor] {
                    try {
                        for (int frame = 1; frame <= 200; ++frame) {
                            std::string const number = std::to_string(1 + (frame * 7 + visitor) % 10);
                            std::string const answer =
                                session.ask("POST", "/api/preview", R"({"text": "{}", "frame": )" + number + "}");
                            if (answer.empty()) {
                                return;
                            }
                        }
                    } catch (std::exception const&) {
                        // The program has ended, as it should.
                    }
                });
            }
            EXPECT_EQ(statusOf(session.ask("GET", "/api/clip")), 200);
        });
        for (std::thread& visitor : visitors) {
            visitor.join();
        }
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
    }
}

TEST_F(Edit, SavesWhatThePageSendsAndNothingElse)
{
    chmod(config_.c_str(), 0640);
    Result const result = runEdit(arguments(), [](EditSession const& session) {
        std::string const loaded = session.ask("GET", "/api/config");
        EXPECT_EQ(statusOf(loaded), 200);
        // Saved unchanged, nothing changes; then one value.
        EXPECT_EQ(statusOf(session.save(kConfig, etagOf(loaded))), 200);
        std::string const saved = session.save(kChanged, etagOf(loaded));
        EXPECT_EQ(statusOf(saved), 200);
        EXPECT_EQ(etagOf(session.ask("GET", "/api/config")), etagOf(saved));
        // The page that still holds the old one is told.
        std::string const late = session.save(kConfig, etagOf(loaded));
        EXPECT_EQ(statusOf(late), 412);
        EXPECT_EQ(errorOf(late), "the file was changed meanwhile");
    });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(readFile(config_), kChanged);
    EXPECT_EQ(folder_.count(), 1U);
    EXPECT_EQ(fs::status(config_).permissions(), fs::perms(0640));
}

TEST_F(Edit, MakesAConfigurationThatIsNotThereYetOnSaving)
{
    fs::remove(config_);
    runEdit(arguments(), [this](EditSession const& session) {
        std::string const loaded = session.ask("GET", "/api/config");
        EXPECT_EQ(statusOf(loaded), 200);
        EXPECT_EQ(etagOf(loaded), "");
        EXPECT_FALSE(fs::exists(config_));
        EXPECT_EQ(statusOf(session.save(kConfig, "")), 200);
    });
    expectUntouched();
}

TEST_F(Edit, RefusesWhoHasNoBusinessHere)
{
    std::string const body = R"({"text": "{\"overlay\": []}", "etag": ""})";
    Result const result = runEdit(arguments(), [&body](EditSession const& session) {
        std::string const host = session.hostLine();
        std::string const cookie = session.cookieLine();
        std::string const json = "Content-Type: application/json\r\n";
        std::string const end = "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
        std::string const put = "PUT /api/config HTTP/1.1\r\n";
        struct Row {
            char const* name;
            std::string request;
            int status;
        };
        for (Row const& row : {
                 Row{"foreign host", put + "Host: evil.example\r\n" + cookie + json + end, 403},
                 Row{"no host", put + cookie + json + end, 400},
                 Row{"no token", put + host + json + end, 403},
                 Row{"wrong token", "GET /?token=0 HTTP/1.1\r\n" + host + "\r\n", 403},
                 Row{"cross-site write", put + host + cookie + json + "Origin: http://evil.example\r\n" + end, 403},
                 Row{"write of another port", put + host + cookie + json + "Sec-Fetch-Site: same-site\r\n" + end, 403},
                 Row{"form", put + host + cookie + "Content-Type: text/plain\r\n" + end, 415},
                 Row{"other method", "DELETE /api/config HTTP/1.1\r\n" + host + cookie + "\r\n", 405},
                 Row{"traversal", "GET /../../../../etc/passwd HTTP/1.1\r\n" + host + cookie + "\r\n", 404},
                 Row{"encoded traversal", "GET /%2e%2e/%2e%2e/etc/passwd HTTP/1.1\r\n" + host + cookie + "\r\n", 404},
                 Row{"no JSON", put + host + cookie + json + "Content-Length: 1\r\n\r\n{", 400},
                 Row{"too long",
                     put + host + cookie + json + "Content-Length: 5000000\r\n\r\n" + std::string(5000000, ' '), 413},
             }) {
            EXPECT_EQ(statusOf(session.sendRaw(row.request)), row.status) << row.name;
        }
    });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    expectUntouched();
}

TEST_F(Edit, IsNotHeldUpByHalfRequests)
{
    Result const result = runEdit(arguments(), [](EditSession const& session) {
        std::vector<std::unique_ptr<raw_http::Connection>> half;
        for (int i = 0; i < 100; ++i) {
            half.push_back(std::make_unique<raw_http::Connection>(session.port()));
            half.back()->send("PUT /api/config HTTP/1.1\r\n" + session.hostLine() + session.cookieLine() +
                              "Content-Type: application/json\r\nContent-Length: 40\r\n\r\n{\"text\": \"");
        }
        EXPECT_EQ(statusOf(session.ask("GET", "/api/clip")), 200);
        half.front()->finish();
        EXPECT_NE(statusOf(half.front()->readAll()), 200);
    });
    EXPECT_EQ(result.exitCode, 0);
    expectUntouched();
}

TEST_F(Edit, SaysWhyItCannotSave)
{
    fs::create_directory(folder_.file("sub"));
    std::string const config = folder_.file("sub/c.json");
    writeFile(config, kConfig);
    e2e::RunOptions options;
    options.obeysPermissions = true;
    options.fileLimit = 4096;
    Result const result = runEdit(
        {clip_, "-c", config},
        [&](EditSession const& session) {
            std::string const etag = etagOf(session.ask("GET", "/api/config"));
            chmod(config.c_str(), 0444);
            std::string answer = session.save(kChanged, etag);
            EXPECT_EQ(statusOf(answer), 409);
            EXPECT_EQ(errorOf(answer),
                      config + ": cannot be saved: the file is read-only; make it writable and save again");
            chmod(config.c_str(), 0644);
            chmod(folder_.file("sub").c_str(), 0555);
            answer = session.save(kChanged, etag);
            EXPECT_EQ(statusOf(answer), 409);
            EXPECT_EQ(errorOf(answer),
                      config + ": cannot be saved: Permission denied; make file and folder writable and save again");
            chmod(folder_.file("sub").c_str(), 0755);
            answer = session.save(kChanged + std::string(5000, ' '), etag);
            EXPECT_EQ(statusOf(answer), 507);
            EXPECT_EQ(errorOf(answer),
                      config + ": cannot be saved: File too large; raise the limit on file sizes (ulimit -f)");
            EXPECT_EQ(statusOf(session.save("{\"overlay\": [", etag)), 422);
            EXPECT_EQ(readFile(config), kConfig);
            EXPECT_EQ(fs::directory_iterator(folder_.file("sub"))->path(), config);
            fs::remove_all(folder_.file("sub"));
            answer = session.save(kChanged, etag);
            EXPECT_EQ(statusOf(answer), 409);
            EXPECT_EQ(errorOf(answer), config + ": folder " + folder_.file("sub") + " does not exist; create it first");
            // Mended, it goes on.
            fs::create_directory(folder_.file("sub"));
            EXPECT_EQ(statusOf(session.save(kChanged, "")), 200);
        },
        options);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(readFile(config), kChanged);
}

/// The picture of a preview's answer.
imaging_test::RgbPicture pictureOf(std::string const& answer)
{
    std::string const body = bodyOf(answer);
    std::string const bitmap = body.substr(body.find('\n') + 1);
    imaging_test::RgbPicture picture{320, 240};
    constexpr std::size_t kHead = 54;
    constexpr std::size_t kRow = 960;
    for (std::size_t y = 240; y-- > 0;) {
        for (std::size_t x = 0; x < kRow; x += 3) {
            for (std::size_t const color : {2U, 1U, 0U}) {
                picture.bytes.push_back(static_cast<std::uint8_t>(bitmap.at(kHead + y * kRow + x + color)));
            }
        }
    }
    return picture;
}

TEST_F(Edit, ShowsThePictureThatFrameWrites)
{
    runEdit(arguments(), [this](EditSession const& session) {
        std::string const shown = session.ask(
            "POST", "/api/preview", "{\"seconds\": 0.2, \"text\": \"" + SwJsonValue::escapeString(kConfig) + "\"}");
        ASSERT_EQ(statusOf(shown), 200);
        std::string const png = folder_.file("frame.png");
        ASSERT_EQ(e2e::run({"frame", clip_, "-c", config_, "--at", "0.2", "-o", png}).exitCode, 0);
        EXPECT_EQ(pictureOf(shown).bytes, imaging_test::readPng(png).bytes);
    });
}

TEST_F(Edit, GivesTheSchemaThatSchemaPrints)
{
    std::string schema;
    runEdit(arguments(), [&schema](EditSession const& session) { schema = bodyOf(session.ask("GET", "/api/schema")); });
    EXPECT_EQ(schema + "\n", e2e::run({"schema", clip_}).out);
}

TEST_F(Edit, TakesThePortThatIsGiven)
{
    Result const result = runEdit(arguments(), [this](EditSession const& session) {
        std::string const port = std::to_string(session.port());
        Result const second = e2e::run({"edit", clip_, "-c", config_, "--no-browser", "--port", port});
        EXPECT_EQ(second.exitCode, 1);
        EXPECT_EQ(second.out, "");
        EXPECT_EQ(second.err, "stanag-overlay: 127.0.0.1:" + port +
                                  ": this port is in use; give another --port, or none for any free one\n");
    });
    EXPECT_EQ(result.exitCode, 0);
}

TEST_F(Edit, DoesNotReplaceWhatItReads)
{
    std::string const telemetry = folder_.file("t.jsonl");
    writeFile(telemetry, "{\"t\":0}\n");
    Result const result = e2e::run({"edit", clip_, "-c", telemetry, "--telemetry", telemetry, "--no-browser"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err,
              "stanag-overlay: " + telemetry + ": is read as clip or telemetry; give a configuration file\n");
}

TEST_F(Edit, OpensTheBrowserWithAPassThatWorksOnce)
{
    std::string const tools = folder_.file("bin");
    std::string const told = folder_.file("told");
    fs::create_directory(tools);
    writeFile(tools + "/xdg-open", "#!/bin/sh\necho \"$#\" \"$1\" >" + told + "\n");
    chmod((tools + "/xdg-open").c_str(), 0755);
    ASSERT_EQ(mkfifo(told.c_str(), 0600), 0);
    std::string const out = folder_.file("out");
    ASSERT_EQ(mkfifo(out.c_str(), 0600), 0);
    std::string const path = std::getenv("PATH");
    setenv("PATH", (tools + ":" + path).c_str(), 1);
    setenv("DISPLAY", ":0", 1);
    e2e::RunOptions options;
    options.outputFile = out;
    options.meanwhile = [&](int process) {
        std::string address;
        std::ifstream output(out);  // open as long as the program runs
        std::getline(output, address);
        EditSession const session(address, process);
        std::string line;
        std::ifstream browser(told);
        std::getline(browser, line);
        std::string const start = "1 http://127.0.0.1:" + std::to_string(session.port());
        EXPECT_EQ(line.substr(0, start.size()), start);
        std::string const target = line.substr(start.size());
        EXPECT_EQ(target.find(session.token()), std::string::npos);
        std::string const open = "GET " + target + " HTTP/1.1\r\n" + session.hostLine() + "\r\n";
        EXPECT_EQ(statusOf(session.sendRaw(open)), 303);
        EXPECT_EQ(statusOf(session.sendRaw(open)), 403);
        kill(process, SIGINT);
    };
    Result const result = e2e::run({"edit", clip_, "-c", config_}, options);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    setenv("PATH", path.c_str(), 1);
    unsetenv("DISPLAY");
}

struct RefusalRow {
    char const* name;
    std::vector<std::string> arguments;
    int exitCode;
    char const* message;
};

class EditRefusals : public testing::TestWithParam<RefusalRow> {};

TEST_P(EditRefusals, AreOneLine)
{
    std::vector<std::string> arguments = GetParam().arguments;
    arguments.insert(arguments.begin(), "edit");
    arguments.emplace_back("--no-browser");
    Result const result = e2e::run(arguments);
    EXPECT_EQ(result.exitCode, GetParam().exitCode);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, std::string("stanag-overlay: ") + GetParam().message + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, EditRefusals,
    testing::Values(RefusalRow{"live",
                               {"udp://127.0.0.1:5000", "-c", "c.json"},
                               2,
                               "udp://127.0.0.1:5000: the editor goes to any place of a clip; give a file"},
                    RefusalRow{"standard_input",
                               {"-", "-c", "c.json"},
                               2,
                               "-: the editor goes to any place of a clip; give a file"},
                    RefusalRow{"configuration_from_standard_input",
                               {"a.ts", "-c", "-"},
                               2,
                               "-c -: the editor saves the configuration; give a file"},
                    RefusalRow{"no_clip",
                               {"/no/such/clip.ts", "-c", "/tmp/c.json"},
                               1,
                               "/no/such/clip.ts: cannot be opened: No such file or directory; check the path"},
                    RefusalRow{"no_folder",
                               {"a.ts", "-c", "/no/such/c.json"},
                               1,
                               "/no/such/c.json: folder /no/such does not exist; create it first"},
                    RefusalRow{"folder", {"a.ts", "-c", "/"}, 1, "/: is no ordinary file; give a configuration file"},
                    RefusalRow{"port",
                               {"a.ts", "-c", "c.json", "--port", "65536"},
                               2,
                               "edit: --port: give a number from 0 to 65535; see stanag-overlay edit --help"}),
    [](auto const& row) { return row.param.name; });

}  // namespace
