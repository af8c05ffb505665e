// SPDX-License-Identifier: GPL-3.0-or-later
// The search for an audio device while there is none.
#pragma once

#include "kits/media/SystemMixer.h"
#include "kits/support/Result.h"

#include <chrono>
#include <future>
#include <memory>

namespace kits {

/// Searches once a second for a device of AudioSystemsToTry(), in a thread of its own because an
/// audio system may take its time to answer. Window thread.
class MixerSearch {
  public:
    enum class State { Looking, InVain, Found };

    /// Starts a search when one is due, and returns the state: InVain until the next search, and
    /// for good if no audio system is wanted. It is to be called regularly.
    State Look();

    /// Hands over the mixer that Look has found; it already plays.
    std::unique_ptr<SystemMixer> Take() { return std::move(found); }

    /// The destructor waits for the end of a running search.

  private:
    using Clock = std::chrono::steady_clock;

    std::future<Result<std::unique_ptr<SystemMixer>>> look;
    std::unique_ptr<SystemMixer> found;
    Clock::time_point next;
};

} // namespace kits
