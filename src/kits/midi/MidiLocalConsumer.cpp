// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/MidiLocalConsumer.h"

#include "kits/midi/MidiConnection.h"

#include <utility>

BMidiEndpoint::BMidiEndpoint(std::string name) : name(std::move(name)) {}

status_t BMidiEndpoint::GetProperties(BMessage* into) const {
    if (!into)
        return B_BAD_VALUE;
    *into = properties;
    return B_OK;
}

status_t BMidiEndpoint::SetProperties(const BMessage* next) {
    if (!next)
        return B_BAD_VALUE;
    properties = *next;
    return B_OK;
}

BMidiLocalConsumer::BMidiLocalConsumer(std::string name) : BMidiEndpoint(std::move(name)) {}

BMidiLocalConsumer::~BMidiLocalConsumer() = default;

void BMidiLocalConsumer::EndNotes() {
    if (connection)
        connection->EndNotes();
}

status_t BMidiLocalConsumer::Unregister() {
    connection.reset();
    return B_OK;
}

kits::EventGate* BMidiLocalConsumer::Gate() {
    return connection ? &connection->Gate() : nullptr;
}

int64 BMidiLocalConsumer::LostMidi() const {
    return connection ? connection->LostPieces() : 0;
}

status_t BMidiLocalConsumer::ConnectSource(int32 source, bool connected) {
    return connection ? connection->Connect(source, connected) : B_NO_INIT;
}

void BMidiLocalConsumer::NoteOff(uchar, uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::NoteOn(uchar, uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::KeyPressure(uchar, uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::ControlChange(uchar, uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::ProgramChange(uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::ChannelPressure(uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::PitchBend(uchar, uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::SystemExclusive(const void*, std::size_t, bigtime_t) {}
void BMidiLocalConsumer::SystemCommon(uchar, uchar, uchar, bigtime_t) {}
void BMidiLocalConsumer::SystemRealTime(uchar, bigtime_t) {}
void BMidiLocalConsumer::TempoChange(int32, bigtime_t) {}
void BMidiLocalConsumer::SourceEnded(uchar, bigtime_t) {}
void BMidiLocalConsumer::AllNotesOff(bool, bigtime_t) {}
