// SPDX-License-Identifier: GPL-3.0-or-later
// The program vexa as a child process of a host.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <sys/types.h>

namespace vexa::lv2 {

/// Runs the program that shows what plays at the other end of a socket, inside a window of the X
/// server. What becomes of it is nobody's fault in the host. One thread.
class WindowProcess {
  public:
    ~WindowProcess() { End(); }

    /// Starts the program that lies with the bundle, or else the one in PATH. The socket stays the
    /// caller's. Returns what there is to tell a person; empty where it is started.
    std::string Start(const std::string& bundle, int socket, std::uint32_t window);
    bool Runs() const { return child > 0; }
    /// Once after it has ended: what there is to tell a person. Does not wait.
    std::optional<std::string> Ended();
    /// Asks it to end, and waits; after a second it has no choice.
    void End();

  private:
    pid_t child = -1;
};

} // namespace vexa::lv2
