// The program's connections to the outside: MIDI in, and sound out through the system mixer.
#pragma once

#include "audio/ToneProducer.h"
#include "kits/media/MediaRoster.h"
#include "kits/media/SystemMixer.h"
#include "midi/MidiConsumer.h"
#include "synth/SoundRecords.h"

#include <functional>

namespace vexa {

/// Sets up the two endpoints of the synthesizer and takes them down again. Window thread.
class AudioGraph {
  public:
    /// Shows a person what failed and returns when it has been read.
    using Alert = std::function<void(const char* text)>;

    /// Makes the producer and the consumer and registers the consumer, so that notes are accepted
    /// from now on, whether there will be sound or not. The records outlive the graph.
    AudioGraph(ControllerTable& controllers, const sound_param& parameters, VoiceTable& voices,
               Alert alert);

    /// Stops, disconnects and releases the nodes. A failure is shown.
    ~AudioGraph();
    AudioGraph(const AudioGraph&) = delete;
    AudioGraph& operator=(const AudioGraph&) = delete;

    /// Connects the producer to the system mixer and starts it at a gain of 0.25. The first step
    /// that fails is shown and ends the work; what was done before stays done. True when there is
    /// sound.
    bool Start();

    /// Alive as long as the graph.
    VexaToneProducer& Producer() { return *producer; }
    const VexaToneProducer& Producer() const { return *producer; }
    VexaMidiConsumer& Consumer() { return consumer; }
    bool IsConnected() const { return connected; }

    /// What the mixer has noticed of our buffers, its device for a person, and whether that has
    /// disappeared; nothing while there is no connection.
    kits::MixerCounts Counts() const;
    std::string DeviceName() const;
    bool DeviceHasGone() const;

    /// The plane function of both endpoints.
    void SetFunction(const PlaneFunction& f) {
        producer->SetFunction(f);
        consumer.SetFunction(f);
    }

  private:
    struct Connection {
        media_node producer;
        media_node consumer;
        media_source source;
        media_destination destination;
        media_format format;
    };

    const char* Connect();
    const kits::SystemMixer* Mixer() const;

    Alert alert;
    BMediaRoster& roster;
    VexaToneProducer* producer;
    VexaMidiConsumer consumer;
    Connection connection;
    media_node timeSource;
    bool connected = false;
};

} // namespace vexa
