// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A process that nobody has to wait for: its parent ends at once, so that init takes it over.
#include "cli/browser.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace cli {
namespace {

/// Without a desktop xdg-open would look for a browser that draws in the terminal.
bool hasDesktop()
{
    constexpr std::array kMarks{"DISPLAY", "WAYLAND_DISPLAY", "BROWSER"};
    return std::any_of(kMarks.begin(), kMarks.end(), [](char const* mark) { return std::getenv(mark) != nullptr; });
}

/// Only calls that are allowed between fork and exec of a program with threads.
[[noreturn]] void becomeBrowser(char const* address)
{
    if (fork() != 0) {
        _exit(0);
    }
    // Ctrl-C in the terminal ends the editor, not the browser.
    setsid();
    signal(SIGPIPE, SIG_DFL);
    signal(SIGXFSZ, SIG_DFL);
    int const nothing = open("/dev/null", O_RDWR);
    dup2(nothing, STDIN_FILENO);
    dup2(nothing, STDOUT_FILENO);
    dup2(nothing, STDERR_FILENO);
    execlp("xdg-open", "xdg-open", address, static_cast<char*>(nullptr));
    _exit(127);
}

}  // namespace

void openInBrowser(std::string const& address)
{
    if (!hasDesktop()) {
        return;
    }
    pid_t const child = fork();
    if (child == 0) {
        becomeBrowser(address.c_str());
    }
    if (child > 0) {
        waitpid(child, nullptr, 0);
    }
}

}  // namespace cli
