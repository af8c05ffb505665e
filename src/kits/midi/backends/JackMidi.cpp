#include "kits/midi/backends/MidiBackend.h"
#include "kits/support/backends/JackClient.h"

#include <mutex>
#include <utility>

#include <jack/jack.h>
#include <jack/midiport.h>

namespace kits {

namespace {

class JackMidi : public MidiBackend, private JackProcessor {
  public:
    JackMidi(std::shared_ptr<JackClient> opened, std::function<void()> changed)
        : client(std::move(opened)) {
        client->Listen(this, [this, changed = std::move(changed)] {
            NoteLosses();
            changed();
        });
    }

    ~JackMidi() override {
        client->Unlisten(this);
        CloseInput();
    }

    std::vector<std::string> Sources() override {
        std::vector<std::string> names;
        if (client->IsDead())
            return names;
        const char** ports =
            jack_get_ports(client->Handle(), nullptr, JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput);
        for (const char** port = ports; port && *port; port++)
            names.emplace_back(*port);
        jack_free(ports);
        return names;
    }

    Result<void> OpenInput(const std::string& name, MidiThread::Inlet& into) override {
        jack_port_t* opened = jack_port_register(client->Handle(), name.c_str(),
                                                 JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
        if (!opened)
            return Error{"JACK has no port for \"" + name + "\""};
        {
            const std::lock_guard lock(portMutex);
            port = opened;
            inlet = &into;
        }
        client->Add(*this);
        return {};
    }

    void CloseInput() override {
        if (!port)
            return;
        client->Remove(*this);
        jack_port_t* closed = nullptr;
        {
            const std::lock_guard lock(portMutex);
            closed = std::exchange(port, nullptr);
            inlet = nullptr;
        }
        if (!client->IsDead())
            jack_port_unregister(client->Handle(), closed);
    }

    Result<void> Connect(const std::string& source) override {
        const int status =
            port && !client->IsDead()
                ? jack_connect(client->Handle(), source.c_str(), jack_port_name(port))
                : -1;
        if (status != 0 && status != EEXIST)
            return Error{"could not connect the MIDI source \"" + source + "\""};
        return {};
    }

    void Disconnect(const std::string& source) override {
        if (port && !client->IsDead())
            jack_disconnect(client->Handle(), source.c_str(), jack_port_name(port));
    }

  private:
    void Process(uint32 frames) noexcept override {
        void* buffer = jack_port_get_buffer(port, frames);
        const uint32 count = jack_midi_get_event_count(buffer);
        for (uint32 i = 0; i < count; i++) {
            jack_midi_event_t event;
            if (jack_midi_event_get(&event, buffer, i) == 0)
                inlet->Put({event.buffer, event.size}, 0);
        }
    }

    /// Notes of a source that is no longer connected, or of a server that has gone, would never be
    /// released. Runs in a thread of the JACK library.
    void NoteLosses() {
        const std::lock_guard lock(portMutex);
        if (!port)
            return;
        const int now = client->IsDead() ? 0 : jack_port_connected(port);
        if (now < connected || client->IsDead())
            inlet->EndNotes();
        connected = now;
    }

    std::shared_ptr<JackClient> client;
    /// Guards the port against being closed while NoteLosses looks at it.
    std::mutex portMutex;
    int connected = 0;
    jack_port_t* port = nullptr;
    MidiThread::Inlet* inlet = nullptr;
};

} // namespace

Result<std::unique_ptr<MidiBackend>> OpenJackMidi(std::function<void()> changed) {
    auto client = JackClient::Open();
    if (!client)
        return client.Fault();
    return {std::make_unique<JackMidi>(*client, std::move(changed))};
}

} // namespace kits
