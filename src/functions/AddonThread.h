// SPDX-License-Identifier: GPL-3.0-or-later
// Compiles an add-on while a formula is already playing.
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

/// Compiles the expression of the latest Begin in a thread of its own. All calls belong to one
/// thread. None of them waits except the destructor, which stops the compiler.
class AddonThread {
  public:
    explicit AddonThread(kits::ProgramFolders folders);

    /// Begins to compile the expression. A compilation under way is stopped, and an earlier outcome
    /// is dropped. The first call starts the thread, and throws std::system_error if that fails.
    void Begin(std::string expression);
    /// Stops a compilation under way and drops an outcome that is ready.
    void Drop();

    /// Returns the outcome, once; nothing while the compiler runs.
    std::optional<CompileOutcome> Take();
    /// Returns true if Begin was called and Take has not returned the outcome yet.
    bool Pending() const { return pending; }

  private:
    void Work(const std::stop_token& stop);
    CompileOutcome Compile(const std::string& expression, const std::stop_token& stop,
                           unsigned order) const;

    const kits::ProgramFolders folders;
    bool pending = false;

    std::mutex mutex;
    std::condition_variable_any changed;
    // The expression to compile, and the latest outcome. The mutex guards both.
    std::optional<std::string> wanted;
    std::optional<CompileOutcome> ready;
    /// Counts the calls of Begin and Drop, so that an outdated outcome is recognised.
    std::atomic<unsigned> latest{0};
    /// The last member, so that the thread ends before the others are destroyed.
    std::jthread thread;
};

} // namespace vexa
