// SPDX-License-Identifier: GPL-3.0-or-later
// The queue holds messages on their way into the window thread.
#pragma once

#include "kits/application/Messenger.h"

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

class BHandler;

namespace kits {

/// Messages find their handler by this, as it may go before they arrive.
class HandlerTarget : public MessageTarget, public std::enable_shared_from_this<HandlerTarget> {
  public:
    explicit HandlerTarget(BHandler* handler) : handler(handler) {}
    void Post(const BMessage& message) override;

    /// The handler that takes the messages; null once it has gone. Window thread.
    BHandler* handler;
};

/// The one queue of the window thread. Any thread posts; the event loop of the window thread
/// delivers, one message at a time.
class MessageQueue {
  public:
    static MessageQueue& Instance();

    void Post(std::weak_ptr<HandlerTarget> target, const BMessage& message);

    /// Sets what is called after a post, by the thread that posts, so that the event loop comes to
    /// deliver. Null is for a loop that asks by itself.
    void SetWake(std::function<void()> wake);

    /// Delivers what has been posted, in order. While a message is being handled (its handler may
    /// wait for a person in an alert) nothing else is delivered. An exception of the handler passes
    /// through; what was posted behind comes with the next call. Window thread.
    void Deliver();

  private:
    struct Entry {
        std::weak_ptr<HandlerTarget> target;
        BMessage message;
    };
    std::mutex mutex;
    std::deque<Entry> entries;
    std::function<void()> wake;
    bool delivering = false;
};

} // namespace kits
