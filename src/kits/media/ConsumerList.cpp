// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/ConsumerList.h"

#include <array>
#include <atomic>

namespace kits {

namespace {

/// The consumer with an open connection at each control port. The media threads look it up. Port
/// numbers grow through the life of a process, but consumers are few.
struct ConsumerEntry {
    std::atomic<int32> port{-1};
    std::atomic<BBufferConsumer*> consumer{nullptr};
};
std::array<ConsumerEntry, 8> consumers;

} // namespace

BBufferConsumer* ConsumerOf(const media_destination& destination) noexcept {
    for (const ConsumerEntry& entry : consumers) {
        if (entry.port == destination.port)
            return entry.consumer;
    }
    return nullptr;
}

bool ListConsumer(int32 port, BBufferConsumer* consumer) {
    for (ConsumerEntry& entry : consumers) {
        if (entry.consumer.load() == nullptr) {
            entry.port = port;
            entry.consumer = consumer;
            return true;
        }
    }
    return false;
}

void UnlistConsumer(const BBufferConsumer* consumer) {
    for (ConsumerEntry& entry : consumers) {
        if (entry.consumer.load() == consumer) {
            entry.consumer = nullptr;
            entry.port = -1;
        }
    }
}

} // namespace kits
