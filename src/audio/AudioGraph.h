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
    /// Shows an error to the user and returns when the user has dismissed it.
    using Alert = std::function<void(const char* text)>;

    /// Makes the producer and registers the engine's consumer, so that notes are accepted from now
    /// on, with or without a device. The engine must outlive the graph.
    AudioGraph(Engine& engine, Alert alert);

    /// Stops, disconnects and releases the nodes. A failure is shown.
    ~AudioGraph();
    AudioGraph(const AudioGraph&) = delete;
    AudioGraph& operator=(const AudioGraph&) = delete;

    /// Connects the producer to the system mixer and starts it at a gain of 0.25. The first failure
    /// is shown and ends the sequence; the steps before it stay in effect. Returns true if sound is
    /// playing.
    bool Start();

    /// The events of the audio device, each of which is reported once.
    enum class DeviceNews { None, Gone, There };
    /// Monitors the device. To be called about ten times a second after Start, even if that failed.
    /// If the device has gone or there was none, it searches about once a second; once a device is
    /// found, the sound plays on it at its current rate and period. A mere change of the device's
    /// rate is handled and not reported. May wait for the media thread and the device's thread, but
    /// not for an audio system.
    DeviceNews Watch();

    /// Plays through that audio system from now on, or, without a value, through the first that has
    /// a device; Watch searches for it as for a lost device. Waits for the media thread and the
    /// device's thread.
    void UseSystem(std::optional<kits::AudioSystem> system);
    /// Returns the audio system that is used or searched for; nothing if any is accepted.
    std::optional<kits::AudioSystem> System() const;

    /// Returns the producer, which lives as long as the graph.
    VexaToneProducer& Producer() { return *producer; }
    const VexaToneProducer& Producer() const { return *producer; }
    VexaMidiConsumer& Consumer() { return engine.consumer; }
    const VexaMidiConsumer& Consumer() const { return engine.consumer; }
    bool IsConnected() const { return connected; }

    /// Sends the output to a recording too from now on, on whatever device; null ends that. The
    /// recording must outlive the graph or be ended before.
    void Record(kits::Recording* next);
    /// Returns true while a recording gets the output and keeps it.
    bool Records() const { return recording && !recording->HasEnded(); }
    /// Ends the recording, if there is one, and closes it. To be called before the graph's own end,
    /// which may have to wait for an audio server that hangs.
    void CloseRecording();

    /// Returns the counts of all mixers so far about the producer's buffers.
    kits::MixerCounts Counts() const;
    /// Returns the device's name for display; empty while there is no connection.
    std::string DeviceName() const;
    /// Returns the device's rate in frames per second, 0 while there is no connection.
    double DeviceRate() const;
    /// Returns the reason for the missing device, as of the search in Start.
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
    /// Whether the device in use has gone, and whether its loss has been reported.
    enum class Loss { None, Unreported, Reported } loss = Loss::None;
    /// The counts of the mixers that were removed with their devices.
    kits::MixerCounts past;
};

} // namespace vexa
