// All MIDI systems of the machine as one: their sources by number, and the ports of our consumers.
#pragma once

#include "kits/application/Messenger.h"
#include "kits/midi/backends/MidiBackend.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <semaphore.h>

namespace kits {

/// Open as long as somebody holds it. A thread of its own looks after the sources.
class MidiSystems {
  public:
    /// The open ones, or those that can be opened; the error says why there is none.
    static Result<std::shared_ptr<MidiSystems>> Open();

    explicit MidiSystems(int passkey);
    ~MidiSystems();
    MidiSystems(const MidiSystems&) = delete;
    MidiSystems& operator=(const MidiSystems&) = delete;

    struct Source {
        std::string name;
        MidiBackend* system;
    };
    /// By number, as they are now. Any thread.
    std::map<int32, Source> Sources();

    void Watch(const BMessenger& messenger);

    /// Ports named `name` in every system, whose bytes go to the thread. One consumer at a time.
    /// B_ERROR where no system has a port for it.
    status_t Register(const std::string& name, MidiThread& thread);
    void Unregister();

    status_t Connect(int32 source, bool connected);

  private:
    void Open(Result<std::unique_ptr<MidiBackend>> opened, std::string& reasons);
    void Run();
    bool Rescan();

    std::mutex mutex;
    std::vector<std::unique_ptr<MidiBackend>> systems;
    std::map<int32, Source> sources;
    int32 lastNumber = 0;
    std::vector<BMessenger> watchers;

    sem_t changed;
    std::atomic<bool> quitting{false};
    std::thread thread;
};

} // namespace kits
