// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/WakingThread.h"

#include <utility>

namespace vexa {

WakingThread::WakingThread(std::function<void()> what) : work(std::move(what)) {
    sem_init(&woken, 0, 0);
    thread = std::thread([this] { Run(); });
}

WakingThread::~WakingThread() {
    ending = true;
    sem_post(&woken);
    thread.join();
    sem_destroy(&woken);
}

void WakingThread::Wake() noexcept {
    asked++;
    sem_post(&woken);
}

void WakingThread::Await() const noexcept {
    for (uint32 until = asked, now; (now = done) != until;)
        done.wait(now);
}

void WakingThread::Run() {
    while (!ending) {
        // A signal may interrupt the wait; the loop then only checks again.
        sem_wait(&woken);
        const uint32 now = asked;
        if (now == done)
            continue;
        work();
        done = now;
        done.notify_all();
    }
}

} // namespace vexa
