// SPDX-License-Identifier: GPL-3.0-or-later
// The program's connections to the outside: MIDI in, and sound out through the system mixer.
#pragma once

#include "audio/ToneProducer.h"
#include "kits/media/MediaRoster.h"
#include "kits/media/MixerSearch.h"
#include "kits/media/SystemMixer.h"
#include "midi/Engine.h"

#include <functional>
#include <optional>

namespace vexa {

/// Sets up the two endpoints of the synthesizer and takes them down again. Window thread.
class AudioGraph {
  public:
    /// Shows a person what failed and returns when it has been read.
    using Alert = std::function<void(const char* text)>;

    /// Makes the producer and registers the engine's consumer, so that notes are accepted from now
    /// on, whether there will be sound or not. The engine outlives the graph.
    AudioGraph(Engine& engine, Alert alert);

    /// Stops, disconnects and releases the nodes. A failure is shown.
    ~AudioGraph();
    AudioGraph(const AudioGraph&) = delete;
    AudioGraph& operator=(const AudioGraph&) = delete;

    /// Connects the producer to the system mixer and starts it at a gain of 0.25. The first step
    /// that fails is shown and ends the work; what was done before stays done. True when there is
    /// sound.
    bool Start();

    /// The news of the audio device, each of which is told once.
    enum class DeviceNews { None, Gone, There };
    /// Looks after the device. It is to be called some ten times a second after Start, whatever
    /// that said. Where the device has gone, or there was none, it is looked for about once a
    /// second; when it is there the sound is too, at whatever rate and period the device has now. A
    /// device that merely changes its rate is played on, and no news. It does not wait for an audio
    /// system, but for the media thread and the device's.
    DeviceNews Watch();

    /// Plays through that system from now on, or, without a value, through the first that has a
    /// device; Watch looks for it as for one that has gone. It waits for the media thread and the
    /// device's.
    void UseSystem(std::optional<kits::AudioSystem> system);
    /// The one that is played through or looked for; nothing while any will do.
    std::optional<kits::AudioSystem> System() const;

    /// Returns the producer, which lives as long as the graph.
    VexaToneProducer& Producer() { return *producer; }
    const VexaToneProducer& Producer() const { return *producer; }
    VexaMidiConsumer& Consumer() { return engine.consumer; }
    const VexaMidiConsumer& Consumer() const { return engine.consumer; }
    bool IsConnected() const { return connected; }

    /// Records what is heard too from now on, whatever device plays it; null ends that. The
    /// recording outlives the graph, or is ended before.
    void Record(kits::Recording* next);

    /// Returns what all mixers so far have noticed of our buffers.
    kits::MixerCounts Counts() const;
    /// The device for a person; empty while there is no connection.
    std::string DeviceName() const;
    /// Returns the device's rate in frames per second, 0 while there is no connection.
    double DeviceRate() const;
    /// Returns why there is no device, as it was when Start looked for one.
    const std::string& DeviceFault() const { return roster.MixerFault(); }

  private:
    struct Connection {
        media_node producer;
        media_node consumer;
        media_source source;
        media_destination destination;
        media_format format;
    };

    const char* Register();
    const char* Connect();
    status_t Disconnect();
    void ReleaseMixer();
    bool ConnectTo(std::unique_ptr<kits::SystemMixer> mixer);
    void TakeNewRate();
    kits::SystemMixer* Mixer() const;

    Engine& engine;
    Alert alert;
    BMediaRoster& roster;
    VexaToneProducer* producer;
    Connection connection;
    media_node timeSource;
    bool connected = false;

    kits::MixerSearch search;
    kits::Recording* recording = nullptr;
    /// The device that played has gone; whether that has been told.
    enum class Loss { None, Untold, Told } loss = Loss::None;
    /// The counts of the mixers that went with their devices.
    kits::MixerCounts past;
};

} // namespace vexa
