#include "kits/midi/MidiSystems.h"

#include "kits/midi/MidiRoster.h"
#include "kits/midi/backends/LocalMidi.h"

#include <algorithm>
#include <ctime>

namespace kits {

namespace {

/// How often systems that do not tell of changes are asked, in seconds.
constexpr int kPollInterval = 1;

} // namespace

Result<std::shared_ptr<MidiSystems>> MidiSystems::Open() {
    static std::weak_ptr<MidiSystems> opened;
    if (std::shared_ptr<MidiSystems> systems = opened.lock())
        return systems;
    auto systems = std::make_shared<MidiSystems>(0);
    std::string reasons;
    const auto changed = [raw = systems.get()] { ::sem_post(&raw->changed); };
    systems->Open(OpenJackMidi(changed), reasons);
    systems->Open(OpenAlsaMidi(changed), reasons);
    if (!LocalSources::Instance().Empty())
        systems->systems.push_back(OpenLocalMidi());
    if (systems->systems.empty())
        return Error{"no MIDI system: " + reasons};
    systems->Rescan();
    systems->thread = std::thread([raw = systems.get()] { raw->Run(); });
    opened = systems;
    return systems;
}

void MidiSystems::Open(Result<std::unique_ptr<MidiBackend>> opened, std::string& reasons) {
    if (opened)
        systems.push_back(*std::move(opened));
    else
        reasons += (reasons.empty() ? "" : "; ") + opened.Fault().text;
}

MidiSystems::MidiSystems(int) {
    ::sem_init(&changed, 0, 0);
}

MidiSystems::~MidiSystems() {
    quitting = true;
    ::sem_post(&changed);
    if (thread.joinable())
        thread.join();
    // No system may call back any more when the semaphore goes.
    systems.clear();
    ::sem_destroy(&changed);
}

void MidiSystems::Run() {
    while (true) {
        timespec next{};
        ::clock_gettime(CLOCK_MONOTONIC, &next);
        next.tv_sec += kPollInterval;
        ::sem_clockwait(&changed, CLOCK_MONOTONIC, &next);
        if (quitting)
            return;
        if (!Rescan())
            continue;
        const std::lock_guard lock(mutex);
        std::erase_if(watchers, [](const BMessenger& watcher) {
            return watcher.SendMessage(BMessage(B_MIDI_EVENT)) != B_OK;
        });
    }
}

/// Numbers the sources that are new and forgets those that have gone; whether there were any.
bool MidiSystems::Rescan() {
    const std::lock_guard lock(mutex);
    std::map<int32, Source> present;
    for (const std::unique_ptr<MidiBackend>& system : systems) {
        for (const std::string& name : system->Sources()) {
            const auto known = std::find_if(sources.begin(), sources.end(), [&](const auto& entry) {
                return entry.second.name == name && entry.second.system == system.get();
            });
            present[known == sources.end() ? ++lastNumber : known->first] = {name, system.get()};
        }
    }
    const bool same = present.size() == sources.size() &&
                      std::equal(present.begin(), present.end(), sources.begin(),
                                 [](const auto& a, const auto& b) { return a.first == b.first; });
    sources = std::move(present);
    return !same;
}

std::map<int32, MidiSystems::Source> MidiSystems::Sources() {
    Rescan();
    const std::lock_guard lock(mutex);
    return sources;
}

void MidiSystems::Watch(const BMessenger& messenger) {
    const std::lock_guard lock(mutex);
    watchers.push_back(messenger);
}

status_t MidiSystems::Register(const std::string& name, MidiThread& midi) {
    const std::lock_guard lock(mutex);
    status_t status = B_ERROR;
    for (const std::unique_ptr<MidiBackend>& system : systems) {
        if (system->OpenInput(name, midi.NewInlet(), midi.NewInlet()))
            status = B_OK;
    }
    return status;
}

void MidiSystems::Unregister() {
    const std::lock_guard lock(mutex);
    for (const std::unique_ptr<MidiBackend>& system : systems)
        system->CloseInput();
}

status_t MidiSystems::Connect(int32 number, bool connected) {
    const std::lock_guard lock(mutex);
    const auto source = sources.find(number);
    if (source == sources.end())
        return B_ENTRY_NOT_FOUND;
    if (connected)
        return source->second.system->Connect(source->second.name) ? B_OK : B_ERROR;
    source->second.system->Disconnect(source->second.name);
    return B_OK;
}

} // namespace kits
