// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/AudioGraph.h"

#include "kits/media/ConsumerList.h"

#include <utility>

namespace vexa {

AudioGraph::AudioGraph(Engine& engine, Alert alert)
    : engine(engine),
      alert(std::move(alert)),
      roster(*BMediaRoster::Roster()),
      producer(new VexaToneProducer(engine.renderer, engine.voices)) {
    producer->SetChannels(2);
    engine.consumer.Register();
}

bool AudioGraph::Start() {
    const char* failure = Register();
    if (!failure)
        failure = Connect();
    if (failure)
        alert(failure);
    return !failure;
}

/// Returns the name of the step that failed, or null.
const char* AudioGraph::Register() {
    if (roster.RegisterNode(producer) != B_OK)
        return "unable to register ToneProducer node!\n";
    roster.GetNodeFor(producer->ID(), &connection.producer);
    producer->SetEvents(engine.consumer.Gate());
    return nullptr;
}

/// Connects to the mixer and starts. Returns the name of the step that failed, or null.
const char* AudioGraph::Connect() {
    if (roster.GetAudioMixer(&connection.consumer) != B_OK)
        return "unable to get the system mixer";
    roster.GetTimeSource(&timeSource);
    roster.SetTimeSourceFor(connection.producer.node, timeSource.node);

    media_output output;
    media_input input;
    int32 count = 0;
    if (roster.GetFreeOutputsFor(connection.producer, &output, 1, &count) != B_OK)
        return "unable to get a free output from the producer node";
    if (roster.GetFreeInputsFor(connection.consumer, &input, 1, &count) != B_OK)
        return "unable to get a free input to the mixer";

    media_format format;
    format.type = B_MEDIA_RAW_AUDIO;
    format.u.raw_audio = media_raw_audio_format::wildcard;
    if (roster.Connect(output.source, input.destination, &format, &output, &input) != B_OK)
        return "unable to connect nodes";
    connection.format = format;
    connection.source = output.source;
    connection.destination = input.destination;
    roster.SetRunModeNode(connection.producer, B_INCREASE_LATENCY);

    BTimeSource* clock = roster.MakeTimeSourceFor(connection.producer);
    if (!clock)
        return "* ERROR - MakeTimeSourceFor(producer) returned NULL!\n";
    bigtime_t latency = 0;
    if (roster.GetLatencyFor(connection.producer, &latency) != B_OK)
        latency = 0;
    roster.StartNode(connection.producer, clock->Now() + latency);
    clock->Release();
    connected = true;
    engine.consumer.Gate()->SetTimed(true);
    Mixer()->Record(recording);
    producer->SetGain(VoiceRenderer::kUsualGain);
    return nullptr;
}

AudioGraph::DeviceNews AudioGraph::Watch() {
    producer->TellTrace();
    if (connected)
        Mixer()->TendDevice(producer->EventDelay());
    if (connected && Mixer()->DeviceHasNewRate())
        TakeNewRate();
    if (connected && Mixer()->DeviceHasGone()) {
        Disconnect();
        ReleaseMixer();
        loss = Loss::Unreported;
    }
    // A failure with another cause than the device is not retried.
    const bool noDevice = connection.producer.node >= 0 && connection.consumer.node < 0;
    if (!noDevice)
        return DeviceNews::None;
    switch (search.Look()) {
    case kits::MixerSearch::State::Looking:
        return DeviceNews::None;
    case kits::MixerSearch::State::InVain:
        if (loss != Loss::Unreported)
            return DeviceNews::None;
        loss = Loss::Reported;
        return DeviceNews::Gone;
    case kits::MixerSearch::State::Found:
        break;
    }
    // Notes that were released while there was no output have ended and do not fade out now.
    SilenceReleased(engine.voices, Released::All);
    return ConnectTo(search.Take()) ? DeviceNews::There : DeviceNews::None;
}

void AudioGraph::UseSystem(std::optional<kits::AudioSystem> system) {
    if (connected) {
        Disconnect();
        ReleaseMixer();
    }
    kits::ChooseAudioSystem(system);
    // The short silence is intended, so it is not reported as a loss.
    loss = Loss::Reported;
}

std::optional<kits::AudioSystem> AudioGraph::System() const {
    const auto systems = kits::AudioSystemsToTry();
    return systems.size() == 1 ? std::optional(systems.front()) : std::nullopt;
}

double AudioGraph::DeviceRate() const {
    const kits::SystemMixer* mixer = Mixer();
    return mixer ? mixer->DeviceRate() : 0;
}

/// Begins to play through a mixer that is already running.
bool AudioGraph::ConnectTo(std::unique_ptr<kits::SystemMixer> mixer) {
    if (roster.RegisterMixer(std::move(mixer)) != B_OK || Connect())
        return false;
    loss = Loss::None;
    return true;
}

/// Puts another mixer between the producer and the device, which stays open.
void AudioGraph::TakeNewRate() {
    kits::SystemMixer& before = *Mixer();
    Disconnect();
    auto mixer = std::make_unique<kits::SystemMixer>(before.System(), before.TakeDevice());
    ReleaseMixer();
    if (!mixer->StartDevice() || !ConnectTo(std::move(mixer)))
        loss = Loss::Unreported;
}

kits::SystemMixer* AudioGraph::Mixer() const {
    return dynamic_cast<kits::SystemMixer*>(kits::ConsumerOf(connection.destination));
}

void AudioGraph::Record(kits::Recording* next) {
    recording = next;
    if (kits::SystemMixer* mixer = Mixer())
        mixer->Record(next);
}

void AudioGraph::CloseRecording() {
    kits::Recording* const last = recording;
    Record(nullptr);
    if (last)
        last->Close();
}

kits::MixerCounts AudioGraph::Counts() const {
    kits::MixerCounts sum = past;
    if (const kits::SystemMixer* mixer = Mixer()) {
        sum.late += mixer->Counts().late;
        sum.missing += mixer->Counts().missing;
    }
    return sum;
}

std::string AudioGraph::DeviceName() const {
    const kits::SystemMixer* mixer = Mixer();
    return mixer ? mixer->DeviceName() : std::string();
}

/// Stops and disconnects the producer, which then holds no reference to the mixer.
status_t AudioGraph::Disconnect() {
    if (connected) {
        roster.StopNode(connection.producer, 0, true);
        engine.consumer.Gate()->SetTimed(false);
    }
    connected = false;
    // Before the mixer's clock goes; that the producer has let it go is certain after the next hook
    // in its thread.
    roster.SetTimeSourceFor(connection.producer.node, BTimeSource::System()->ID());
    return roster.Disconnect(connection.producer.node, connection.source, connection.consumer.node,
                             connection.destination);
}

void AudioGraph::ReleaseMixer() {
    past = Counts();
    roster.ReleaseNode(connection.consumer);
    connection.consumer = {};
    connection.destination = {};
}

AudioGraph::~AudioGraph() {
    // What went with its device is disconnected already.
    if (Disconnect() != B_OK && loss == Loss::None)
        alert("* Error disconnecting nodes");
    producer->SetEvents(nullptr);
    engine.consumer.Unregister();
    roster.ReleaseNode(connection.producer);
    roster.ReleaseNode(connection.consumer);
}

} // namespace vexa
