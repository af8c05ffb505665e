#include "kits/media/BufferGroup.h"

#include "kits/media/Clock.h"

#include <sys/mman.h>

void BBuffer::Recycle() noexcept {
    inUse = false;
    ::sem_post(&group->returned);
}

BBufferGroup::BBufferGroup(std::size_t size, int32 count, uint32, uint32 lock)
    : locked(lock == B_FULL_LOCK) {
    ::sem_init(&returned, 0, 0);
    for (int32 i = 0; i < count; i++) {
        BBuffer& buffer = *buffers.emplace_back(std::make_unique<BBuffer>());
        buffer.group = this;
        buffer.data = std::make_unique<std::byte[]>(size);
        buffer.size = size;
        // Not granted to ordinary users without limits for it; then the memory may be swapped.
        if (locked && ::mlock(buffer.data.get(), size) != 0)
            locked = false;
    }
}

BBufferGroup::~BBufferGroup() {
    for (const std::unique_ptr<BBuffer>& buffer : buffers) {
        if (locked)
            ::munlock(buffer->data.get(), buffer->size);
    }
    ::sem_destroy(&returned);
}

BBuffer* BBufferGroup::RequestBuffer(std::size_t size, bigtime_t timeout) {
    const bigtime_t limit = kits::MonotonicTime() + timeout;
    do {
        if (BBuffer* buffer = Take(size))
            return buffer;
    } while (kits::WaitUntil(returned, limit));
    return Take(size);
}

BBuffer* BBufferGroup::Take(std::size_t size) noexcept {
    for (const std::unique_ptr<BBuffer>& buffer : buffers) {
        if (buffer->size >= size && !buffer->inUse.exchange(true))
            return buffer.get();
    }
    return nullptr;
}
