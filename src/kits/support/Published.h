// SPDX-License-Identifier: GPL-3.0-or-later
// Values that one thread replaces while others read them, and the freeing of what was replaced.
//
// A reader never waits: it marks itself as reading, follows a pointer, and clears the mark. A
// replaced value is freed when every reader that might still hold it has since been seen not
// reading (epoch-based reclamation: Fraser, "Practical lock-freedom", 2004, section 5.2).
#pragma once

#include "kits/support/RealtimeMark.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

namespace kits {

/// A reader is one role that reads published values, such as the renderer or the MIDI consumer. It
/// belongs to one thread at a time. Construction and destruction take a lock, so they must not
/// happen in the media thread.
class Reader {
  public:
    Reader();
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    /// While a section exists, nothing that its reader got from a Published is freed. Sections of
    /// one reader cannot be nested. Wait-free; any thread.
    class Section {
      public:
        VEXA_REALTIME explicit Section(Reader& reader) noexcept;
        VEXA_REALTIME ~Section();
        Section(const Section&) = delete;
        Section& operator=(const Section&) = delete;

      private:
        Reader& reader;
    };

  private:
    friend bool HasPassed(const Reader& reader, std::uint64_t epoch);
    /// The epoch in which the present section began; 0 outside of sections.
    std::atomic<std::uint64_t> since{0};
};

/// Calls `release` as soon as no reader can hold what was replaced before this call: now, or in a
/// later Retire or CollectRetired. It takes a lock, so it must not be called in the media thread or
/// inside a section.
void Retire(std::function<void()> release);

/// Releases what has become free. Returns how many retired things are still held. For the same
/// threads as Retire.
std::size_t CollectRetired();

/// Calls CollectRetired until nothing is held or `limit` has passed; returns true if nothing is
/// held. It waits, so it is for the window thread, when something such as an add-on's code must be
/// gone before work can continue.
bool WaitForReaders(std::chrono::milliseconds limit);

/// A value that one thread replaces as a whole while others read it.
template<class T>
class Published {
  public:
    explicit Published(T initial) : current(new T(std::move(initial))) {}
    ~Published() { Discard(current.load()); }
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    /// Returns the value. It is valid until the caller's Reader::Section ends or, in the thread
    /// that publishes, until the next Publish. Wait-free; any thread.
    VEXA_REALTIME const T& Get() const noexcept { return *current.load(); }

    /// Replaces the value; readers see either the old one or the new one, whole. For the same
    /// threads as Retire.
    void Publish(T next) { Discard(current.exchange(new T(std::move(next)))); }

  private:
    static void Discard(const T* old) {
        Retire([old] { delete old; });
    }

    std::atomic<const T*> current;
};

} // namespace kits
