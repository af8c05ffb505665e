// SPDX-License-Identifier: GPL-3.0-or-later
// The program vexa as a child process of a host.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <sys/types.h>

namespace vexa {

/// Runs the program, which shows the instrument at the other end of a socket, inside a window of
/// the X server. A failure of the program does not affect the host. One thread.
class WindowProcess {
  public:
    ~WindowProcess() { End(); }

    /// Starts the program that is in the folder of the plug-in or was built or installed together
    /// with it, or else the one in PATH. The caller keeps the socket. Returns a message for the
    /// user; empty if the program was started.
    std::string Start(const std::string& folder, int socket, std::uint32_t window);
    bool Runs() const { return child > 0; }
    /// Returns a message for the user, once after the program has ended. Does not wait.
    std::optional<std::string> Ended();
    /// Asks the program to end and waits; kills it after a second.
    void End();

  private:
    pid_t child = -1;
};

} // namespace vexa
