// SPDX-License-Identifier: GPL-3.0-or-later
// Noticing that files in some folders have changed.
#pragma once

#include "kits/support/Descriptor.h"

#include <chrono>
#include <filesystem>
#include <vector>

namespace kits {

/// Watches the files directly in some folders for what is made, written to, moved or removed. A
/// folder may be absent and come, or go. All but Wake is for one thread at a time.
class FolderWatch {
  public:
    /// A folder that cannot be watched, as when it is absent, is taken to have changed so often.
    static constexpr auto kUnwatched = std::chrono::milliseconds(1000);
    /// The time that Wait goes on after a change, so that what follows close on it is noticed
    /// together with it.
    static constexpr auto kGathering = std::chrono::milliseconds(30);

    explicit FolderWatch(std::vector<std::filesystem::path> folders);

    /// Waits for a change for so long, or until Wake is called. True where something may have
    /// changed since the last call; the first one says so at once.
    bool Wait(std::chrono::milliseconds atMost);
    /// Ends the wait that is under way, and all later ones. Any thread.
    void Wake() const;

  private:
    struct Place {
        std::filesystem::path path;
        /// The system's number of the watch, below 0 where the folder is not watched.
        int watch = -1;
    };

    bool Observe();
    void Drain();

    std::vector<Place> places;
    Descriptor events;
    Descriptor waking;
    std::chrono::steady_clock::time_point looked;
};

} // namespace kits
