// SPDX-License-Identifier: GPL-3.0-or-later
// A gate between the MIDI thread and the consumer: events wait here for the thread that plays them
// at their time.
#pragma once

#include "kits/midi/MidiEvent.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Ring.h"

#include <array>
#include <atomic>

namespace kits {

/// Is told of events as they arrive, before their time. MIDI thread.
class EventWatcher {
  public:
    virtual ~EventWatcher() = default;
    virtual void Came(const MidiEvent& event) = 0;
};

/// Calls the consumer's hooks one after the other: the MIDI thread calls them at once or, while the
/// gate is timed, the rendering thread calls them in its Turn. Each source's events arrive in their
/// order, but one source after the other; a few hundred waiting events are sorted by their times.
/// Events of equal times keep the order in which they arrived, and an event without a time stays
/// behind all that arrived before it. Hooks of system messages are always called at once, and may
/// run beside the others. Only the MIDI thread ever waits, if a thousand times more events arrive
/// than can be played.
class EventGate : public BMidiLocalConsumer {
  public:
    explicit EventGate(BMidiLocalConsumer& consumer);

    /// Sets whether events wait for a Turn. When it returns after false, the waiting events have
    /// been delivered and no Turn calls a hook any more. Window thread.
    void SetTimed(bool on);

    /// Sets the watcher that is told of events from now on and outlives the gate; null removes it.
    /// Window thread.
    void Watch(EventWatcher* next) { watcher = next; }

    /// A turn is the right to call the hooks, which at most one thread holds at a time.
    class Turn {
      public:
        /// Asks for the right to play events. Next returns null while the gate is not timed or
        /// another thread holds the right.
        VEXA_REALTIME explicit Turn(EventGate& gate);
        VEXA_REALTIME ~Turn();
        VEXA_REALTIME Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

        /// Returns the next event; null if there is none.
        VEXA_REALTIME const MidiEvent* Next() noexcept { return holds ? gate.First() : nullptr; }
        /// Calls the consumer's hook with the event that Next has returned.
        VEXA_REALTIME void Play() { gate.PlayFirst(); }

      private:
        EventGate& gate;
        bool holds;
    };

    void NoteOff(uchar channel, uchar note, uchar velocity, bigtime_t time) override;
    void NoteOn(uchar channel, uchar note, uchar velocity, bigtime_t time) override;
    void KeyPressure(uchar channel, uchar note, uchar pressure, bigtime_t time) override;
    void ControlChange(uchar channel, uchar controller, uchar value, bigtime_t time) override;
    void ProgramChange(uchar channel, uchar program, bigtime_t time) override;
    void ChannelPressure(uchar channel, uchar pressure, bigtime_t time) override;
    void PitchBend(uchar channel, uchar lsb, uchar msb, bigtime_t time) override;
    void SystemExclusive(const void* data, std::size_t length, bigtime_t time) override;
    void SystemCommon(uchar status, uchar data1, uchar data2, bigtime_t time) override;
    void SystemRealTime(uchar status, bigtime_t time) override;
    void SourceEnded(uchar channel, bigtime_t time) override;
    void AllNotesOff(bool justChannel, bigtime_t time) override;

  private:
    void Take(const MidiEvent& event);
    VEXA_REALTIME bool Enter() noexcept { return !entered.exchange(true); }
    VEXA_REALTIME void Leave() noexcept { entered = false; }
    VEXA_REALTIME void Deliver();
    VEXA_REALTIME void PlayAll();
    VEXA_REALTIME const MidiEvent* First() noexcept;
    VEXA_REALTIME void PlayFirst();
    VEXA_REALTIME MidiEvent& Sorted(std::size_t place) noexcept {
        return sorted[(begin + place) % sorted.size()];
    }

    BMidiLocalConsumer& consumer;
    Ring<MidiEvent> ring;
    std::atomic<EventWatcher*> watcher{nullptr};
    std::atomic<bool> timed{false};
    /// True while a thread has the right to read the ring and to call hooks.
    std::atomic<bool> entered{false};
    /// The next events, already taken out of the ring, in the order in which they are played:
    /// `count` of them from `begin` on. They belong to the thread that has the right to play.
    std::array<MidiEvent, 512> sorted{};
    std::size_t begin = 0, count = 0;
};

} // namespace kits
