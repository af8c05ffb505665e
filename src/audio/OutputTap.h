// SPDX-License-Identifier: GPL-3.0-or-later
// The newest part of what is sent to the device, for those who look at it.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/Shared.h"
#include "kits/support/SupportDefs.h"

#include <cstddef>
#include <span>
#include <vector>

namespace vexa {

/// One frame of the output. By its alignment every compiler shares it between threads in one piece.
struct alignas(8) OutputFrame {
    float left = 0;
    float right = 0;
};

/// Keeps the newest frames that the media thread has put in, while there is a Listener; any number
/// of these read them without being waited for.
class OutputTap {
  public:
    /// How many frames are kept: those of 0.68 s at 48 kHz, of 0.17 s at 192 kHz.
    static constexpr std::size_t kFrames = 1U << 15;

    OutputTap() : frames(kFrames) {}
    OutputTap(const OutputTap&) = delete;
    OutputTap& operator=(const OutputTap&) = delete;

    /// Returns the frames per second of what comes; 0 before anything was connected. Any thread
    /// reads it, one sets it.
    float Rate() const noexcept { return rate; }
    void SetRate(float next) noexcept { rate = next; }

    /// Puts in frames of one or two channels, interleaved. It costs a comparison where nobody
    /// listens. Media thread.
    VEXA_REALTIME void Put(const float* buffer, std::size_t count, std::size_t channels) noexcept;

    /// Returns how many listeners there are. Any thread.
    int32 Listeners() const noexcept { return listeners; }

    /// Frames are kept as long as there is a listener. Window thread.
    class Listener {
      public:
        explicit Listener(OutputTap& tap) : tap(tap) { tap.listeners = tap.listeners + 1; }
        ~Listener() { tap.listeners = tap.listeners - 1; }
        Listener(const Listener&) = delete;
        Listener& operator=(const Listener&) = delete;

        float Rate() const noexcept { return tap.Rate(); }
        /// Returns how many frames have been kept since the tap was made; the number only grows.
        uint64 Count() const noexcept { return tap.ended; }
        /// Copies the frames from number `from` on. False, and what is copied means nothing, where
        /// some have not come yet or were overwritten meanwhile.
        bool Copy(uint64 from, std::span<OutputFrame> into) const noexcept;

      private:
        OutputTap& tap;
    };

  private:
    /// The frame of each number stands at the number modulo the size, a power of two.
    std::vector<kits::Shared<OutputFrame>> frames;
    /// The number of the first frame that is not being written, and not written. Whoever sees a
    /// frame sees the first of them as it was when that was written, or later.
    kits::Shared<uint64> begun{0};
    kits::Shared<uint64> ended{0};
    kits::Shared<float> rate{0};
    /// The number of listeners, written by the window thread.
    kits::Shared<int32> listeners{0};
};

} // namespace vexa
