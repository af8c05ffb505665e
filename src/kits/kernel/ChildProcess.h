// SPDX-License-Identifier: GPL-3.0-or-later
// This runs another program to its end, within limits.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace kits {

/// The limits of what a program may use up. Processes that it starts have the same limits each,
/// except for the time by the clock, which they share.
struct ChildLimits {
    /// The seconds of processor time; the system ends a process that uses more.
    std::chrono::seconds processorTime{20};
    /// The milliseconds by the clock after which the program and what it has started are killed.
    std::chrono::milliseconds time{30'000};
    /// The program may have so many bytes of address space.
    std::uint64_t memory = std::uint64_t{1} << 30;
    /// Each file that the program writes may have so many bytes.
    std::uint64_t fileSize = std::uint64_t{64} << 20;
    /// How many bytes of its standard error are kept; the rest is read and dropped.
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
    /// This is asked several times a second while the program runs, in the calling thread; where it
    /// answers true the program is killed.
    std::function<bool()> stop = nullptr;
};

/// Tells how a program has ended.
struct ChildResult {
    enum class End {
        /// It has ended by itself; `number` is its exit status.
        exited,
        /// The signal `number` has ended it.
        signalled,
        /// It was killed because limits.time was over.
        timedOut,
        /// The program was killed because `stop` answered true.
        stopped,
        /// There is no such program.
        notFound,
        /// It could not be started; `number` is the system's errno.
        notStarted,
    };
    End end = End::notStarted;
    int number = 0;
    /// What the program wrote to standard error, as far as that is kept.
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
