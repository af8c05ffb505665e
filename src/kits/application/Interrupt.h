// SPDX-License-Identifier: GPL-3.0-or-later
// A request from outside to end early, such as Ctrl-C.
#pragma once

#include <csignal>

namespace kits {

/// While one lives, SIGINT, SIGTERM and SIGHUP no longer end the program but are noted, so that its
/// work can stop in an orderly way. A signal that was ignored before stays ignored, as nohup wants
/// it. Afterwards the signals do what they did before. There is one at a time, made and destroyed
/// by the main thread; any thread reads it.
class Interrupt {
  public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    bool Requested() const { return Signal() != 0; }
    /// The last signal that came, 0 for none.
    int Signal() const;
    /// True if the program was asked to end since the last Interrupt was made. Any thread.
    static bool Pending();
    /// Returns the exit code that the shells' convention asks for: 128 plus the signal.
    int ExitCode() const { return 128 + Signal(); }

  private:
    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

    struct sigaction before[3];
};

} // namespace kits
