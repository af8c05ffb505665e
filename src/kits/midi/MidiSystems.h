// SPDX-License-Identifier: GPL-3.0-or-later
// All MIDI systems of the machine as one: their sources by number, and the ports of this program's
// consumers.
#pragma once

#include "kits/application/Messenger.h"
#include "kits/midi/backends/MidiBackend.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <semaphore.h>

namespace kits {

/// Open as long as somebody holds it. A thread of its own keeps the list of sources up to date, and
/// once a second looks for systems that have gone or did not exist yet: these get the consumer's
/// port when they appear.
class MidiSystems {
  public:
    /// Returns the open instance, or one with the systems that can be opened now.
    static std::shared_ptr<MidiSystems> Open();
    /// Returns why there is no system at present; empty if there is one. Any thread.
    std::string Fault();

    explicit MidiSystems(int passkey);
    ~MidiSystems();
    MidiSystems(const MidiSystems&) = delete;
    MidiSystems& operator=(const MidiSystems&) = delete;

    struct System {
        using Opener = Result<std::unique_ptr<MidiBackend>> (*)(std::function<void()> changed);
        explicit System(Opener open) : open(open) {}

        Opener open;
        /// The system's ports; null while the system does not exist, and `fault` says why.
        std::unique_ptr<MidiBackend> backend;
        std::string fault;
        /// The registered consumer has two inlets: `shared` takes what others connect to its port,
        /// `chosen` takes the sources that Connect connects.
        MidiThread::Inlet* shared = nullptr;
        MidiThread::Inlet* chosen = nullptr;
    };
    struct Source {
        std::string name;
        System* system;
    };
    /// Returns the present sources by their numbers. A source that went and came back has a new
    /// number. Any thread.
    std::map<int32, Source> Sources();

    void Watch(const BMessenger& messenger);

    /// Makes ports named `name` in every system that exists or appears later, whose bytes go to the
    /// thread. There is one consumer at a time.
    void Register(const std::string& name, MidiThread& thread);
    void Unregister();

    /// Connects or disconnects a source. Returns B_WOULD_BLOCK if it cannot be connected yet: it
    /// will be listed anew with another number, and is then to be tried again. Returns B_ERROR when
    /// that has gone on for seconds.
    status_t Connect(int32 source, bool connected);

  private:
    void Revive(System& system);
    void Close(System& system);
    void OpenInput(System& system);
    void Run();
    void LookAround();
    void Rescan();

    std::mutex mutex;
    /// The systems, whose places in memory never change.
    std::list<System> systems;
    std::string inputName;
    std::map<int32, Source> sources;
    int32 lastNumber = 0;
    /// Sources have come or gone, of which the watchers have not been told.
    bool untold = false;
    std::vector<BMessenger> watchers;
    /// The source that could not be connected at the last attempt, and the moments of the first and
    /// the last attempt that failed without a longer pause in between.
    struct Failing {
        std::string source;
        std::chrono::steady_clock::time_point since;
        std::chrono::steady_clock::time_point latest;
    };
    std::optional<Failing> failing;

    sem_t changed;
    std::atomic<bool> quitting{false};
    std::thread thread;
};

} // namespace kits
