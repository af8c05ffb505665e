// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/application/GuardedMain.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

namespace kits {

namespace {

/// The name of the program, for the terminate handler.
const char* guarded = "";

void SayNoMemory() {
    std::fprintf(stderr, "%s: there is not enough memory\n", guarded);
}

/// Handles an exception that left a thread, or that a library cannot let through: the program still
/// ends, but with a message that a person understands.
[[noreturn]] void End() {
    try {
        if (std::current_exception())
            throw;
    } catch (const std::bad_alloc&) {
        SayNoMemory();
        std::_Exit(1);
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "%s: %s\n", guarded, fault.what());
        std::abort();
    } catch (...) {
    }
    // For example a library has cancelled a thread where it could not end.
    std::fprintf(stderr, "%s: ended by a fault of which nothing is known\n", guarded);
    std::abort();
}

/// Returns the exit code, which is 1 instead of 0 if the system has not taken all that the program
/// has printed, as on a full disk.
int WithOutputWritten(int exitCode) {
    errno = 0;
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return exitCode;
    std::fprintf(stderr, "%s: could not write to standard output%s%s\n", guarded,
                 errno != 0 ? ": " : "", errno != 0 ? std::strerror(errno) : "");
    return exitCode != 0 ? exitCode : 1;
}

} // namespace

int GuardedMain(const char* program, const std::function<int()>& work) {
    // A write beyond the user's limit of file size must fail, as on a full disk, instead of ending
    // the program.
    std::signal(SIGXFSZ, SIG_IGN);
    // If the process that started the program ignores the ends of its children, this one inherits
    // that, and the system would not keep a child's exit status for RunProgram.
    std::signal(SIGCHLD, SIG_DFL);
    guarded = program;
    std::set_terminate(End);
    try {
        return WithOutputWritten(work());
    } catch (const std::bad_alloc&) {
        SayNoMemory();
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "%s: %s\n", program, fault.what());
    }
    return 1;
}

} // namespace kits
