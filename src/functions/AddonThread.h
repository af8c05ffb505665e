// SPDX-License-Identifier: GPL-3.0-or-later
// Compiling an add-on while a formula plays already.
#pragma once

#include "functions/FunctionCompiler.h"
#include "kits/storage/ProgramFolder.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace vexa {

/// Compiles the expression that was last asked for in a thread of its own. All calls belong to one
/// thread, and none but the destructor, which stops the compiler, waits.
class AddonThread {
  public:
    explicit AddonThread(kits::ProgramFolders folders);

    /// Begins to compile the expression. What is under way or ready for another one is stopped and
    /// dropped. The first call starts the thread, and throws std::system_error where there can be
    /// none.
    void Begin(std::string expression);
    /// Stops and drops what is under way or ready: no add-on is wanted any more.
    void Drop();

    /// Returns what became of the expression, once; nothing as long as the compiler runs.
    std::optional<CompileOutcome> Take();
    /// Begin was called, and Take has not given the outcome yet.
    bool Pending() const { return pending; }

  private:
    void Work(const std::stop_token& stop);
    CompileOutcome Compile(const std::string& expression, const std::stop_token& stop,
                           unsigned order) const;

    const kits::ProgramFolders folders;
    bool pending = false;

    std::mutex mutex;
    std::condition_variable_any changed;
    // The expression that is to be compiled, and the last outcome; the mutex guards both.
    std::optional<std::string> wanted;
    std::optional<CompileOutcome> ready;
    /// The number of the last Begin or Drop.
    std::atomic<unsigned> latest{0};
    /// The last member: it ends before the others go.
    std::jthread thread;
};

} // namespace vexa
