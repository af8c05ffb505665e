// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/EventGate.h"

#include <chrono>
#include <thread>

namespace kits {

namespace {

/// The number of events that may wait: some seconds of the full rate of a MIDI cable.
constexpr std::size_t kRoom = 1U << 14;

/// The pause between two checks of a thread that waits for another.
constexpr std::chrono::microseconds kGatePause{50};

} // namespace

EventGate::EventGate(BMidiLocalConsumer& consumer)
    : BMidiLocalConsumer(consumer.Name()), consumer(consumer), ring(kRoom) {}

void EventGate::SetTimed(bool on) {
    timed = on;
    if (on)
        return;
    while (!Enter())
        std::this_thread::sleep_for(kGatePause);
    PlayAll();
    Leave();
    Deliver();
}

/// Plays all waiting events, unless another thread is playing them.
void EventGate::Deliver() {
    // Repeated after Leave, for events that another thread has put in meanwhile and could not
    // deliver.
    while (ring.Readable() > 0 && Enter()) {
        PlayAll();
        Leave();
    }
}

void EventGate::PlayAll() {
    while (First())
        PlayFirst();
}

void EventGate::Take(const MidiEvent& event) {
    if (EventWatcher* const current = watcher)
        current->Came(event);
    while (!ring.Write(&event, 1)) {
        Deliver();
        if (ring.Writable() == 0)
            std::this_thread::sleep_for(kGatePause);
    }
    if (!timed)
        Deliver();
}

const MidiEvent* EventGate::First() noexcept {
    MidiEvent event;
    while (count < sorted.size() && ring.Read(&event, 1) > 0) {
        std::size_t place = count++;
        for (; place > 0 && event.time != 0 && Sorted(place - 1).time > event.time; place--)
            Sorted(place) = Sorted(place - 1);
        Sorted(place) = event;
    }
    return count > 0 ? &Sorted(0) : nullptr;
}

void EventGate::PlayFirst() {
    const MidiEvent event = Sorted(0);
    begin = (begin + 1) % sorted.size();
    count--;
    Call(event, consumer);
}

EventGate::Turn::Turn(EventGate& gate) : gate(gate), holds(gate.Enter()) {
    // Checked only after entering: whoever ends the timing waits for the thread that has entered.
    if (holds && !gate.timed) {
        holds = false;
        gate.Leave();
        // An event that arrived at this moment found the gate entered and was not delivered.
        gate.Deliver();
    }
}

EventGate::Turn::~Turn() {
    if (holds)
        gate.Leave();
}

void EventGate::NoteOff(uchar channel, uchar note, uchar velocity, bigtime_t time) {
    Take({time, MidiEvent::Hook::NoteOff, channel, note, velocity});
}
void EventGate::NoteOn(uchar channel, uchar note, uchar velocity, bigtime_t time) {
    Take({time, MidiEvent::Hook::NoteOn, channel, note, velocity});
}
void EventGate::KeyPressure(uchar channel, uchar note, uchar pressure, bigtime_t time) {
    Take({time, MidiEvent::Hook::KeyPressure, channel, note, pressure});
}
void EventGate::ControlChange(uchar channel, uchar controller, uchar value, bigtime_t time) {
    Take({time, MidiEvent::Hook::ControlChange, channel, controller, value});
}
void EventGate::ProgramChange(uchar channel, uchar program, bigtime_t time) {
    Take({time, MidiEvent::Hook::ProgramChange, channel, program, 0});
}
void EventGate::ChannelPressure(uchar channel, uchar pressure, bigtime_t time) {
    Take({time, MidiEvent::Hook::ChannelPressure, channel, pressure, 0});
}
void EventGate::PitchBend(uchar channel, uchar lsb, uchar msb, bigtime_t time) {
    Take({time, MidiEvent::Hook::PitchBend, channel, lsb, msb});
}
void EventGate::SourceEnded(uchar channel, bigtime_t time) {
    Take({time, MidiEvent::Hook::SourceEnded, channel, 0, 0});
}
void EventGate::AllNotesOff(bool justChannel, bigtime_t time) {
    Take({time, MidiEvent::Hook::AllNotesOff, uint8(justChannel), 0, 0});
}

void EventGate::SystemExclusive(const void* data, std::size_t length, bigtime_t time) {
    consumer.SystemExclusive(data, length, time);
}
void EventGate::SystemCommon(uchar status, uchar data1, uchar data2, bigtime_t time) {
    consumer.SystemCommon(status, data1, data2, time);
}
void EventGate::SystemRealTime(uchar status, bigtime_t time) {
    consumer.SystemRealTime(status, time);
}

} // namespace kits
