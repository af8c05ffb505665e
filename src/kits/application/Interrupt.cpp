// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/application/Interrupt.h"

#include <atomic>
#include <ctime>
#include <iterator>
#include <type_traits>

namespace kits {

namespace {

std::atomic<int> received{0};
/// The second, by the system's clock, at which the first signal was received; below 0 if none was.
std::atomic<std::time_t> since{-1};
std::atomic<int> completions{0};
static_assert(std::atomic<int>::is_always_lock_free &&
                  std::atomic<std::time_t>::is_always_lock_free,
              "a signal handler must not wait");

extern "C" void NoteSignal(int number) {
    received.store(number);
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    std::time_t first = -1;
    if (since.compare_exchange_strong(first, now.tv_sec) ||
        now.tv_sec - first < Interrupt::kPatience.count() || completions.load() > 0)
        return;
    std::signal(number, SIG_DFL);
    std::raise(number);
}

} // namespace

Interrupt::Interrupt() {
    static_assert(std::size(kSignals) == std::extent_v<decltype(before)>);
    received.store(0);
    since.store(-1);
    struct sigaction noting {};
    noting.sa_handler = NoteSignal;
    // SA_RESTART, for libraries that do not expect their system calls to be interrupted.
    noting.sa_flags = SA_RESTART;
    ::sigemptyset(&noting.sa_mask);
    for (std::size_t i = 0; i < std::size(kSignals); i++) {
        ::sigaction(kSignals[i], nullptr, &before[i]);
        if (before[i].sa_handler != SIG_IGN)
            ::sigaction(kSignals[i], &noting, nullptr);
    }
}

Interrupt::~Interrupt() {
    for (std::size_t i = 0; i < std::size(kSignals); i++)
        ::sigaction(kSignals[i], &before[i], nullptr);
}

bool Interrupt::Pending() {
    return received.load() != 0;
}

int Interrupt::Signal() const {
    return received.load();
}

Interrupt::Completion::Completion() {
    completions.fetch_add(1);
}

Interrupt::Completion::~Completion() {
    completions.fetch_sub(1);
}

} // namespace kits
