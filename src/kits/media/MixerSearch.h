// SPDX-License-Identifier: GPL-3.0-or-later
// Looking for an audio device that is not there yet.
#pragma once

#include "kits/media/SystemMixer.h"
#include "kits/support/Result.h"

#include <chrono>
#include <future>
#include <memory>

namespace kits {

/// Looks once a second for a device of AudioSystemsToTry(), in a thread of its own, as an audio
/// system may take its time to answer. Window thread.
class MixerSearch {
  public:
    enum class State { Looking, InVain, Found };

    /// Begins a look when it is time for one, and says what has come of it: InVain until the next
    /// look, and for good where no audio system is wanted. It is to be called now and then.
    State Look();

    /// Hands over the mixer that Look has found, which plays already.
    std::unique_ptr<SystemMixer> Take() { return std::move(found); }

    /// The destructor waits for the end of a look.

  private:
    using Clock = std::chrono::steady_clock;

    std::future<Result<std::unique_ptr<SystemMixer>>> look;
    std::unique_ptr<SystemMixer> found;
    Clock::time_point next;
};

} // namespace kits
