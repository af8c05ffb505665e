// SPDX-License-Identifier: GPL-3.0-or-later
// A handler gets messages; a looper is what handlers belong to.
#pragma once

#include "kits/application/Messenger.h"

#include <memory>
#include <string>
#include <vector>

namespace kits {
class HandlerTarget;
}

class BLooper;

/// Receives messages. It lives in the window thread, where its hook is called; any thread may send
/// it messages through a BMessenger.
class BHandler {
  public:
    explicit BHandler(const char* name = nullptr);
    virtual ~BHandler();
    BHandler(const BHandler&) = delete;
    BHandler& operator=(const BHandler&) = delete;

    /// Called when a message has arrived; a class passes messages that it does not know on to its
    /// base class.
    virtual void MessageReceived(BMessage* message);

    const char* Name() const { return name.c_str(); }
    void SetName(const char* name);
    /// Returns the looper that the handler belongs to, or null.
    BLooper* Looper() const { return looper; }

  private:
    friend class BLooper;
    friend class BMessenger;

    std::string name;
    BLooper* looper = nullptr;
    std::shared_ptr<kits::HandlerTarget> target;
};

/// A handler that others belong to. All loopers share the window thread and its queue, so there is
/// nothing to lock: Lock succeeds at once, and only marks in the code what a lock would protect.
class BLooper : public BHandler {
  public:
    explicit BLooper(const char* name = nullptr);
    ~BLooper() override;

    bool Lock() { return true; }
    void Unlock() {}

    /// Sends a message to the looper itself, which handles it later. Any thread.
    void PostMessage(const BMessage& message);
    void PostMessage(uint32 what) { PostMessage(BMessage(what)); }

    void AddHandler(BHandler* handler);
    /// Removes a handler; returns false if it does not belong to this looper.
    bool RemoveHandler(BHandler* handler);

  private:
    std::vector<BHandler*> handlers;
};
