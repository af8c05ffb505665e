// SPDX-License-Identifier: GPL-3.0-or-later
// A messenger sends messages to a target, from any thread.
#pragma once

#include "kits/support/Message.h"

#include <memory>
#include <utility>

class BHandler;

namespace kits {

/// A receiver of messages.
class MessageTarget {
  public:
    virtual ~MessageTarget() = default;
    /// Takes a copy of the message, which the target handles later in its own thread. Any thread.
    virtual void Post(const BMessage& message) = 0;
    /// Returns the handler that takes the messages, or null. Window thread.
    virtual BHandler* Handler() const { return nullptr; }
};

} // namespace kits

/// A reference to a target, which may be destroyed before the messenger. It is a value that can be
/// copied. Any thread.
class BMessenger {
  public:
    BMessenger() = default;
    explicit BMessenger(std::weak_ptr<kits::MessageTarget> target) : target(std::move(target)) {}

    /// Makes a messenger to a handler; null makes one without a target.
    explicit BMessenger(const BHandler* handler);

    bool IsValid() const { return !target.expired(); }
    /// Returns the target if it is a handler that still exists, or null. Window thread.
    BHandler* Target() const {
        const std::shared_ptr<kits::MessageTarget> alive = target.lock();
        return alive ? alive->Handler() : nullptr;
    }
    /// Returns B_OK, or B_NO_INIT if the target does not exist any more.
    status_t SendMessage(const BMessage& message) const {
        const std::shared_ptr<kits::MessageTarget> alive = target.lock();
        if (!alive)
            return B_NO_INIT;
        alive->Post(message);
        return B_OK;
    }

  private:
    std::weak_ptr<kits::MessageTarget> target;
};
