// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/kernel/OS.h"
#include "kits/midi/backends/MidiBackend.h"
#include "kits/support/ClientName.h"

#include <algorithm>
#include <map>
#include <mutex>

#include <rtmidi/RtMidi.h>
#include <unistd.h>

namespace kits {

namespace {

/// RtMidi tells its faults by exceptions; a warning is none.
void Ignore(RtMidiError::Type, const std::string&, void*) {}

std::unique_ptr<RtMidiIn> OpenClient() {
    auto midi = std::make_unique<RtMidiIn>(RtMidi::LINUX_ALSA, ClientName());
    // System exclusive data and real-time bytes too: the decoder knows what to do with them.
    midi->ignoreTypes(false, false, false);
    return midi;
}

/// Bytes come in RtMidi's own thread, one per client; the clients that share an inlet write it
/// under a lock that only these threads take.
class AlsaMidi final : public MidiBackend {
  public:
    AlsaMidi() : input(OpenClient()) { input->setErrorCallback(Ignore); }
    ~AlsaMidi() override { CloseInput(); }

    std::vector<std::string> Sources() override {
        std::vector<std::string> names;
        for (unsigned i = 0; i < input->getPortCount(); i++)
            names.push_back(input->getPortName(i));
        std::erase_if(names,
                      [](const std::string& name) { return name.starts_with(ClientName() + ":"); });
        EndThoseThatHaveGone(names);
        return names;
    }

    Result<void> OpenInput(const std::string& name, MidiThread::Inlet& shared,
                           MidiThread::Inlet& chosen) override {
        port.inlet = &shared;
        sources.inlet = &chosen;
        try {
            input->setCallback(Receive, &port);
            input->openVirtualPort(name);
        } catch (const RtMidiError& fault) {
            return Error{"ALSA has no port for \"" + name + "\": " + fault.getMessage()};
        }
        return {};
    }

    void CloseInput() override {
        connections.clear();
        input->closePort();
    }

    /// RtMidi connects a port of its own to a source, so each connection is a client.
    Result<void> Connect(const std::string& source) override {
        try {
            auto connection = OpenClient();
            for (unsigned i = 0; i < connection->getPortCount(); i++) {
                if (connection->getPortName(i) != source)
                    continue;
                connection->setCallback(Receive, &sources);
                connection->openPort(i, source);
                connections[source] = std::move(connection);
                return {};
            }
        } catch (const RtMidiError& fault) {
            return Error{"could not connect the MIDI source \"" + source +
                         "\": " + fault.getMessage()};
        }
        return Error{"could not connect the MIDI source \"" + source + "\""};
    }

    void Disconnect(const std::string& source) override {
        if (connections.erase(source) != 0)
            sources.inlet->EndNotes();
    }

  private:
    /// RtMidi does not tell that a source has vanished: its client would wait for ever, and its
    /// notes would sound as long.
    void EndThoseThatHaveGone(const std::vector<std::string>& present) {
        const auto gone = std::erase_if(connections, [&present](const auto& connection) {
            return std::find(present.begin(), present.end(), connection.first) == present.end();
        });
        if (gone > 0)
            sources.inlet->EndNotes();
    }

    /// An inlet that several threads write, one after the other.
    struct Entrance {
        MidiThread::Inlet* inlet = nullptr;
        std::mutex writing;
    };

    static void Receive(double, std::vector<unsigned char>* bytes, void* self) {
        auto& entrance = *static_cast<Entrance*>(self);
        const std::lock_guard lock(entrance.writing);
        entrance.inlet->Put(*bytes, ::system_time());
    }

    Entrance port;
    Entrance sources;
    std::unique_ptr<RtMidiIn> input;
    std::map<std::string, std::unique_ptr<RtMidiIn>> connections;
};

} // namespace

Result<std::unique_ptr<MidiBackend>> OpenAlsaMidi(std::function<void()>) {
    // Both libraries write to standard error when there is none, before they fail.
    if (::access("/dev/snd/seq", R_OK | W_OK) != 0)
        return Error{"no ALSA sequencer"};
    try {
        return {std::make_unique<AlsaMidi>()};
    } catch (const RtMidiError& fault) {
        return Error{"no ALSA sequencer: " + fault.getMessage()};
    }
}

} // namespace kits
