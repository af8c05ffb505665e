// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/MidiSystems.h"

#include "kits/midi/MidiRoster.h"
#include "kits/midi/backends/LocalMidi.h"
#include "kits/support/Trace.h"

#include <algorithm>
#include <ctime>
#include <new>
#include <utility>

namespace kits {

namespace {

/// The interval, in seconds, at which systems that do not report changes are asked and missing
/// systems are looked for.
constexpr int kPollInterval = 1;

/// The time for which an existing source may refuse to be connected.
constexpr std::chrono::seconds kPatience{5};
/// The pause after which the next attempt counts as the first: a source that refuses is listed
/// anew, and tried again, at each poll.
constexpr std::chrono::seconds kLongestPause{3 * kPollInterval};

} // namespace

std::shared_ptr<MidiSystems> MidiSystems::Open() {
    static std::weak_ptr<MidiSystems> opened;
    if (std::shared_ptr<MidiSystems> systems = opened.lock())
        return systems;
    auto systems = std::make_shared<MidiSystems>(0);
    for (System& system : systems->systems)
        systems->Revive(system);
    systems->Rescan();
    systems->untold = false;
    systems->thread = std::thread([raw = systems.get()] { raw->Run(); });
    opened = systems;
    return systems;
}

MidiSystems::MidiSystems(int) {
    ::sem_init(&changed, 0, 0);
    systems.emplace_back(OpenJackMidi);
    systems.emplace_back(OpenAlsaMidi);
    if (!LocalSources::Instance().Empty())
        systems.emplace_back(OpenLocalMidi);
}

MidiSystems::~MidiSystems() {
    quitting = true;
    ::sem_post(&changed);
    if (thread.joinable())
        thread.join();
    // No system may call back, and post the semaphore, after its destruction.
    systems.clear();
    ::sem_destroy(&changed);
}

std::string MidiSystems::Fault() {
    const std::lock_guard lock(mutex);
    std::string faults;
    for (const System& system : systems) {
        if (system.backend)
            return "";
        faults += (faults.empty() ? "no MIDI system: " : "; ") + system.fault;
    }
    return faults;
}

/// Closes a system that has ended, and opens one that is missing if that is possible. A system may
/// take its time to answer, so the mutex is free meanwhile.
void MidiSystems::Revive(System& system) {
    {
        const std::lock_guard lock(mutex);
        if (system.backend && system.backend->HasGone())
            Close(system);
        if (system.backend)
            return;
    }
    auto opened = system.open([this] { ::sem_post(&changed); });
    const std::lock_guard lock(mutex);
    if (opened) {
        system.backend = *std::move(opened);
        OpenInput(system);
    } else {
        system.fault = opened.Fault().text;
    }
}

/// Removes a system together with its sources, and ends the notes that they hold.
void MidiSystems::Close(System& system) {
    untold = std::erase_if(sources,
                           [&](const auto& entry) { return entry.second.system == &system; }) > 0 ||
             untold;
    system.backend.reset();
    for (MidiThread::Inlet* inlet : {system.shared, system.chosen}) {
        if (inlet)
            inlet->EndNotes();
    }
}

/// Makes the consumer's port, if there is a consumer.
void MidiSystems::OpenInput(System& system) {
    if (!system.backend || !system.shared)
        return;
    const auto opened = system.backend->OpenInput(inputName, *system.shared, *system.chosen);
    if (!opened) {
        system.fault = opened.Fault().text;
        Close(system);
    }
}

void MidiSystems::Run() {
    while (true) {
        timespec next{};
        ::clock_gettime(CLOCK_MONOTONIC, &next);
        next.tv_sec += kPollInterval;
        ::sem_clockwait(&changed, CLOCK_MONOTONIC, &next);
        if (quitting)
            return;
        try {
            LookAround();
        } catch (const std::bad_alloc&) {
            FPRINTF(stderr, "MidiSystems: no memory to look for sources\n");
        }
    }
}

/// Opens the systems that can be opened, and tells the watchers of sources that have come or gone.
void MidiSystems::LookAround() {
    for (System& system : systems)
        Revive(system);
    Rescan();
    const std::lock_guard lock(mutex);
    if (!std::exchange(untold, false))
        return;
    std::erase_if(watchers, [](const BMessenger& watcher) {
        return watcher.SendMessage(BMessage(B_MIDI_EVENT)) != B_OK;
    });
}

/// Numbers the sources that are new and forgets those that have gone.
void MidiSystems::Rescan() {
    const std::lock_guard lock(mutex);
    std::map<int32, Source> present;
    for (System& system : systems) {
        if (!system.backend)
            continue;
        for (const std::string& name : system.backend->Sources()) {
            const auto known = std::find_if(sources.begin(), sources.end(), [&](const auto& entry) {
                return entry.second.name == name && entry.second.system == &system;
            });
            present[known == sources.end() ? ++lastNumber : known->first] = {name, &system};
        }
    }
    const bool same = present.size() == sources.size() &&
                      std::equal(present.begin(), present.end(), sources.begin(),
                                 [](const auto& a, const auto& b) { return a.first == b.first; });
    sources = std::move(present);
    untold = untold || !same;
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

void MidiSystems::Register(const std::string& name, MidiThread& midi) {
    const std::lock_guard lock(mutex);
    inputName = name;
    for (System& system : systems) {
        system.shared = &midi.NewInlet();
        system.chosen = &midi.NewInlet();
        OpenInput(system);
    }
}

void MidiSystems::Unregister() {
    const std::lock_guard lock(mutex);
    for (System& system : systems) {
        if (system.backend)
            system.backend->CloseInput();
        system.shared = nullptr;
        system.chosen = nullptr;
    }
}

status_t MidiSystems::Connect(int32 number, bool connected) {
    const std::lock_guard lock(mutex);
    const auto source = sources.find(number);
    if (source == sources.end() || !source->second.system->backend)
        return B_ENTRY_NOT_FOUND;
    MidiBackend& system = *source->second.system->backend;
    if (!connected) {
        system.Disconnect(source->second.name);
        return B_OK;
    }
    if (system.Connect(source->second.name)) {
        failing.reset();
        return B_OK;
    }
    const auto now = std::chrono::steady_clock::now();
    if (!failing || failing->source != source->second.name || now - failing->latest > kLongestPause)
        failing = {source->second.name, now, now};
    failing->latest = now;
    if (now - failing->since >= kPatience) {
        failing.reset();
        return B_ERROR;
    }
    // A JACK program shows its ports a moment before it becomes active, and nothing shows when it
    // does.
    sources.erase(source);
    untold = true;
    return B_WOULD_BLOCK;
}

} // namespace kits
