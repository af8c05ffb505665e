#include "audio/AudioGraph.h"

#include <utility>

namespace vexa {

namespace {

/// Leaves room for a chord; the user's loudspeakers do the rest.
constexpr float kInitialGain = 0.25F;

} // namespace

AudioGraph::AudioGraph(ControllerTable& controllers, const sound_param& parameters,
                       VoiceTable& voices, Alert alert)
    : alert(std::move(alert)),
      roster(*BMediaRoster::Roster()),
      producer(new VexaToneProducer(controllers, parameters, voices)),
      consumer("Vexa midi in", controllers, parameters, voices) {
    consumer.Register();
}

bool AudioGraph::Start() {
    if (const char* failure = Connect()) {
        alert(failure);
        return false;
    }
    connected = true;
    producer->SetGain(kInitialGain);
    return true;
}

/// What could not be done, or null.
const char* AudioGraph::Connect() {
    if (roster.RegisterNode(producer) != B_OK)
        return "unable to register ToneProducer node!\n";
    roster.GetNodeFor(producer->ID(), &connection.producer);
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
    return nullptr;
}

const kits::SystemMixer* AudioGraph::Mixer() const {
    return dynamic_cast<const kits::SystemMixer*>(BMediaRoster::ConsumerOf(connection.destination));
}

kits::MixerCounts AudioGraph::Counts() const {
    const kits::SystemMixer* mixer = Mixer();
    return mixer ? mixer->Counts() : kits::MixerCounts();
}

std::string AudioGraph::DeviceName() const {
    const kits::SystemMixer* mixer = Mixer();
    return mixer ? mixer->DeviceName() : std::string();
}

bool AudioGraph::DeviceHasGone() const {
    const kits::SystemMixer* mixer = Mixer();
    return mixer && mixer->DeviceHasGone();
}

AudioGraph::~AudioGraph() {
    consumer.Unregister();
    if (connected)
        roster.StopNode(connection.producer, 0, true);
    if (roster.Disconnect(connection.producer.node, connection.source, connection.consumer.node,
                          connection.destination) != B_OK)
        alert("* Error disconnecting nodes");
    roster.ReleaseNode(connection.producer);
    roster.ReleaseNode(connection.consumer);
}

} // namespace vexa
