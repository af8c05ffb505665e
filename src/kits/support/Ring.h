// SPDX-License-Identifier: GPL-3.0-or-later
// A queue between two threads that never makes either wait.
#pragma once

#include "kits/support/RealtimeMark.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <span>
#include <type_traits>
#include <vector>

namespace kits {

/// A queue, first in, first out, from one writing thread to one reading thread. It is wait-free and
/// allocates only in its constructor. It is Lamport's queue: each index has one writing thread.
template<class T>
class Ring {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    /// Makes room for at least `capacity` items.
    explicit Ring(std::size_t capacity)
        : items(std::bit_ceil(std::max<std::size_t>(capacity, 1))) {}

    /// Returns how many items can be read. The reading thread can read at least so many; in another
    /// there may be fewer by then.
    VEXA_REALTIME std::size_t Readable() const noexcept { return written.load() - read.load(); }
    /// Returns how many items can be written. The writing thread can write at least so many; in
    /// another there may be fewer by then.
    VEXA_REALTIME std::size_t Writable() const noexcept { return items.size() - Readable(); }

    /// Writes all of the items, or returns false and writes none. The writing thread.
    VEXA_REALTIME bool Write(const T* from, std::size_t count) noexcept {
        return Write({{from, count}});
    }

    /// Writes all parts, one after the other, or returns false and writes none. The reader sees all
    /// of them or none. The writing thread.
    VEXA_REALTIME bool Write(std::initializer_list<std::span<const T>> parts) noexcept {
        std::size_t end = written.load(std::memory_order_relaxed);
        std::size_t room = Writable();
        for (const std::span<const T>& part : parts) {
            if (room < part.size())
                return false;
            room -= part.size();
        }
        for (const std::span<const T>& part : parts) {
            Copy(part.size(), end, [&](std::size_t index, std::size_t done, std::size_t n) {
                std::memcpy(&items[index], part.data() + done, n * sizeof(T));
            });
            end += part.size();
        }
        written.store(end);
        return true;
    }

    /// Reads up to `count` items and returns how many. The reading thread.
    VEXA_REALTIME std::size_t Read(T* into, std::size_t count) noexcept {
        count = std::min(count, Readable());
        const std::size_t at = read.load(std::memory_order_relaxed);
        Copy(count, at, [&](std::size_t index, std::size_t done, std::size_t n) {
            std::memcpy(into + done, &items[index], n * sizeof(T));
        });
        read.store(at + count);
        return count;
    }

    /// Skips up to `count` items and returns how many. The reading thread.
    VEXA_REALTIME std::size_t Skip(std::size_t count) noexcept {
        count = std::min(count, Readable());
        read.store(read.load(std::memory_order_relaxed) + count);
        return count;
    }

  private:
    /// Calls `part` for the one or two contiguous stretches that hold the `count` items from `at`
    /// on.
    template<class Part>
    void Copy(std::size_t count, std::size_t at, const Part& part) noexcept {
        const std::size_t index = at & (items.size() - 1);
        const std::size_t first = std::min(count, items.size() - index);
        part(index, 0, first);
        if (first < count)
            part(0, first, count - first);
    }

    std::vector<T> items;
    /// Counters that only grow; an item's index is its counter modulo the size, a power of two.
    std::atomic<std::size_t> written{0};
    std::atomic<std::size_t> read{0};
};

} // namespace kits
