// SPDX-License-Identifier: GPL-3.0-or-later
// Limits of system resources, for this process or for a program that it starts.
#pragma once

#include "support/Command.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace test {

/// The sanitizers with which the programs under test are built. They need terabytes of address
/// space.
constexpr std::string_view kSanitizers = VEXA_SANITIZE;
constexpr bool kSanitized = !kSanitizers.empty();
/// This sanitizer needs descriptors itself to inspect an object's type.
constexpr bool kNeedsDescriptors = kSanitizers.find("undefined") != std::string_view::npos;

/// Returns the command under a resource limit, given in the syntax of the shell's ulimit.
inline std::vector<std::string> Limited(const std::string& limit,
                                        std::vector<std::string> command) {
    command.insert(command.begin(),
                   {"/bin/sh", "-c", "ulimit " + limit + " && exec \"$0\" \"$@\""});
    return command;
}
inline CommandResult RunLimited(const std::string& limit, std::vector<std::string> command,
                                const std::function<void(pid_t)>& meanwhile = {}) {
    return RunCommand(Limited(limit, std::move(command)), meanwhile);
}

/// Returns the smallest address space, in kilobytes, in which the loader starts the program.
inline int LoaderMemory(const std::string& program) {
    int least = 8 << 10;
    while (least < (1 << 20) &&
           RunLimited("-v " + std::to_string(least), {program, "--version"}).exitCode != 0)
        least += 1 << 10;
    return least;
}

/// Runs `work` while this process may use at most `most` of a resource.
inline void WithLimit(__rlimit_resource resource, rlim_t most, const std::function<void()>& work) {
    rlimit before{};
    ::getrlimit(resource, &before);
    const rlimit limit{most, before.rlim_max};
    ::setrlimit(resource, &limit);
    work();
    ::setrlimit(resource, &before);
}

/// Runs `work` while no file can grow beyond `bytes`. For a writer this is like a full disk.
inline void WithFileSizeLimit(rlim_t bytes, const std::function<void()>& work) {
    auto* handler = std::signal(SIGXFSZ, SIG_IGN);
    WithLimit(RLIMIT_FSIZE, bytes, work);
    std::signal(SIGXFSZ, handler);
}

/// Runs `work` while only `left` descriptors are free.
inline void WithDescriptorsLeft(std::size_t left, const std::function<void()>& work) {
    WithLimit(RLIMIT_NOFILE, 256, [&] {
        std::vector<int> taken;
        for (int next = 0; (next = ::open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;)
            taken.push_back(next);
        const auto release = [&taken](std::size_t kept) {
            for (; taken.size() > kept; taken.pop_back())
                ::close(taken.back());
        };
        release(taken.size() - left);
        work();
        release(0);
    });
}

/// Runs `work` while the process can get at most `bytes` more memory from the system.
inline void WithMemoryLeft(std::size_t bytes, const std::function<void()>& work) {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    WithLimit(RLIMIT_AS, pages * static_cast<std::size_t>(::getpagesize()) + bytes, work);
}

/// Runs `work` while nothing in the folders can be created, renamed or removed.
inline void WithReadOnlyFolders(const std::vector<std::filesystem::path>& folders,
                                const std::function<void()>& work) {
    constexpr uid_t kNobody = 65534;
    for (const auto& folder : folders)
        ::chmod(folder.c_str(), 0555);
    // Permissions do not restrict root, so the work runs as another user.
    const uid_t user = ::geteuid();
    if (::seteuid(user == 0 ? kNobody : user) != 0)
        std::abort();
    work();
    if (::seteuid(user) != 0)
        std::abort();
    for (const auto& folder : folders)
        ::chmod(folder.c_str(), 0755);
}

} // namespace test
