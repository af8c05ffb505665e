// SPDX-License-Identifier: GPL-3.0-or-later
// A request from outside, such as Ctrl-C, to end early.
#pragma once

#include <chrono>
#include <csignal>

namespace kits {

/// While an Interrupt exists, SIGINT, SIGTERM and SIGHUP do not end the program but are recorded,
/// so that its work can stop in an orderly way. A program that has not stopped some seconds later,
/// as where a library waits for a server that hangs, is ended by a further signal. A signal that
/// was ignored before stays ignored, as nohup requires. The destructor restores the signals'
/// previous actions. There is at most one at a time, made and destroyed by the main thread; any
/// thread reads it.
class Interrupt {
  public:
    /// The time, to the second, after which a further signal ends the program.
    static constexpr std::chrono::seconds kPatience{3};

    /// While one exists, no signal ends the program: what is being written is to be completed. Any
    /// thread.
    class Completion {
      public:
        Completion();
        ~Completion();
        Completion(const Completion&) = delete;
        Completion& operator=(const Completion&) = delete;
    };

    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    bool Requested() const { return Signal() != 0; }
    /// Returns the last signal received, 0 for none.
    int Signal() const;
    /// Returns true if the program was asked to end since the last Interrupt was made. Any thread.
    static bool Pending();
    /// Returns the exit code that the shells' convention asks for: 128 plus the signal.
    int ExitCode() const { return 128 + Signal(); }

  private:
    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

    struct sigaction before[3];
};

} // namespace kits
