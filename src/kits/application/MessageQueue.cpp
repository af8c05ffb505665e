// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/application/MessageQueue.h"

#include "kits/application/Handler.h"

namespace kits {

void HandlerTarget::Post(const BMessage& message) {
    MessageQueue::Instance().Post(weak_from_this(), message);
}

MessageQueue& MessageQueue::Instance() {
    static MessageQueue queue;
    return queue;
}

void MessageQueue::Post(std::weak_ptr<HandlerTarget> target, const BMessage& message) {
    const std::lock_guard lock(mutex);
    entries.push_back({std::move(target), message});
    if (wake)
        wake();
}

void MessageQueue::SetWake(std::function<void()> next) {
    const std::lock_guard lock(mutex);
    wake = std::move(next);
}

void MessageQueue::Deliver() {
    if (delivering)
        return;
    delivering = true;
    while (true) {
        Entry entry;
        {
            const std::lock_guard lock(mutex);
            if (entries.empty())
                break;
            entry = std::move(entries.front());
            entries.pop_front();
        }
        const std::shared_ptr<HandlerTarget> target = entry.target.lock();
        try {
            if (target && target->handler)
                target->handler->MessageReceived(&entry.message);
        } catch (...) {
            Resume(false);
            throw;
        }
    }
    delivering = false;
}

/// Sets `delivering` back, and has the event loop deliver what has been posted meanwhile.
void MessageQueue::Resume(bool before) {
    delivering = before;
    const std::lock_guard lock(mutex);
    if (!delivering && !entries.empty() && wake)
        wake();
}

} // namespace kits
