// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/frame/WindowProcess.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vexa {

namespace {

constexpr const char* kProgram = "vexa";
/// The program's path relative to the folder: inside it; if both are in the build folder, which has
/// lv2/vexa.lv2 and clap/vexa; if both are installed with one prefix, where these are in lib, or in
/// lib and a folder of the machine's kind.
constexpr const char* kPlaces[] = {"vexa", "../../bin/vexa", "../../../bin/vexa",
                                   "../../../../bin/vexa"};
/// The number of the socket's descriptor in the child.
constexpr int kSocket = 3;

std::string Program(const std::string& folder) {
    for (const char* place : kPlaces) {
        std::string path = folder + '/' + place;
        if (::access(path.c_str(), X_OK) == 0)
            return path;
    }
    return kProgram;
}

void Rest() {
    const timespec time{0, 10'000'000};
    ::nanosleep(&time, nullptr);
}

} // namespace

std::string WindowProcess::Start(const std::string& folder, int socket, std::uint32_t window) {
    std::string texts[] = {kProgram, "--user-folder",       "--attach", std::to_string(kSocket),
                           "--into", std::to_string(window)};
    char* arguments[std::size(texts) + 1] = {};
    for (std::size_t i = 0; i < std::size(texts); i++)
        arguments[i] = texts[i].data();

    posix_spawn_file_actions_t files;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawn_file_actions_adddup2(&files, socket, kSocket);
    ::posix_spawn_file_actions_addclosefrom_np(&files, kSocket + 1);
    // The child starts with the default signal handling instead of the host's.
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes, &signals);
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes, &signals);
    const std::string program = Program(folder);
    const int fault =
        ::posix_spawnp(&child, program.c_str(), &files, &attributes, arguments, environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&files);
    if (fault == 0)
        return "";
    child = -1;
    if (fault == ENOENT)
        return "The program vexa, which shows this instrument, is neither in PATH nor installed "
               "with the plug-in in " +
               folder + ". The instrument plays all the same.";
    return "The program " + program + " cannot be started: " + std::strerror(fault);
}

std::optional<std::string> WindowProcess::Ended() {
    int status = 0;
    if (!Runs() || ::waitpid(child, &status, WNOHANG) == 0)
        return std::nullopt;
    child = -1;
    if (WIFSIGNALED(status))
        return "The program of this window was ended by signal " +
               std::to_string(WTERMSIG(status)) + ". The instrument plays on.";
    if (WEXITSTATUS(status) != 0)
        return "The program of this window has ended with a fault, which it has told on its "
               "standard error. The instrument plays on.";
    return "The window is closed. The instrument plays on.";
}

void WindowProcess::End() {
    if (Runs())
        ::kill(child, SIGTERM);
    for (int i = 0; i < 100 && Runs() && !Ended(); i++)
        Rest();
    if (!Runs())
        return;
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    child = -1;
}

} // namespace vexa
