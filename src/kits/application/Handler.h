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

/// Takes messages in. Lives in the window thread, where its hook is called; messages may be sent to
/// it from any thread, by a BMessenger.
class BHandler {
  public:
    explicit BHandler(const char* name = nullptr);
    virtual ~BHandler();
    BHandler(const BHandler&) = delete;
    BHandler& operator=(const BHandler&) = delete;

    /// A message has arrived; what a class does not know it passes on to its base.
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
/// nothing to lock: Lock succeeds at once, and says in the code what a lock would be for.
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
    /// Takes a handler out; returns false if it is not this looper's.
    bool RemoveHandler(BHandler* handler);

  private:
    std::vector<BHandler*> handlers;
};
