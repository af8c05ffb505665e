// SPDX-License-Identifier: GPL-3.0-or-later
// An invoker sends a message when it is used; controls and menu items are invokers.
#pragma once

#include "kits/application/Messenger.h"

#include <memory>

class BHandler;

/// Holds a message and its target. Window thread.
class BInvoker {
  public:
    /// Makes an invoker with a message, which it owns from now on and which may be null.
    explicit BInvoker(BMessage* message) : message(message) {}
    virtual ~BInvoker() = default;

    BMessage* Message() const { return message.get(); }
    /// Sets another message, which the invoker owns from now on.
    void SetMessage(BMessage* next) { message.reset(next); }

    /// Sets the target, which may be destroyed before the invoker.
    virtual void SetTarget(const BHandler* handler) { target = BMessenger(handler); }
    void SetTarget(const BMessenger& messenger) { target = messenger; }
    const BMessenger& Target() const { return target; }

    /// Sends a copy of the message. Returns B_BAD_VALUE if there is no message, B_NO_INIT if there
    /// is no target.
    status_t Invoke() const { return message ? target.SendMessage(*message) : B_BAD_VALUE; }

  private:
    std::unique_ptr<BMessage> message;
    BMessenger target;
};
