// SPDX-License-Identifier: GPL-3.0-or-later
// Runs one of the programs as a user does.
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
    /// The largest resident memory in bytes.
    long memory = 0;
};

/// Replaces a forked child by the program; exits with 127 if there is none. The program inherits
/// only the three standard descriptors, and SIGPIPE ends it even if the test ignores that signal.
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

/// Returns the exit code of a status from wait, or 128 plus the signal that ended the program.
inline int ExitCode(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

/// Runs a program with arguments and without a terminal; calls `meanwhile` while it runs.
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

/// Returns true if a child ends within the time; it remains to be waited for.
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

/// Ends a program by SIGTERM, once its process status shows that it handles that signal.
inline void TerminateWhenHandled(pid_t child) {
    const std::string path = "/proc/" + std::to_string(child) + "/status";
    while (true) {
        std::ifstream file(path);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        const std::size_t caught = text.find("SigCgt:");
        // Without the line, or as a zombie, the program has ended by itself.
        if (caught == std::string::npos || text.find("State:\tZ") != std::string::npos)
            return;
        if (std::stoull(text.substr(caught + 7), nullptr, 16) & (1ULL << (SIGTERM - 1)))
            break;
        std::this_thread::yield();
    }
    ::kill(child, SIGTERM);
}

} // namespace test
