// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A live address runs by media time as a file does: the same texts, however fast the packets come, and files that are
// finished when somebody ends the program.
#include "clips.h"
#include "run_program.h"
#include "temp_folder.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

using e2e::Result;
using e2e::run;

/// A held value, a limited one, a delay and a rare update, none of them a multiple of a frame.
constexpr char const* kConfig = R"({"overlay":[
{"formatString":"%heading_deg","textSize":128,"updateEveryNFrames":9,"formats":{"heading_deg":{"holdLastMs":730}}},
{"formatString":"%heading_deg","textSize":128,"position":{"x":0.1,"y":0.4},
 "formats":{"heading_deg":{"refreshEveryMs":370}}},
{"formatString":"after","textSize":128,"position":{"x":0.1,"y":0.7},
 "condition":{"key":"heading_deg","operator":"lt","value":50,"showAfterMs":410,"keepAfterMs":650}}]})";

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

/// Sends a transport stream to a port of this machine and loses nothing: it waits while the receiver is behind.
class Sender {
public:
    Sender()
    {
        // The system chooses a free port when somebody binds to none.
        int const chosen = socket(AF_INET, SOCK_DGRAM, 0);
        sockaddr_in address = loopback(0);
        socklen_t size = sizeof(address);
        bind(chosen, reinterpret_cast<sockaddr const*>(&address), size);
        getsockname(chosen, reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
        close(chosen);
    }
    ~Sender() { close(socket_); }
    Sender(Sender const&) = delete;
    Sender& operator=(Sender const&) = delete;

    std::string address() const { return "udp://127.0.0.1:" + std::to_string(port_); }

    /// Sends all of it once somebody listens, with a pause after every datagram; ends early when `enough` says so.
    void send(std::string const& bytes, useconds_t pauseUs, std::function<bool()> const& enough = {}) const
    {
        constexpr std::size_t kDatagram = 7 * 188;
        constexpr useconds_t kWaitUs = 200;
        constexpr int kMostWaits = 300000;  // a program that has ended takes nothing any more
        int waits = 0;
        sockaddr_in const address = loopback(port_);
        for (std::size_t at = 0; at < bytes.size(); at += kDatagram) {
            while (waiting_() != 0U) {
                if ((enough && enough()) || ++waits > kMostWaits) {
                    return;
                }
                usleep(kWaitUs);
            }
            sendto(socket_, bytes.data() + at, std::min(kDatagram, bytes.size() - at), 0,
                   reinterpret_cast<sockaddr const*>(&address), sizeof(address));
            usleep(pauseUs);
        }
    }

private:
    /// Bytes that the receiver has not taken yet, as the system lists them; empty when nobody listens.
    std::optional<unsigned long> waiting_() const
    {
        std::array<char, 16> local{};
        std::snprintf(local.data(), local.size(), ":%04X", static_cast<unsigned>(port_));
        for (std::string const& line : e2e::linesOf(e2e::readFile("/proc/net/udp"))) {
            std::istringstream words(line);
            std::string number;
            std::string own;
            std::string remote;
            std::string state;
            std::string queues;
            words >> number >> own >> remote >> state >> queues;
            if (own.size() > 5 && own.substr(own.size() - 5) == local.data()) {
                return std::stoul(queues.substr(queues.find(':') + 1), nullptr, 16);
            }
        }
        return std::nullopt;
    }

    int port_ = 0;
    int socket_ = socket(AF_INET, SOCK_DGRAM, 0);
};

class LiveInput : public testing::Test {
protected:
    static constexpr int kFrames = 250;

    LiveInput()
    {
        e2e::writeFile(file("c.json"), kConfig);
        std::vector<SwJsonObject> telemetry;
        for (int number = 0; number < kFrames; ++number) {
            bool const there = number % 75 < 50;
            telemetry.push_back(there ? SwJsonObject{{"heading_deg", SwJsonValue(number % 100)}}
                                      : SwJsonObject{{"sensor_alt_m", SwJsonValue(5)}});
        }
        clip_test::makeClip({clip_, 96, 64, kFrames, "libx264", 90000, {telemetry}});
        bytes_ = e2e::readFile(clip_);
    }

    std::string file(std::string const& name) const { return folder_.file(name); }

    /// Ends the program with the signal once its output, which is not under its name yet, has begun to grow.
    Result burnUntil(int signal, std::string const& output) const
    {
        Sender const sender;
        e2e::RunOptions options;
        options.meanwhile = [&](int program) {
            constexpr std::uintmax_t kManyFrames = 30000;
            auto const begun = [this] {
                for (auto const& entry : std::filesystem::directory_iterator(file(""))) {
                    std::string const name = entry.path().filename();
                    if (name.find(".part-") != std::string::npos && entry.file_size() > kManyFrames) {
                        return true;
                    }
                }
                return false;
            };
            sender.send(bytes_, 500, begun);
            kill(program, signal);
        };
        return run({"burn", sender.address(), "-c", file("c.json"), "-o", file(output), "--video-codec", "mpeg2video"},
                   options);
    }

    media_test::TempFolder folder_;
    std::string clip_ = folder_.file("a.ts");
    std::string bytes_;
};

TEST_F(LiveInput, GivesTheTextsOfTheFileAtAnyPace)
{
    Result const whole = run({"text", clip_, "-c", file("c.json")});
    ASSERT_EQ(e2e::linesOf(whole.out).size(), static_cast<std::size_t>(kFrames));
    for (bool const slowed : {false, true}) {
        for (useconds_t const pauseUs : {0U, 8000U}) {
            SCOPED_TRACE("pause " + std::to_string(pauseUs) + (slowed ? ", slowed down" : ""));
            Sender const sender;
            e2e::RunOptions options;
            options.slowed = slowed;
            options.meanwhile = [&](int) { sender.send(bytes_, pauseUs); };
            // It takes a second without packets for the end.
            std::string const address = sender.address() + "?timeout=1000000";
            Result const live = run({"text", address, "-c", file("c.json")}, options);
            EXPECT_EQ(live.exitCode, 0);
            EXPECT_EQ(live.err.find("stanag-overlay: " + address + ": reading ended early: "), 0U) << live.err;
            EXPECT_EQ(e2e::linesOf(live.err).size(), 1U) << live.err;
            EXPECT_TRUE(live.out == whole.out) << live.out;
        }
    }
}

TEST_F(LiveInput, HasNoEndOfItsOwnSoSignalsFinishTheFile)
{
    struct Row {
        int signal;
        int exitCode;
    };
    for (Row const& row : {Row{SIGINT, 130}, Row{SIGTERM, 143}, Row{SIGHUP, 129}}) {
        SCOPED_TRACE(row.exitCode);
        std::string const output = std::to_string(row.exitCode) + ".ts";
        Result const result = burnUntil(row.signal, output);
        EXPECT_EQ(result.exitCode, row.exitCode) << result.err;
        clip_test::StreamCounts const counts = clip_test::packetsOf(file(output));
        ASSERT_GT(counts.video, 0);
        EXPECT_LT(counts.video, kFrames);
        EXPECT_NEAR(counts.klv, counts.video, 1);
        EXPECT_EQ(clip_test::picturesOf(file(output)).size(), static_cast<std::size_t>(counts.video));
        std::array<char, 32> last{};
        std::snprintf(last.data(), last.size(), "%.3f", 0.04 * (counts.video - 1));
        EXPECT_EQ(result.err, "stanag-overlay: " + file(output) + ": interrupted; the file was finished up to " +
                                  last.data() + " s\n");
    }
}

}  // namespace
