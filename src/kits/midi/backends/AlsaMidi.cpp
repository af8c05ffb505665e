// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/kernel/OS.h"
#include "kits/midi/backends/MidiBackend.h"
#include "kits/support/ClientName.h"

#include <algorithm>
#include <map>
#include <mutex>

#include <alsa/asoundlib.h>
#include <rtmidi/RtMidi.h>
#include <unistd.h>

namespace kits {

namespace {

/// Keeps a fault's text for the caller of RtMidi, which throws nothing once it has a callback. The
/// warnings, which RtMidi would otherwise write to standard error, are dropped: one of them says
/// that a port has vanished since the ports were counted.
void KeepFault(RtMidiError::Type type, const std::string& text, void* fault) {
    if (type != RtMidiError::WARNING && type != RtMidiError::DEBUG_WARNING)
        *static_cast<std::string*>(fault) = text;
}

/// Returns the name of the port that is connected to the source. ALSA cuts names to 63 bytes, so
/// it is the end of a longer one, which has the address, by which it differs from all others.
std::string PortName(const std::string& source) {
    constexpr std::size_t kLongest = 63;
    return source.substr(source.size() - std::min(source.size(), kLongest));
}

std::unique_ptr<RtMidiIn> OpenClient() {
    auto midi = std::make_unique<RtMidiIn>(RtMidi::LINUX_ALSA, ClientName());
    // Takes system exclusive data and real-time bytes too: the decoder handles them.
    midi->ignoreTypes(false, false, false);
    return midi;
}

/// Asks ALSA's sequencer for facts that RtMidi does not report.
class Sequencer {
  public:
    Sequencer() {
        if (::snd_seq_open(&handle, "default", SND_SEQ_OPEN_OUTPUT, 0) < 0)
            handle = nullptr;
    }
    ~Sequencer() {
        if (handle)
            ::snd_seq_close(handle);
    }
    Sequencer(const Sequencer&) = delete;
    Sequencer& operator=(const Sequencer&) = delete;

    /// Returns true if a port of this process with that name is connected to no source.
    bool IsUnused(const std::string& name) const {
        snd_seq_client_info_t* client = nullptr;
        snd_seq_port_info_t* port = nullptr;
        snd_seq_client_info_alloca(&client);
        snd_seq_port_info_alloca(&port);
        ::snd_seq_client_info_set_client(client, -1);
        while (handle && ::snd_seq_query_next_client(handle, client) >= 0) {
            if (::snd_seq_client_info_get_pid(client) != ::getpid())
                continue;
            ::snd_seq_port_info_set_client(port, ::snd_seq_client_info_get_client(client));
            ::snd_seq_port_info_set_port(port, -1);
            while (::snd_seq_query_next_port(handle, port) >= 0) {
                if (name == ::snd_seq_port_info_get_name(port))
                    return ::snd_seq_port_info_get_write_use(port) == 0;
            }
        }
        return false;
    }

  private:
    snd_seq_t* handle = nullptr;
};

/// Bytes arrive in RtMidi's own threads, one per client; clients that share an inlet write it under
/// a lock that only these threads take.
class AlsaMidi final : public MidiBackend {
  public:
    AlsaMidi() : input(OpenClient()) { input->setErrorCallback(KeepFault, &fault); }
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
        fault.clear();
        input->setCallback(Receive, &port);
        input->openVirtualPort(name);
        if (!fault.empty())
            return Error{"ALSA has no port for \"" + name + "\": " + fault};
        return {};
    }

    void CloseInput() override {
        connections.clear();
        input->closePort();
    }

    /// RtMidi connects one port of its own to one source, so each connection is a client.
    Result<void> Connect(const std::string& source) override {
        try {
            auto connection = OpenClient();
            for (unsigned i = 0; i < connection->getPortCount(); i++) {
                if (connection->getPortName(i) != source)
                    continue;
                connection->setCallback(Receive, &sources);
                connection->openPort(i, PortName(source));
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
    /// RtMidi does not report that a source has vanished: its client would wait for ever, and its
    /// notes would not end. A source that is already back is left out of `present`, so that it is
    /// listed as a new one.
    void EndThoseThatHaveGone(std::vector<std::string>& present) {
        std::erase_if(present, [this](const std::string& name) {
            return connections.contains(name) && sequencer.IsUnused(PortName(name));
        });
        const auto gone = std::erase_if(connections, [&present](const auto& connection) {
            return std::ranges::find(present, connection.first) == present.end();
        });
        if (gone > 0)
            sources.inlet->EndNotes();
    }

    /// An inlet that several threads write, one at a time.
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
    Sequencer sequencer;
    /// The last fault of `input`. Empty if there is none.
    std::string fault;
    std::unique_ptr<RtMidiIn> input;
    std::map<std::string, std::unique_ptr<RtMidiIn>> connections;
};

} // namespace

Result<std::unique_ptr<MidiBackend>> OpenAlsaMidi(std::function<void()>) {
    // Checked first, because both libraries write to standard error when there is no sequencer.
    if (::access("/dev/snd/seq", R_OK | W_OK) != 0)
        return Error{"no ALSA sequencer"};
    try {
        return {std::make_unique<AlsaMidi>()};
    } catch (const RtMidiError& fault) {
        return Error{"no ALSA sequencer: " + fault.getMessage()};
    }
}

} // namespace kits
