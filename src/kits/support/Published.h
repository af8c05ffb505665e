// SPDX-License-Identifier: GPL-3.0-or-later
// Values that one thread replaces while others read them, and the freeing of what was replaced.
//
// A reader never waits: it marks itself as reading, follows a pointer, and takes the mark away.
// A replaced value is freed when every reader that might still hold it has passed a moment at which
// it was not reading (epoch-based reclamation: Fraser, "Practical lock-freedom", 2004,
// section 5.2).
#pragma once

#include "kits/support/RealtimeMark.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

namespace kits {

/// A reader is one role that reads published values: the renderer, the MIDI consumer. It belongs to
/// one thread at a time. Construction and destruction take a lock and stay out of the media thread.
class Reader {
  public:
    Reader();
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    /// While it lives, nothing that its reader got from a Published is freed. Not nested within one
    /// reader. Wait-free; any thread.
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
/// later Retire or CollectRetired. Takes a lock: not from the media thread, and not inside a
/// section.
void Retire(std::function<void()> release);

/// Releases what has become free since. Returns how many things are still held. It runs in the same
/// threads as Retire.
std::size_t CollectRetired();

/// Calls CollectRetired until nothing is held or `limit` has passed; true if nothing is held. It
/// waits, so it is for the window thread, where something must be gone (an add-on's code) before
/// work goes on.
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

    /// Replaces the value; readers see the old one or the new one, whole. It runs in the same
    /// threads as Retire.
    void Publish(T next) { Discard(current.exchange(new T(std::move(next)))); }

  private:
    static void Discard(const T* old) {
        Retire([old] { delete old; });
    }

    std::atomic<const T*> current;
};

} // namespace kits
