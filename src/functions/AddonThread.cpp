// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/AddonThread.h"

#include <exception>
#include <utility>

namespace vexa {

AddonThread::AddonThread(kits::ProgramFolders folders) : folders(std::move(folders)) {}

void AddonThread::Begin(std::string expression) {
    Drop();
    if (!thread.joinable())
        thread = std::jthread([this](const std::stop_token& stop) { Work(stop); });
    {
        const std::lock_guard lock(mutex);
        wanted = std::move(expression);
    }
    pending = true;
    changed.notify_one();
}

void AddonThread::Drop() {
    const std::lock_guard lock(mutex);
    latest++;
    wanted.reset();
    ready.reset();
    pending = false;
}

std::optional<CompileOutcome> AddonThread::Take() {
    const std::lock_guard lock(mutex);
    if (ready)
        pending = false;
    return std::exchange(ready, std::nullopt);
}

void AddonThread::Work(const std::stop_token& stop) {
    std::unique_lock lock(mutex);
    while (changed.wait(lock, stop, [this] { return wanted.has_value(); })) {
        const std::string expression = *std::exchange(wanted, std::nullopt);
        const unsigned order = latest;
        lock.unlock();
        CompileOutcome outcome = Compile(expression, stop, order);
        lock.lock();
        if (latest == order)
            ready = std::move(outcome);
    }
}

CompileOutcome AddonThread::Compile(const std::string& expression, const std::stop_token& stop,
                                    unsigned order) const try {
    return FunctionCompiler(folders).Compile(
        expression, [&] { return stop.stop_requested() || latest != order; });
} catch (const std::exception& fault) {
    return {{{std::string("no add-on: ") + fault.what()}, B_ERROR}, {}};
}

} // namespace vexa
