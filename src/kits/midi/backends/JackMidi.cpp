// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/backends/MidiBackend.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/backends/JackClient.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <mutex>
#include <set>
#include <utility>

#include <jack/jack.h>
#include <jack/midiport.h>

namespace kits {

namespace {

class JackMidi final : public MidiBackend, private JackProcessor {
  public:
    JackMidi(std::shared_ptr<JackClient> opened, std::function<void()> changed)
        : client(std::move(opened)),
          bufferSize(jack_port_type_get_buffer_size(client->Handle(), JACK_DEFAULT_MIDI_TYPE)) {
        client->Listen(this, [this, changed = std::move(changed)](const PortChange& change) {
            NoteLosses(change);
            changed();
        });
    }

    ~JackMidi() override {
        client->Unlisten(this);
        CloseInput();
    }

    /// A source that has gone and is already back is left out once, so that it is listed as a new
    /// one, which nobody has connected yet.
    std::vector<std::string> Sources() override {
        std::vector<std::string> names;
        if (client->IsDead())
            return names;
        const std::set<std::string> left = TakeGone();
        const char** ports =
            jack_get_ports(client->Handle(), nullptr, JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput);
        for (const char** port = ports; port && *port; port++) {
            if (!left.contains(*port))
                names.emplace_back(*port);
        }
        jack_free(ports);
        return names;
    }

    Result<void> OpenInput(const std::string& name, MidiThread::Inlet& into,
                           MidiThread::Inlet& intoChosen) override {
        auto opened = OpenPort(shared, name, into);
        if (!opened)
            return opened;
        chosenName = name + " (chosen)";
        chosenInlet = &intoChosen;
        client->Add(*this);
        return {};
    }

    void CloseInput() override {
        if (!shared.port)
            return;
        client->Remove(*this);
        for (Input* input : {&shared, &chosen}) {
            jack_port_t* const closed = input->port.exchange(nullptr);
            // Waits for NoteLosses, which may have seen the port.
            { const std::lock_guard lock(lossMutex); }
            if (closed && !client->IsDead()) {
                const auto request = client->Request();
                jack_port_unregister(client->Handle(), closed);
            }
            input->connected = 0;
        }
    }

    /// The server mixes all input of a port, so sources that this program connects get a port of
    /// their own, apart from the one to which others connect theirs.
    Result<void> Connect(const std::string& source) override {
        const Error fault{"could not connect the MIDI source \"" + source + "\""};
        if (!shared.port || client->IsDead())
            return fault;
        if (!chosen.port) {
            if (auto opened = OpenPort(chosen, chosenName, *chosenInlet); !opened)
                return opened;
        }
        const auto request = client->Request();
        const int status =
            jack_connect(client->Handle(), source.c_str(), jack_port_name(chosen.port));
        if (status != 0 && status != EEXIST)
            return fault;
        return {};
    }

    void Disconnect(const std::string& source) override {
        if (!chosen.port || client->IsDead())
            return;
        const auto request = client->Request();
        if (jack_disconnect(client->Handle(), source.c_str(), jack_port_name(chosen.port)) == 0)
            chosenInlet->EndNotes();
    }

    bool HasGone() const override { return client->IsDead(); }

  private:
    struct Input {
        /// Set last and cleared first; read by the server's threads.
        std::atomic<jack_port_t*> port{nullptr};
        MidiThread::Inlet* inlet = nullptr;
        /// Belongs to NoteLosses.
        int connected = 0;
    };

    std::set<std::string> TakeGone() {
        const std::lock_guard lock(lossMutex);
        return std::exchange(gone, {});
    }

    Result<void> OpenPort(Input& input, const std::string& name, MidiThread::Inlet& inlet) {
        const auto request = client->Request();
        jack_port_t* const opened = jack_port_register(client->Handle(), name.c_str(),
                                                       JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
        if (!opened)
            return Error{"JACK has no port for \"" + name + "\""};
        input.inlet = &inlet;
        input.port = opened;
        return {};
    }

    VEXA_REALTIME void Process(uint32 frames) noexcept override {
        for (Input* input : {&shared, &chosen}) {
            jack_port_t* const port = input->port;
            if (!port)
                continue;
            void* buffer = jack_port_get_buffer(port, frames);
            const uint32 count = jack_midi_get_event_count(buffer);
            for (uint32 i = 0; i < count; i++) {
                jack_midi_event_t event;
                if (jack_midi_event_get(&event, buffer, i) == 0 && LiesIn(buffer, event))
                    input->inlet->Put({event.buffer, event.size}, TimeOf(event));
                else
                    input->inlet->Lose();
            }
            if (count > 0 && client->IsFreewheeling())
                input->inlet->AwaitDelivery();
        }
    }

    /// Returns the event's time by the system's clock; 0 while the server freewheels.
    VEXA_REALTIME bigtime_t TimeOf(const jack_midi_event_t& event) const noexcept {
        const bigtime_t start = client->PeriodStart();
        return start == 0 ? 0
                          : start + event.time * bigtime_t{1000000} /
                                        bigtime_t{jack_get_sample_rate(client->Handle())};
    }

    /// Returns true if the event's bytes lie in the port's buffer: when that is full, jackd1's
    /// library hands out events that do not exist.
    VEXA_REALTIME bool LiesIn(const void* buffer, const jack_midi_event_t& event) const noexcept {
        const auto begin = reinterpret_cast<std::uintptr_t>(buffer);
        const auto at = reinterpret_cast<std::uintptr_t>(event.buffer);
        return at >= begin && event.size <= bufferSize && at - begin <= bufferSize - event.size;
    }

    /// Ends the notes of a source that is no longer connected, or of a server that has gone:
    /// nothing else would release them. When the disconnection is reported, another source may
    /// already be connected instead. Runs in a thread of the JACK library.
    void NoteLosses(const PortChange& change) {
        const std::lock_guard lock(lossMutex);
        if (!change.gone.empty())
            gone.insert(change.gone);
        for (Input* input : {&shared, &chosen}) {
            jack_port_t* const port = input->port;
            if (!port)
                continue;
            const int now = client->IsDead() ? 0 : jack_port_connected(port);
            if (port == change.one || port == change.other || now < input->connected ||
                client->IsDead())
                input->inlet->EndNotes();
            input->connected = now;
        }
    }

    std::shared_ptr<JackClient> client;
    /// The size of a MIDI port's buffer in bytes.
    std::size_t bufferSize;
    /// Guards the ports against being closed while NoteLosses looks at them.
    std::mutex lossMutex;
    /// Other programs connect sources to this port.
    Input shared;
    /// The port for sources that this program connects; it exists from the first of them on.
    Input chosen;
    std::string chosenName;
    MidiThread::Inlet* chosenInlet = nullptr;
    /// The names of the ports that have gone since the sources were listed. lossMutex guards them.
    std::set<std::string> gone;
};

} // namespace

Result<std::unique_ptr<MidiBackend>> OpenJackMidi(std::function<void()> changed) {
    auto client = JackClient::Open();
    if (!client)
        return client.Fault();
    return {std::make_unique<JackMidi>(*client, std::move(changed))};
}

} // namespace kits
