// SPDX-License-Identifier: GPL-3.0-or-later
// Runs another program to its end, within limits.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace kits {

/// The limits of a program's resources. Each process that it starts has the same limits of its own,
/// except for the elapsed time, which they share.
struct ChildLimits {
    /// The seconds of processor time; the system ends a process that uses more.
    std::chrono::seconds processorTime{20};
    /// The elapsed milliseconds after which the program and all that it has started are killed.
    std::chrono::milliseconds time{30'000};
    /// The maximum address space in bytes.
    std::uint64_t memory = std::uint64_t{1} << 30;
    /// The maximum size, in bytes, of each file that the program writes.
    std::uint64_t fileSize = std::uint64_t{64} << 20;
    /// The maximum number of bytes of standard error that are kept; the rest is read and dropped.
    std::size_t standardError = std::size_t{64} << 10;
};

/// A program to run.
struct ChildProgram {
    /// The program and its arguments. A name without a slash is looked up in the folders of PATH
    /// that are absolute paths; the current folder is never searched. A shell is not involved.
    std::vector<std::string> arguments;
    /// The folder in which it starts and keeps its temporary files; empty for the caller's.
    std::filesystem::path folder;
    ChildLimits limits;
    /// Is called several times a second, in the calling thread, while the program runs; if it
    /// returns true, the program is killed.
    std::function<bool()> stop = nullptr;
};

/// The way in which a program has ended.
struct ChildResult {
    enum class End {
        /// It ended by itself; `number` is its exit status.
        exited,
        /// The signal `number` ended it.
        signalled,
        /// It was killed because limits.time had passed.
        timedOut,
        /// It was killed because `stop` returned true.
        stopped,
        /// There is no such program.
        notFound,
        /// It could not be started; `number` is the system's errno.
        notStarted,
    };
    End end = End::notStarted;
    int number = 0;
    /// The program's standard error, up to limits.standardError bytes.
    std::string standardError;

    bool Succeeded() const { return end == End::exited && number == 0; }
};

/// Runs the program with empty input and its output dropped, and waits for it. When it has ended,
/// all processes that it started in its process group are killed; the same happens if the caller's
/// process ends first, in whatever way. The program gets none of the caller's open files, and only
/// the user can access what it creates (a file mode mask of 077). Safe in a process with several
/// threads, whose memory is not copied, so that page faults do not slow down a thread that plays.
/// Any thread that may wait.
ChildResult RunProgram(const ChildProgram& program);

} // namespace kits
