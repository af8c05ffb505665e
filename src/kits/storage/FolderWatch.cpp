// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/FolderWatch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace kits {

namespace {

constexpr std::uint32_t kEvents = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM |
                                  IN_DELETE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ATTRIB |
                                  IN_ONLYDIR;

/// Waits until one of the descriptors is readable, without reading it; returns false after
/// `atMost`.
bool Poll(int first, int second, std::chrono::milliseconds atMost) {
    // poll ignores a descriptor below 0.
    std::array<pollfd, 2> both{{{first, POLLIN, 0}, {second, POLLIN, 0}}};
    return ::poll(both.data(), both.size(), static_cast<int>(atMost.count())) > 0;
}

} // namespace

FolderWatch::FolderWatch(std::vector<std::filesystem::path> folders)
    : events(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      waking(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    std::sort(folders.begin(), folders.end());
    folders.erase(std::unique(folders.begin(), folders.end()), folders.end());
    for (std::filesystem::path& folder : folders)
        places.push_back({std::move(folder)});
}

void FolderWatch::Wake() const {
    ::eventfd_write(waking.Number(), 1);
}

bool FolderWatch::Wait(std::chrono::milliseconds atMost) {
    const auto end = std::chrono::steady_clock::now() + atMost;
    for (;;) {
        const auto now = std::chrono::steady_clock::now();
        const bool due = now - looked >= kInterval;
        if (due)
            looked = now;
        if (Observe(due))
            return true;
        const auto until = std::min(end, looked + kInterval);
        // Rounded up, so that the end has been reached afterwards.
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(until - now);
        if (Poll(events.Number(), waking.Number(), std::max(wait, wait.zero()))) {
            if (Poll(waking.Number(), -1, wait.zero()))
                return false;
            Poll(waking.Number(), -1, kGathering);
            Drain();
            return true;
        }
        if (std::chrono::steady_clock::now() >= end)
            return false;
    }
}

/// Watches the folders that are not watched yet, and with `again` those whose path names another
/// folder since a parent was moved, which no event tells. Returns true if any has come or gone, and
/// with `again` if any is there that cannot be watched.
bool FolderWatch::Observe(bool again) {
    bool found = false;
    for (Place& place : places) {
        if (place.watch >= 0 && !again)
            continue;
        // The system has one number for a folder, however often it is added.
        int watch = ::inotify_add_watch(events.Number(), place.path.c_str(), kEvents);
        if (watch < 0)
            watch = errno == ENOENT || errno == ENOTDIR ? kAbsent : kUnwatched;
        if (watch == place.watch && !(again && watch == kUnwatched))
            continue;
        if (place.watch >= 0)
            ::inotify_rm_watch(events.Number(), place.watch);
        place.watch = watch;
        found = true;
    }
    return found;
}

/// Takes all events; a folder that has been removed or moved is no longer watched.
void FolderWatch::Drain() {
    alignas(inotify_event) std::array<char, 16384> bytes;
    ssize_t count;
    while ((count = ::read(events.Number(), bytes.data(), bytes.size())) > 0) {
        for (const char* at = bytes.data(); at < bytes.data() + count;) {
            inotify_event event;
            std::memcpy(&event, at, sizeof event);
            at += sizeof event + event.len;
            for (Place& place : places) {
                if (place.watch != event.wd || !(event.mask & (IN_IGNORED | IN_MOVE_SELF)))
                    continue;
                if (event.mask & IN_MOVE_SELF)
                    ::inotify_rm_watch(events.Number(), place.watch);
                place.watch = kAbsent;
            }
        }
    }
}

} // namespace kits
