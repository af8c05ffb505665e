// SPDX-License-Identifier: GPL-3.0-or-later
// Guards for code that runs in the media thread.
#pragma once

#include "kits/support/RealtimeMark.h"

#include <cstdint>

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

namespace vexa {

/// Marks its lifetime as a stretch of the media thread's work: no allocation, no lock, no system
/// call but the clock's. It only counts; the test build watches the counter and fails a test that
/// allocates or locks inside.
class RealtimeSection {
  public:
    VEXA_REALTIME RealtimeSection() noexcept { depth++; }
    VEXA_REALTIME ~RealtimeSection() { depth--; }
    RealtimeSection(const RealtimeSection&) = delete;
    RealtimeSection& operator=(const RealtimeSection&) = delete;

    /// Returns true if the calling thread is inside a section.
    static bool Inside() noexcept { return depth > 0; }

  private:
    /// The TLS model is given because in a shared object that is loaded at run time, such as a
    /// plug-in, the default model allocates the variable when a thread first uses it.
    [[gnu::tls_model("initial-exec")]] static inline thread_local int depth = 0;
};

/// Treats denormal numbers as 0 during its lifetime. Otherwise the samples of a decaying filter
/// would take a hundred times as long shortly before they reach 0.
class FlushDenormals {
  public:
#if defined(__SSE__)
    // Bit 15 flushes results to zero, bit 6 takes denormal operands as zero.
    VEXA_REALTIME FlushDenormals() noexcept : before(_mm_getcsr()) {
        _mm_setcsr(before | 0x8040U);
    }
    VEXA_REALTIME ~FlushDenormals() {
        _mm_setcsr(before);
    }
#elif defined(__aarch64__)
    // Bit 24 of FPCR (FZ) does both.
    VEXA_REALTIME FlushDenormals() noexcept {
        asm volatile("mrs %0, fpcr" : "=r"(before));
        asm volatile("msr fpcr, %0" ::"r"(before | (1U << 24)));
    }
    VEXA_REALTIME ~FlushDenormals() {
        asm volatile("msr fpcr, %0" ::"r"(before));
    }
#else
    FlushDenormals() noexcept = default;
#endif
    FlushDenormals(const FlushDenormals&) = delete;
    FlushDenormals& operator=(const FlushDenormals&) = delete;

  private:
#if defined(__SSE__)
    unsigned before;
#elif defined(__aarch64__)
    std::uint64_t before;
#endif
};

} // namespace vexa
