// SPDX-License-Identifier: GPL-3.0-or-later
// This works for a plug-in whose host lends no thread for it.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/SupportDefs.h"

#include <atomic>
#include <functional>
#include <thread>

#include <semaphore.h>

namespace vexa {

/// A thread that sleeps until it is woken, and then works. The destructor waits for work that has
/// begun.
class WakingThread {
  public:
    /// `work` throws nothing.
    explicit WakingThread(std::function<void()> work);
    ~WakingThread();
    WakingThread(const WakingThread&) = delete;
    WakingThread& operator=(const WakingThread&) = delete;

    /// Has the work done once more. One thread calls it, which may be the audio side: sem_post
    /// costs an atomic addition and, where the thread sleeps, the system's call that wakes it. It
    /// never waits.
    VEXA_REALTIME void Wake() noexcept;
    /// Waits until that is done: for an audio side that nobody listens to.
    VEXA_REALTIME void Await() const noexcept;

  private:
    void Run();

    const std::function<void()> work;
    sem_t woken{};
    std::atomic<uint32> asked{0}, done{0};
    std::atomic<bool> ending{false};
    std::thread thread;
};

} // namespace vexa
