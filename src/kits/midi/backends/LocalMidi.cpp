// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/backends/LocalMidi.h"

#include "kits/kernel/OS.h"

namespace kits {

LocalSources& LocalSources::Instance() {
    static LocalSources sources;
    return sources;
}

void LocalSources::Add(const std::string& name) {
    const std::lock_guard lock(mutex);
    names.insert(name);
}

void LocalSources::AddOwn(const std::string& name) {
    const std::lock_guard lock(mutex);
    own.insert(name);
}

void LocalSources::Remove(const std::string& name) {
    SetConnected(name, false);
    const std::lock_guard lock(mutex);
    own.erase(name);
    names.erase(name);
}

bool LocalSources::Empty() {
    const std::lock_guard lock(mutex);
    return names.empty();
}

std::vector<std::string> LocalSources::Names() {
    const std::lock_guard lock(mutex);
    return {names.begin(), names.end()};
}

void LocalSources::SetInlet(MidiThread::Inlet* next) {
    const std::lock_guard lock(mutex);
    inlet = next;
    if (!inlet)
        connected.clear();
}

bool LocalSources::SetConnected(const std::string& name, bool wanted) {
    const std::lock_guard lock(mutex);
    if (!names.contains(name))
        return false;
    if (wanted)
        connected.insert(name);
    else if (connected.erase(name) > 0 && inlet)
        inlet->EndNotes();
    return true;
}

void LocalSources::Put(const std::string& name, std::span<const uint8> bytes) {
    const std::lock_guard lock(mutex);
    if (inlet && (connected.contains(name) || own.contains(name)))
        inlet->Put(bytes, ::system_time());
}

namespace {

class LocalMidi final : public MidiBackend {
  public:
    ~LocalMidi() override { LocalMidi::CloseInput(); }

    std::vector<std::string> Sources() override { return LocalSources::Instance().Names(); }

    Result<void> OpenInput(const std::string&, MidiThread::Inlet&,
                           MidiThread::Inlet& chosen) override {
        LocalSources::Instance().SetInlet(&chosen);
        return {};
    }
    void CloseInput() override { LocalSources::Instance().SetInlet(nullptr); }

    Result<void> Connect(const std::string& source) override {
        if (LocalSources::Instance().SetConnected(source, true))
            return {};
        return Error{"there is no MIDI source \"" + source + '"'};
    }
    void Disconnect(const std::string& source) override {
        LocalSources::Instance().SetConnected(source, false);
    }
};

} // namespace

Result<std::unique_ptr<MidiBackend>> OpenLocalMidi(std::function<void()>) {
    return {std::make_unique<LocalMidi>()};
}

} // namespace kits
