// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Process plumbing of the end-to-end tests.
#include "run_program.h"

#include "temp_folder.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <linux/capability.h>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace e2e {
namespace {

void redirect(std::string const& path, int flags, int descriptor)
{
    constexpr mode_t kReadWrite = 0644;
    int const file = open(path.c_str(), flags, kReadWrite);
    if (file < 0 || dup2(file, descriptor) < 0) {
        _exit(126);
    }
    close(file);
}

/// Called between fork and exec.
void confine(RunOptions const& options)
{
    if (options.fileLimit != 0) {
        rlimit const limit{options.fileLimit, options.fileLimit};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    if (options.obeysPermissions) {
        // Fails for ordinary users, who have nothing to give up.
        prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
        prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
    }
}

[[noreturn]] void becomeProgram(std::vector<std::string> const& arguments, unsigned watchdogSeconds)
{
    std::vector<std::string> words = {OVERLAY_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    signal(SIGHUP, SIG_DFL);  // whoever runs the tests may ignore it
    alarm(watchdogSeconds);
    execv(pointers.front(), pointers.data());
    _exit(127);
}

/// Stops the program most of the time until it ends, which the caller still has to collect.
void slowDown(pid_t child)
{
    constexpr useconds_t kRunsUs = 15000;
    constexpr useconds_t kStandsUs = 25000;
    siginfo_t ended{};
    while (ended.si_pid == 0 && waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT) == 0) {
        kill(child, SIGSTOP);
        usleep(kStandsUs);
        kill(child, SIGCONT);
        usleep(kRunsUs);
    }
}

int exitCodeOf(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

Result run(std::vector<std::string> const& arguments, RunOptions const& options)
{
    media_test::TempFolder const folder;
    std::string const out = options.outputFile.empty() ? folder.file("out") : options.outputFile;
    pid_t const child = fork();
    if (child == 0) {
        redirect(options.inputFile.empty() ? "/dev/null" : options.inputFile, O_RDONLY, STDIN_FILENO);
        redirect(out, O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
        redirect(folder.file("err"), O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
        confine(options);
        becomeProgram(arguments, options.watchdogSeconds);
    }
    std::thread meanwhile([&options, child] {
        if (options.meanwhile) {
            options.meanwhile(child);
        }
    });
    if (options.slowed) {
        slowDown(child);
    }
    Result result;
    result.exitCode = exitCodeOf(child);
    meanwhile.join();
    result.out = options.outputFile.empty() ? readFile(out) : "";
    result.err = readFile(folder.file("err"));
    return result;
}

Result runInterrupted(std::vector<std::string> const& arguments, std::string const& bytes, int signal)
{
    media_test::TempFolder const folder;
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    pid_t const child = fork();
    if (child == 0) {
        dup2(ends[0], STDIN_FILENO);
        close(ends[0]);
        close(ends[1]);
        redirect(folder.file("out"), O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
        redirect(folder.file("err"), O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
        becomeProgram(arguments, RunOptions{}.watchdogSeconds);
    }
    close(ends[0]);
    // Writing blocks until the program has read all but what the pipe holds: it is in the midst of its work.
    for (std::size_t sent = 0; sent < bytes.size();) {
        ssize_t const count = write(ends[1], bytes.data() + sent, bytes.size() - sent);
        if (count <= 0) {
            break;
        }
        sent += static_cast<std::size_t>(count);
    }
    kill(child, signal);
    Result result;
    result.exitCode = exitCodeOf(child);
    close(ends[1]);
    result.out = readFile(folder.file("out"));
    result.err = readFile(folder.file("err"));
    return result;
}

std::vector<std::string> linesOf(std::string const& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace e2e
