// SPDX-License-Identifier: GPL-3.0-or-later
// The most recent output frames, for meters and scopes.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/Shared.h"
#include "kits/support/SupportDefs.h"

#include <cstddef>
#include <span>
#include <vector>

namespace vexa {

/// One frame of the output. The alignment makes it a lock-free atomic with every compiler.
struct alignas(8) OutputFrame {
    float left = 0;
    float right = 0;
};

/// Keeps the media thread's most recent frames while a Listener exists. Any number of listeners may
/// read; the media thread never waits for them.
class OutputTap {
  public:
    /// The number of frames kept: 0.68 s at 48 kHz, 0.17 s at 192 kHz.
    static constexpr std::size_t kFrames = 1U << 15;

    OutputTap() : frames(kFrames) {}
    OutputTap(const OutputTap&) = delete;
    OutputTap& operator=(const OutputTap&) = delete;

    /// Returns the sample rate of the output; 0 before the first connection. Any thread may read
    /// it, one sets it.
    float Rate() const noexcept { return rate; }
    void SetRate(float next) noexcept { rate = next; }

    /// Stores frames of one or two channels, interleaved. Costs one comparison if there is no
    /// listener. Media thread.
    VEXA_REALTIME void Put(const float* buffer, std::size_t count, std::size_t channels) noexcept;

    /// Returns the number of listeners. Any thread.
    int32 Listeners() const noexcept { return listeners; }

    /// Frames are kept as long as a listener exists. Window thread.
    class Listener {
      public:
        explicit Listener(OutputTap& tap) : tap(tap) { tap.listeners = tap.listeners + 1; }
        ~Listener() { tap.listeners = tap.listeners - 1; }
        Listener(const Listener&) = delete;
        Listener& operator=(const Listener&) = delete;

        float Rate() const noexcept { return tap.Rate(); }
        /// Returns the number of frames stored since the tap was made; it only grows.
        uint64 Count() const noexcept { return tap.ended; }
        /// Copies the frames from number `from` on. Returns false if some are not stored yet or
        /// were overwritten meanwhile; the copy is then meaningless.
        bool Copy(uint64 from, std::span<OutputFrame> into) const noexcept;

      private:
        OutputTap& tap;
    };

  private:
    /// The frame of each number stands at the number modulo the size, a power of two.
    std::vector<kits::Shared<OutputFrame>> frames;
    /// Frames below `ended` are complete, and those from `begun` on are untouched. Whoever sees a
    /// frame sees `begun` as it was when that frame was written, or later.
    kits::Shared<uint64> begun{0};
    kits::Shared<uint64> ended{0};
    kits::Shared<float> rate{0};
    /// The number of listeners, written by the window thread.
    kits::Shared<int32> listeners{0};
};

} // namespace vexa
