// SPDX-License-Identifier: GPL-3.0-or-later
// The receiving end of MIDI connections, implemented by this program.
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

    /// Adds the endpoint's properties besides its name, such as icons, to the message. Window
    /// thread.
    status_t GetProperties(BMessage* into) const;
    status_t SetProperties(const BMessage* next);

  protected:
    explicit BMidiEndpoint(std::string name);

  private:
    std::string name;
    BMessage properties;
};

/// A consumer in this program. One thread at a time, the MIDI thread or the one that plays the
/// events of its gate, calls its hooks, one event after the other, for all connected sources. Hooks
/// do nothing unless overridden. Channels are 0..15, data bytes 0..127; `time` is the moment of the
/// event by the system's clock, in microseconds, or 0 if unknown.
class BMidiLocalConsumer : public BMidiEndpoint {
  public:
    explicit BMidiLocalConsumer(std::string name);
    /// A derived class unregisters itself first: hooks must not run in a partly destroyed object.
    ~BMidiLocalConsumer() override;

    /// Starts the MIDI thread and makes ports of the endpoint's name, to which other programs can
    /// connect their sources, in every MIDI system that exists or appears later. Window thread.
    status_t Register();
    /// Makes the MIDI thread call NoteOff for all received notes that are on. It does nothing
    /// unless registered. Window thread.
    void EndNotes();
    /// Removes the ports and ends the MIDI thread: no hook runs any more when it returns.
    status_t Unregister();

    /// Returns the gate at which events can wait for the thread that plays them at their time; null
    /// unless registered. It is valid until Unregister. Window thread.
    kits::EventGate* Gate();

    /// Returns the number of pieces of the input, such as JACK events, that were lost while
    /// registered: there was no room, or the server handed out invalid data. Window thread.
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
    /// gone, or when its notes are ended: the wheel and the pedals are released.
    VEXA_REALTIME virtual void SourceEnded(uchar channel, bigtime_t time);
    /// `justChannel`: the message was for one channel only.
    VEXA_REALTIME virtual void AllNotesOff(bool justChannel, bigtime_t time);

  private:
    friend class BMidiProducer;
    status_t ConnectSource(int32 source, bool connected);

    std::unique_ptr<kits::MidiConnection> connection;
};
