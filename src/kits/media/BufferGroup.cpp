// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/BufferGroup.h"

#include "kits/kernel/OS.h"
#include "kits/media/Clock.h"

#include <algorithm>

#include <sys/mman.h>

void BBuffer::Recycle() noexcept {
    inUse = false;
    ::sem_post(&group->available);
}

BBufferGroup::BBufferGroup(std::size_t size, int32 count, uint32, uint32 lock)
    : size(size), locked(lock == B_FULL_LOCK) {
    ::sem_init(&available, 0, static_cast<unsigned>(std::max(count, 0)));
    for (int32 i = 0; i < count; i++) {
        BBuffer& buffer = *buffers.emplace_back(std::make_unique<BBuffer>());
        buffer.group = this;
        buffer.data = std::make_unique<std::byte[]>(size);
        buffer.size = size;
        // Ordinary users may not do this without a limit for locked memory; the memory may then be
        // swapped.
        if (locked && ::mlock(buffer.data.get(), size) != 0)
            locked = false;
    }
}

BBufferGroup::~BBufferGroup() {
    for (const std::unique_ptr<BBuffer>& buffer : buffers) {
        if (locked)
            ::munlock(buffer->data.get(), buffer->size);
    }
    ::sem_destroy(&available);
}

BBuffer* BBufferGroup::RequestBuffer(std::size_t wanted, bigtime_t timeout) {
    if (wanted > size || !kits::WaitUntil(available, system_time() + timeout))
        return nullptr;
    // One buffer is certain, but another thread may take the one that is being looked at.
    while (true) {
        for (const std::unique_ptr<BBuffer>& buffer : buffers) {
            if (!buffer->inUse.exchange(true))
                return buffer.get();
        }
    }
}
