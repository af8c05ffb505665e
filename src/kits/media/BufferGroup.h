// SPDX-License-Identifier: GPL-3.0-or-later
// The memory that media data travel in.
#pragma once

#include "kits/media/MediaDefs.h"
#include "kits/support/RealtimeMark.h"

#include <atomic>
#include <memory>
#include <vector>

#include <semaphore.h>

enum { B_ANY_ADDRESS = 0, B_NO_LOCK = 0, B_FULL_LOCK = 2 };

class BBufferGroup;

/// A piece of memory with a header. It belongs to whoever requested it until Recycle.
class BBuffer {
  public:
    VEXA_REALTIME void* Data() { return data.get(); }
    VEXA_REALTIME media_header* Header() { return &header; }

    /// Returns the buffer to its group. Wait-free; any thread.
    VEXA_REALTIME void Recycle() noexcept;

  private:
    friend class BBufferGroup;
    BBufferGroup* group = nullptr;
    std::unique_ptr<std::byte[]> data;
    std::size_t size = 0;
    media_header header;
    std::atomic<bool> inUse{false};
};

/// A group of buffers of one size, allocated once and reused.
class BBufferGroup {
  public:
    /// Allocates `count` buffers of `size` bytes. `lock` B_FULL_LOCK keeps them in physical memory
    /// where the system allows it; `placement` is always B_ANY_ADDRESS.
    BBufferGroup(std::size_t size, int32 count, uint32 placement = B_ANY_ADDRESS,
                 uint32 lock = B_NO_LOCK);
    /// All buffers must have been recycled before.
    ~BBufferGroup();
    BBufferGroup(const BBufferGroup&) = delete;
    BBufferGroup& operator=(const BBufferGroup&) = delete;

    int32 CountBuffers() const { return static_cast<int32>(buffers.size()); }

    /// Returns a buffer of at least `size` bytes. Waits for one at most `timeout` microseconds;
    /// returns null if none became free or if the group's buffers are smaller. Media thread.
    VEXA_REALTIME BBuffer* RequestBuffer(std::size_t size, bigtime_t timeout);

  private:
    friend class BBuffer;
    std::vector<std::unique_ptr<BBuffer>> buffers;
    std::size_t size;
    bool locked;
    /// Counts the buffers that are not in use.
    sem_t available;
};
