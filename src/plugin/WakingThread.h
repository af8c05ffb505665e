// SPDX-License-Identifier: GPL-3.0-or-later
// A worker thread for a plug-in whose host lends none.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/SupportDefs.h"

#include <atomic>
#include <functional>
#include <thread>

#include <semaphore.h>

namespace vexa {

/// A thread that sleeps until it is woken, and then works. The destructor waits until work that has
/// begun is done.
class WakingThread {
  public:
    /// `work` throws nothing.
    explicit WakingThread(std::function<void()> work);
    ~WakingThread();
    WakingThread(const WakingThread&) = delete;
    WakingThread& operator=(const WakingThread&) = delete;

    /// Requests one more run of the work. Only one thread calls it, possibly the audio side:
    /// sem_post costs an atomic addition and, if the thread sleeps, the system call that wakes it.
    /// It never blocks.
    VEXA_REALTIME void Wake() noexcept;
    /// Waits until the requested work is done. It is for an audio side that renders offline.
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
