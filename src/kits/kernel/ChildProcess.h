// SPDX-License-Identifier: GPL-3.0-or-later
// Running another program to its end, within limits.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace kits {

/// What a program may use up. Processes that it starts have the same limits each, except for the
/// time by the clock, which they share.
struct ChildLimits {
    /// Of computing; the system ends the process that exceeds it.
    std::chrono::seconds processorTime{20};
    /// By the clock; then the program and what it started are killed.
    std::chrono::milliseconds time{30'000};
    /// Bytes of address space.
    std::uint64_t memory = std::uint64_t{1} << 30;
    /// Bytes of each file that it writes.
    std::uint64_t fileSize = std::uint64_t{64} << 20;
    /// Bytes of standard error that are kept; the rest is read and dropped.
    std::size_t standardError = std::size_t{64} << 10;
};

/// A program to run.
struct ChildProgram {
    /// The program and its arguments. A name without a slash is looked up in the folders of PATH
    /// that are absolute paths; the current folder is never searched. A shell is not involved.
    std::vector<std::string> arguments;
    /// The folder in which it starts, which also takes its temporary files; empty: the caller's.
    std::filesystem::path folder;
    ChildLimits limits;
    /// Asked several times a second while the program runs, in the calling thread: true ends it.
    std::function<bool()> stop = nullptr;
};

/// How it ended.
struct ChildResult {
    enum class End {
        /// By itself; `number` is its exit status.
        exited,
        /// By the signal `number`.
        signalled,
        /// Killed after limits.time.
        timedOut,
        /// Killed because `stop` wanted it.
        stopped,
        /// There is no such program.
        notFound,
        /// It could not be started; `number` is the system's errno.
        notStarted,
    };
    End end = End::notStarted;
    int number = 0;
    /// What it wrote to standard error.
    std::string standardError;

    bool Succeeded() const { return end == End::exited && number == 0; }
};

/// Runs the program with empty input, its output dropped, and waits for it. When it has ended, all
/// that it started in its process group is gone as well; so it is when the caller's process ends
/// first, however that ends. The program gets none of the caller's open files, and what it creates
/// is the user's alone (a file mode mask of 077). Safe in a process with several threads, whose
/// memory is not copied: a thread that plays is not slowed down by page faults. Any thread that may
/// wait.
ChildResult RunProgram(const ChildProgram& program);

} // namespace kits
