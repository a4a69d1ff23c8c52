// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What burn --live tells the service manager that has started it.
#include "clips.h"
#include "live_relays.h"
#include "run_program.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

/// A manager's socket under a path, or with "@" under a name that is none of the file system's.
class Manager {
public:
    explicit Manager(std::string const& name) : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy(name.begin(), name.end(), address.sun_path);
        if (name.front() == '@') {
            address.sun_path[0] = '\0';
        }
        auto const length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        bound_ = bind(socket_, reinterpret_cast<sockaddr const*>(&address), length) == 0;
        setenv("NOTIFY_SOCKET", name.c_str(), 1);
    }
    ~Manager()
    {
        unsetenv("NOTIFY_SOCKET");
        close(socket_);
    }
    Manager(Manager const&) = delete;
    Manager& operator=(Manager const&) = delete;

    bool bound() const { return bound_; }

    /// All that has been told, in order.
    std::vector<std::string> told() const
    {
        std::vector<std::string> notices;
        std::array<char, 4096> notice{};
        for (;;) {
            ssize_t const size = recv(socket_, notice.data(), notice.size(), 0);
            if (size < 0) {
                return notices;
            }
            notices.emplace_back(notice.data(), static_cast<std::size_t>(size));
        }
    }

private:
    int socket_;
    bool bound_ = false;
};

class ServiceNotices : public testing::Test {
protected:
    ServiceNotices()
    {
        e2e::writeFile(file("c.json"), R"({"overlay":[]})");
        clip_test::makeClip({file("a.ts"), 64, 48, 25, "mpeg2video"});
    }
    std::string file(std::string const& name) const { return folder_.file(name); }

    e2e::Result burnLive() const
    {
        e2e::RunOptions options;
        options.inputFile = file("a.ts");
        return e2e::run({"burn", "-", "-c", file("c.json"), "-o", file("o.ts"), "--live", "--preset", "ultrafast"},
                        options);
    }

    media_test::TempFolder folder_;
};

TEST_F(ServiceNotices, TellThatItIsReadyAliveAndEnding)
{
    for (std::string const& name : {file("notify"), "@overlay-test-" + std::to_string(getpid())}) {
        SCOPED_TRACE(name);
        Manager const manager(name);
        ASSERT_TRUE(manager.bound());
        EXPECT_EQ(burnLive().exitCode, 0);
        std::vector<std::string> told = manager.told();
        // Once a second: a slow machine tells it more often.
        told.erase(std::unique(told.begin(), told.end()), told.end());
        ASSERT_EQ(told.size(), 4U) << testing::PrintToString(told);
        EXPECT_EQ(told[0], "READY=1");
        EXPECT_EQ(told[1], "WATCHDOG=1");
        EXPECT_EQ(told[2], "STOPPING=1");
        EXPECT_EQ(told[3].rfind("STATUS=25 pictures, 0 dropped, 0 reopened, no telemetry, delay ", 0), 0U) << told[3];
    }
}

// Former bug: a service that waited for somebody to receive its output told nothing, and was ended by its manager.
TEST_F(ServiceNotices, TellThatItWaitsForAReceiver)
{
    Manager const manager(file("notify"));
    e2e::RunOptions options;
    options.inputFile = file("a.ts");
    options.watchdogSeconds = 20;
    options.meanwhile = [](int program) {
        std::this_thread::sleep_for(std::chrono::milliseconds(3500));
        kill(program, SIGTERM);
    };
    std::string const address = "tcp://127.0.0.1:" + std::to_string(live_test::freeTcpPort()) + "?listen=1";
    EXPECT_EQ(e2e::run({"burn", "-", "-c", file("c.json"), "-o", address, "--live"}, options).exitCode, 0);
    std::vector<std::string> told = manager.told();
    EXPECT_GE(std::count(told.begin(), told.end(), "WATCHDOG=1"), 2);
    told.erase(std::unique(told.begin(), told.end()), told.end());
    EXPECT_EQ(told, (std::vector<std::string>{"READY=1", "WATCHDOG=1", "STOPPING=1"}));
}

TEST_F(ServiceNotices, TellNothingBeforeTheWorkCanBegin)
{
    Manager const manager(file("notify"));
    e2e::Result const result =
        e2e::run({"burn", "-", "-c", file("none.json"), "-o", file("o.ts"), "--live", "--preset", "ultrafast"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(manager.told(), std::vector<std::string>());
}

TEST_F(ServiceNotices, NobodyNeedsToListen)
{
    setenv("NOTIFY_SOCKET", file("nobody").c_str(), 1);
    EXPECT_EQ(burnLive().exitCode, 0);
    for (char const* const name : {"", "relative", "@", "/"}) {
        setenv("NOTIFY_SOCKET", name, 1);
        EXPECT_EQ(burnLive().exitCode, 0) << name;
    }
    setenv("NOTIFY_SOCKET", ("/" + std::string(200, 'x')).c_str(), 1);
    EXPECT_EQ(burnLive().exitCode, 0);
    unsetenv("NOTIFY_SOCKET");
}

}  // namespace
