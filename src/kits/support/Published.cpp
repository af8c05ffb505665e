// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/Published.h"

#include "kits/support/RealtimeMark.h"

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

namespace kits {

bool HasPassed(const Reader& reader, std::uint64_t epoch) {
    const std::uint64_t since = reader.since.load();
    return since == 0 || since >= epoch;
}

namespace {

struct Retired {
    std::uint64_t epoch;
    std::function<void()> release;
};

/// All readers of the process, and everything that waits to be freed.
struct Registry {
    std::mutex mutex;
    std::vector<const Reader*> readers;
    std::vector<Retired> retired;
    /// A section that began in an epoch below that of a retirement may hold the retired value.
    std::atomic<std::uint64_t> epoch{1};
};

/// Never destroyed: readers and published values may outlive every other static object.
VEXA_REALTIME Registry& TheRegistry() {
    static auto* registry = new Registry;
    return *registry;
}

/// Removes the items that no reader holds any more from the registry, whose lock the caller holds,
/// and returns them.
std::vector<Retired> TakeFree(Registry& registry) {
    const auto held = [&registry](const Retired& item) {
        return !std::all_of(
            registry.readers.begin(), registry.readers.end(),
            [&item](const Reader* reader) { return HasPassed(*reader, item.epoch); });
    };
    const auto firstFree =
        std::stable_partition(registry.retired.begin(), registry.retired.end(), held);
    std::vector<Retired> released(std::make_move_iterator(firstFree),
                                  std::make_move_iterator(registry.retired.end()));
    registry.retired.erase(firstFree, registry.retired.end());
    return released;
}

/// Runs the releases outside the lock, because a release may itself retire something.
void ReleaseAll(const std::vector<Retired>& items) {
    for (const Retired& item : items)
        item.release();
}

} // namespace

Reader::Reader() {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    registry.readers.push_back(this);
}

Reader::~Reader() {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    std::erase(registry.readers, this);
}

// The store of `since` and the reader's later load of a published pointer, the publisher's exchange
// of that pointer and its later load of `since` are all sequentially consistent: either the reader
// sees the new pointer or the publisher sees the reader.
Reader::Section::Section(Reader& reader) noexcept : reader(reader) {
    reader.since.store(TheRegistry().epoch.load());
}

Reader::Section::~Section() {
    reader.since.store(0, std::memory_order_release);
}

void Retire(std::function<void()> release) {
    Registry& registry = TheRegistry();
    std::vector<Retired> released;
    {
        const std::lock_guard lock(registry.mutex);
        registry.retired.push_back({registry.epoch.fetch_add(1) + 1, std::move(release)});
        released = TakeFree(registry);
    }
    ReleaseAll(released);
}

std::size_t CollectRetired() {
    Registry& registry = TheRegistry();
    std::vector<Retired> released;
    std::size_t held = 0;
    {
        const std::lock_guard lock(registry.mutex);
        released = TakeFree(registry);
        held = registry.retired.size();
    }
    ReleaseAll(released);
    return held;
}

bool WaitForReaders(std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (CollectRetired() > 0) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}

} // namespace kits
