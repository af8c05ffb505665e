// SPDX-License-Identifier: GPL-3.0-or-later
// Watches folders for changes of their files.
#pragma once

#include "kits/support/Descriptor.h"

#include <chrono>
#include <filesystem>
#include <vector>

namespace kits {

/// Watches the files directly in some folders for being made, written to, moved or removed, and for
/// other rights and times. A folder may be absent, may appear or disappear, and its path may come
/// to name another one. All functions but Wake are for one thread at a time.
class FolderWatch {
  public:
    /// The interval at which paths are looked up again, and at which a folder that is there but
    /// cannot be watched is assumed to have changed.
    static constexpr auto kInterval = std::chrono::milliseconds(1000);
    /// How long Wait continues after a change, so that changes that follow closely are noticed
    /// together with it.
    static constexpr auto kGathering = std::chrono::milliseconds(30);

    explicit FolderWatch(std::vector<std::filesystem::path> folders);

    /// Waits at most `atMost` for a change, or until Wake is called. Returns true if something may
    /// have changed since the last call; the first call returns true at once.
    bool Wait(std::chrono::milliseconds atMost);
    /// Ends the present wait and makes all later ones return at once. Any thread.
    void Wake() const;

  private:
    struct Place {
        std::filesystem::path path;
        /// The system's number of the watch, or one of the following.
        int watch = kNew;
    };
    /// No folder has these as its watch: before the first look, if there is none, and if it cannot
    /// be watched.
    static constexpr int kNew = -1, kAbsent = -2, kUnwatched = -3;

    bool Observe(bool again);
    void Drain();

    std::vector<Place> places;
    Descriptor events;
    Descriptor waking;
    std::chrono::steady_clock::time_point looked;
};

} // namespace kits
