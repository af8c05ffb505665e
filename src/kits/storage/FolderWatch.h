// SPDX-License-Identifier: GPL-3.0-or-later
// Noticing that files in some folders have changed.
#pragma once

#include "kits/support/Descriptor.h"

#include <chrono>
#include <filesystem>
#include <vector>

namespace kits {

/// Watches the files directly in some folders: made, written to, moved, removed. A folder may be
/// absent and come, or go. One thread at a time but for Wake.
class FolderWatch {
  public:
    /// How often something may have changed in a folder that cannot be watched, as when it is
    /// absent.
    static constexpr auto kUnwatched = std::chrono::milliseconds(1000);
    /// After a change, so that what follows close on it is noticed together with it.
    static constexpr auto kGathering = std::chrono::milliseconds(30);

    explicit FolderWatch(std::vector<std::filesystem::path> folders);

    /// Whether something may have changed since the last call; the first one says so at once. Waits
    /// for a change for so long, or until Wake is called.
    bool Wait(std::chrono::milliseconds atMost);
    /// Ends the wait, and all later ones. Any thread.
    void Wake() const;

  private:
    struct Place {
        std::filesystem::path path;
        /// Below 0 where it is not watched.
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
