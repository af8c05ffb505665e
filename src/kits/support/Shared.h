// SPDX-License-Identifier: GPL-3.0-or-later
// A number that several threads read and write without a lock.
#pragma once

#include "kits/support/RealtimeMark.h"

#include <atomic>

namespace kits {

/// A 32- or 64-bit value (or a flag) shared between threads. Reading acquires and writing releases,
/// so a thread that reads a value sees everything that its writer wrote before it; on x86-64 both
/// are plain moves. Copying copies the value, not the sharing. Any thread.
template<class T>
class Shared {
  public:
    Shared() = default;
    Shared(T initial) : value(initial) {}
    Shared(const Shared& other) : value(T(other)) {}
    Shared& operator=(const Shared& other) {
        *this = T(other);
        return *this;
    }

    VEXA_REALTIME Shared& operator=(T next) noexcept {
        value.store(next, std::memory_order_release);
        return *this;
    }
    VEXA_REALTIME operator T() const noexcept { return value.load(std::memory_order_acquire); }

  private:
    static_assert(std::atomic<T>::is_always_lock_free);
    std::atomic<T> value{};
};

} // namespace kits
