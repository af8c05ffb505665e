// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/kernel/OS.h"
#include "kits/media/backends/AudioDevice.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/backends/JackClient.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <jack/jack.h>

namespace kits {

namespace {

/// The ports for the left and the right loudspeaker.
constexpr std::array<const char*, 2> kPorts{"Vexa audio out", "Vexa audio out right"};

class JackDevice : public AudioDevice, private JackProcessor {
  public:
    explicit JackDevice(std::shared_ptr<JackClient> opened)
        : client(std::move(opened)), rate(jack_get_sample_rate(client->Handle())) {}

    ~JackDevice() override {
        client->Remove(*this);
        if (client->IsDead())
            return;
        const auto request = client->Request();
        for (jack_port_t* port : ports) {
            if (port)
                jack_port_unregister(client->Handle(), port);
        }
    }

    std::string Name() const override { return "JACK"; }
    double SampleRate() const override { return rate; }
    uint32 Period() const override { return jack_get_buffer_size(client->Handle()); }

    /// The server smooths the times of its periods and knows when it has lost some.
    double Smoothing() const override { return 1; }

    Result<void> Start(AudioSource& from) override {
        source = &from;
        // Once registered, the ports stay, and with them the connections that others have made.
        if (ports.back())
            return {};
        for (std::size_t i = 0; i < ports.size(); i++) {
            const auto request = client->Request();
            ports[i] = jack_port_register(client->Handle(), kPorts[i], JACK_DEFAULT_AUDIO_TYPE,
                                          JackPortIsOutput, 0);
            if (!ports[i])
                return Error{std::string("JACK has no port for \"") + kPorts[i] + '"'};
        }
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

    /// Tries to connect again, as PipeWire answers before it has found its sound cards.
    void Tend() override {
        if (connected < ports.size() && !client->IsDead())
            ConnectToLoudspeakers();
    }

    bool HasGone() const override { return client->IsDead(); }

    /// PipeWire changes the rate of its graph under its clients; jackd keeps its own.
    bool HasNewRate() const override {
        return !client->IsDead() && jack_get_sample_rate(client->Handle()) != rate;
    }

  private:
    /// Connects each port once only: a connection that a person removes stays removed. A server may
    /// be set to refuse what its clients connect themselves; the first refusal is told, as the
    /// sound would be missing without a word.
    void ConnectToLoudspeakers() {
        const auto request = client->Request();
        const char** speakers = jack_get_ports(client->Handle(), nullptr, JACK_DEFAULT_AUDIO_TYPE,
                                               JackPortIsPhysical | JackPortIsInput);
        for (std::size_t i = 0; speakers && i < ports.size() && speakers[i]; i++) {
            if (i < connected)
                continue;
            const int status =
                jack_connect(client->Handle(), jack_port_name(ports[i]), speakers[i]);
            if (status != 0 && status != EEXIST && i == 0)
                std::fprintf(stderr,
                             "vexa: JACK did not connect \"%s\" to \"%s\"; there is no sound "
                             "until another program does\n",
                             jack_port_name(ports[i]), speakers[i]);
            connected = i + 1;
        }
        jack_free(speakers);
    }

    VEXA_REALTIME void Process(uint32 frames) noexcept override {
        std::array<float*, kPorts.size()> samples{};
        for (std::size_t i = 0; i < ports.size(); i++)
            samples[i] = static_cast<float*>(jack_port_get_buffer(ports[i], frames));
        AudioSource* const asked = source;
        if (!asked) {
            for (float* channel : samples)
                std::fill_n(channel, frames, 0.0F);
            return;
        }
        if (client->IsFreewheeling()) {
            asked->Await(frames);
            asked->Play(samples[0], samples[1], frames, system_time());
            return;
        }
        asked->Play(samples[0], samples[1], frames, client->PeriodStart());
    }

    std::shared_ptr<JackClient> client;
    jack_nframes_t rate;
    std::array<jack_port_t*, kPorts.size()> ports{};
    /// The number of ports that have been connected to their loudspeakers.
    std::size_t connected = 0;
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
