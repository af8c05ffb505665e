// SPDX-License-Identifier: GPL-3.0-or-later
// The receiving end of MIDI connections, as a program of ours implements it.
#pragma once

#include "kits/support/Message.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/SupportDefs.h"

#include <memory>
#include <string>

namespace kits {
class EventGate;
class MidiConnection;
} // namespace kits

/// One end of a MIDI connection.
class BMidiEndpoint {
  public:
    virtual ~BMidiEndpoint() = default;
    BMidiEndpoint(const BMidiEndpoint&) = delete;
    BMidiEndpoint& operator=(const BMidiEndpoint&) = delete;

    const std::string& Name() const { return name; }

    /// Adds to the message what the endpoint tells of itself besides its name, such as icons.
    /// Window thread.
    status_t GetProperties(BMessage* into) const;
    status_t SetProperties(const BMessage* next);

  protected:
    explicit BMidiEndpoint(std::string name);

  private:
    std::string name;
    BMessage properties;
};

/// A consumer in this program. Its hooks are called by one thread, the MIDI thread or whoever plays
/// the events of its gate, one event after the other, for whatever is connected; all do nothing
/// unless overridden. Channels are 0..15, data bytes 0..127, `time` is the moment of the event by
/// the system's clock, in microseconds, or 0 where nobody knows it.
class BMidiLocalConsumer : public BMidiEndpoint {
  public:
    explicit BMidiLocalConsumer(std::string name);
    /// A registered consumer unregisters itself first: hooks must not run in what is half gone.
    ~BMidiLocalConsumer() override;

    /// Starts the MIDI thread and makes ports of the endpoint's name, to which other programs can
    /// connect their sources, in every MIDI system that is there or comes later. Window thread.
    status_t Register();
    /// Has NoteOff called, in the MIDI thread, for all notes that came in and are on, while it is
    /// registered. Window thread.
    void EndNotes();
    /// Takes the ports away and ends the MIDI thread: no hook runs any more when it returns.
    status_t Unregister();

    /// Returns the gate at which events can be made to wait for who plays them at their time; null
    /// unless registered. It lives until Unregister. Window thread.
    kits::EventGate* Gate();

    /// Counts the pieces of what came in, in JACK events, that were lost while registered: there
    /// was no room, or the server handed out something else. Window thread.
    int64 LostMidi() const;

    VEXA_REALTIME virtual void NoteOff(uchar channel, uchar note, uchar velocity, bigtime_t time);
    VEXA_REALTIME virtual void NoteOn(uchar channel, uchar note, uchar velocity, bigtime_t time);
    VEXA_REALTIME virtual void KeyPressure(uchar channel, uchar note, uchar pressure,
                                           bigtime_t time);
    VEXA_REALTIME virtual void ControlChange(uchar channel, uchar controller, uchar value,
                                             bigtime_t time);
    VEXA_REALTIME virtual void ProgramChange(uchar channel, uchar program, bigtime_t time);
    VEXA_REALTIME virtual void ChannelPressure(uchar channel, uchar pressure, bigtime_t time);
    VEXA_REALTIME virtual void PitchBend(uchar channel, uchar lsb, uchar msb, bigtime_t time);
    VEXA_REALTIME virtual void SystemExclusive(const void* data, std::size_t length,
                                               bigtime_t time);
    VEXA_REALTIME virtual void SystemCommon(uchar status, uchar data1, uchar data2, bigtime_t time);
    VEXA_REALTIME virtual void SystemRealTime(uchar status, bigtime_t time);
    VEXA_REALTIME virtual void TempoChange(int32 beatsPerMinute, bigtime_t time);
    /// Called after the NoteOffs when a source that has moved wheel or pedals on the channel has
    /// gone, or its notes are ended: what they hold is let go.
    VEXA_REALTIME virtual void SourceEnded(uchar channel, bigtime_t time);
    /// justChannel: the message was for one channel only.
    VEXA_REALTIME virtual void AllNotesOff(bool justChannel, bigtime_t time);

  private:
    friend class BMidiProducer;
    status_t ConnectSource(int32 source, bool connected);

    std::unique_ptr<kits::MidiConnection> connection;
};
