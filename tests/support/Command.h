// SPDX-License-Identifier: GPL-3.0-or-later
// Running a program of ours as a user does.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

struct CommandResult {
    /// The exit code, or 128 plus the signal that ended it.
    int exitCode = -1;
    /// Standard output and standard error.
    std::string text;
    /// Largest resident memory in bytes.
    long memory = 0;
};

/// Becomes the program; for a child that has been forked. 127 if there is none. The program gets
/// the three usual descriptors, whatever else the test was started with, and a broken pipe ends it,
/// whatever the test does about its own.
[[noreturn]] inline void Execute(std::vector<std::string> arguments) {
    std::signal(SIGPIPE, SIG_DFL);
    ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    ::execvp(argv[0], argv.data());
    ::_exit(127);
}

/// The exit code of a status from wait, or 128 plus the signal that ended the program.
inline int ExitCode(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

/// Runs a program with arguments, no terminal, and `meanwhile` while it runs.
inline CommandResult RunCommand(std::vector<std::string> arguments,
                                const std::function<void(pid_t)>& meanwhile = {}) {
    int ends[2];
    if (::pipe(ends) != 0)
        std::abort();
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::dup2(ends[1], STDERR_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        Execute(std::move(arguments));
    }
    ::close(ends[1]);
    if (meanwhile)
        meanwhile(child);
    CommandResult result;
    char buffer[4096];
    ssize_t count = 0;
    while ((count = ::read(ends[0], buffer, sizeof buffer)) > 0)
        result.text.append(buffer, static_cast<std::size_t>(count));
    ::close(ends[0]);
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    result.exitCode = ExitCode(status);
    result.memory = usage.ru_maxrss * 1024;
    return result;
}

/// Whether a child ends within a time; it stays to be waited for.
inline bool EndsWithin(pid_t child, std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (true) {
        siginfo_t info{};
        if (::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
            info.si_pid == child)
            return true;
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

/// Ends a program of ours by SIGTERM, but not before it handles that, which shows in its status.
inline void TerminateWhenHandled(pid_t child) {
    const std::string path = "/proc/" + std::to_string(child) + "/status";
    while (true) {
        std::ifstream file(path);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        const std::size_t caught = text.find("SigCgt:");
        // Without the line, or a zombie: it has ended by itself.
        if (caught == std::string::npos || text.find("State:\tZ") != std::string::npos)
            return;
        if (std::stoull(text.substr(caught + 7), nullptr, 16) & (1ULL << (SIGTERM - 1)))
            break;
        std::this_thread::yield();
    }
    ::kill(child, SIGTERM);
}

} // namespace test
