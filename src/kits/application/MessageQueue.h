// SPDX-License-Identifier: GPL-3.0-or-later
// The queue of messages on their way into the window thread.
#pragma once

#include "kits/application/Messenger.h"

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

class BHandler;

namespace kits {

/// Leads a message to its handler, which may be destroyed before the message arrives.
class HandlerTarget : public MessageTarget, public std::enable_shared_from_this<HandlerTarget> {
  public:
    explicit HandlerTarget(BHandler* handler) : handler(handler) {}
    void Post(const BMessage& message) override;
    BHandler* Handler() const override { return handler; }

    /// The handler that takes the messages; null once it has been destroyed. Window thread.
    BHandler* handler;
};

/// The one queue of the window thread. Any thread posts; the event loop of the window thread
/// delivers, one message at a time.
class MessageQueue {
  public:
    static MessageQueue& Instance();

    void Post(std::weak_ptr<HandlerTarget> target, const BMessage& message);

    /// Sets a function that is called after each post, in the thread that posts, to make the event
    /// loop deliver. Null is for a loop that polls.
    void SetWake(std::function<void()> wake);

    /// Delivers the posted messages in order. While a message is being handled (its handler may
    /// wait for a person in an alert), no other is delivered. An exception of the handler passes
    /// through; the messages behind it come with the next call. Window thread.
    void Deliver();

    /// While an object exists, nothing is delivered, whatever began it: a message, a key or a
    /// pulse. Window thread.
    class Pause {
      public:
        Pause() : before(std::exchange(Instance().delivering, true)) {}
        ~Pause() { Instance().Resume(before); }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

      private:
        const bool before;
    };

  private:
    void Resume(bool before);

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
