#include "kits/kernel/OS.h"
#include "kits/media/backends/AudioDevice.h"
#include "kits/support/backends/JackClient.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>

#include <jack/jack.h>

namespace kits {

namespace {

constexpr const char* kPort = "Vexa audio out";
/// The one port goes to the left and to the right loudspeaker.
constexpr int kLoudspeakers = 2;

class JackDevice : public AudioDevice, private JackProcessor {
  public:
    explicit JackDevice(std::shared_ptr<JackClient> opened)
        : client(std::move(opened)), rate(jack_get_sample_rate(client->Handle())) {}

    ~JackDevice() override {
        if (!port)
            return;
        client->Remove(*this);
        if (client->IsDead())
            return;
        const auto request = client->Request();
        jack_port_unregister(client->Handle(), port);
    }

    std::string Name() const override { return "JACK"; }
    double SampleRate() const override { return rate; }
    uint32 Period() const override { return jack_get_buffer_size(client->Handle()); }

    /// The server has smoothed its periods' times, and knows when it has lost some.
    double Smoothing() const override { return 1; }

    Result<void> Start(AudioSource& from) override {
        source = &from;
        // Once there, the port stays, and with it what others have connected to it.
        if (port)
            return {};
        {
            const auto request = client->Request();
            port = jack_port_register(client->Handle(), kPort, JACK_DEFAULT_AUDIO_TYPE,
                                      JackPortIsOutput, 0);
        }
        if (!port)
            return Error{std::string("JACK has no port for \"") + kPort + '"'};
        if (!client->Add(*this))
            return Error{"the JACK client has no room for the audio output"};
        ConnectToLoudspeakers();
        return {};
    }

    void Stop() override {
        source = nullptr;
        client->FinishPeriod();
        rate = jack_get_sample_rate(client->Handle());
    }

    void TellLatency(uint32 frames) override { client->SetLatency(frames); }

    /// PipeWire answers before it has found its sound cards.
    void Tend() override {
        if (loudspeakers < kLoudspeakers && !client->IsDead())
            ConnectToLoudspeakers();
    }

    bool HasGone() const override { return client->IsDead(); }

    /// PipeWire changes the rate of its graph under its clients; jackd keeps its own.
    bool HasNewRate() const override {
        return !client->IsDead() && jack_get_sample_rate(client->Handle()) != rate;
    }

  private:
    /// Each of them once: what a person disconnects stays so.
    void ConnectToLoudspeakers() {
        const auto request = client->Request();
        const char** ports = jack_get_ports(client->Handle(), nullptr, JACK_DEFAULT_AUDIO_TYPE,
                                            JackPortIsPhysical | JackPortIsInput);
        for (int i = 0; ports && ports[i] && i < kLoudspeakers; i++) {
            if (i < loudspeakers)
                continue;
            jack_connect(client->Handle(), jack_port_name(port), ports[i]);
            loudspeakers = i + 1;
        }
        jack_free(ports);
    }

    void Process(uint32 frames) noexcept override {
        auto* samples = static_cast<float*>(jack_port_get_buffer(port, frames));
        AudioSource* const asked = source;
        if (!asked) {
            std::fill_n(samples, frames, 0.0F);
            return;
        }
        if (client->IsFreewheeling()) {
            asked->Await(frames);
            asked->Play(samples, frames, system_time());
            return;
        }
        asked->Play(samples, frames, client->PeriodStart());
    }

    std::shared_ptr<JackClient> client;
    jack_nframes_t rate;
    jack_port_t* port = nullptr;
    /// How many the port has been connected to.
    int loudspeakers = 0;
    std::atomic<AudioSource*> source{nullptr};
};

} // namespace

Result<std::unique_ptr<AudioDevice>> OpenJackDevice() {
    auto client = JackClient::Open();
    if (!client)
        return client.Fault();
    return {std::make_unique<JackDevice>(*client)};
}

} // namespace kits
