// SPDX-License-Identifier: GPL-3.0-or-later
// The sources inside this program, as one more MIDI system.
#pragma once

#include "kits/midi/backends/MidiBackend.h"

#include <mutex>
#include <set>
#include <span>
#include <string>

namespace kits {

/// Knows all sources of this program by name, and the inlet that the connected ones write to. Any
/// thread.
class LocalSources {
  public:
    static LocalSources& Instance();

    void Add(const std::string& name);
    /// Adds a source that no list shows and that is always connected.
    void AddOwn(const std::string& name);
    void Remove(const std::string& name);
    bool Empty();
    std::vector<std::string> Names();

    /// Sets where the sources' bytes go; null if there is no consumer any more.
    void SetInlet(MidiThread::Inlet* next);
    /// Connects or disconnects a source; returns false for an unknown one.
    bool SetConnected(const std::string& name, bool connected);
    /// Puts bytes of the source into the inlet; does nothing unless the source is connected.
    void Put(const std::string& name, std::span<const uint8> bytes);

  private:
    std::mutex mutex;
    std::set<std::string> names;
    std::set<std::string> own;
    std::set<std::string> connected;
    MidiThread::Inlet* inlet = nullptr;
};

/// Opens LocalSources as a system beside JACK and ALSA; `changed` is called when sources come or
/// go.
Result<std::unique_ptr<MidiBackend>> OpenLocalMidi(std::function<void()> changed);

} // namespace kits
