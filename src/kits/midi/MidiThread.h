// SPDX-License-Identifier: GPL-3.0-or-later
// The thread in which the hooks of a local consumer run.
#pragma once

#include "kits/midi/WireDecoder.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Ring.h"

#include <atomic>
#include <list>
#include <span>
#include <thread>

#include <semaphore.h>

namespace kits {

/// Takes the bytes of several sources, each written by a thread of its own, and calls the
/// consumer's hooks one after the other. Runs at real-time priority where the system grants it.
class MidiThread {
  public:
    /// An inlet takes the bytes of one source, or of several that share it.
    class Inlet {
      public:
        explicit Inlet(MidiThread& thread, BMidiLocalConsumer& consumer);

        /// Puts in a piece of the stream that arrived at `time`, in microseconds of the system's
        /// clock; 0 if unknown. A piece has whole messages, as the systems deliver them, or a part
        /// of system exclusive data: where sources are mixed, data bytes without a status may be
        /// the rest of one source's after another's message, which they do not continue. If a
        /// server's clock goes back, the events get the latest time so far, so that they stay in
        /// order. It is wait-free and does not allocate, for a server's real-time thread. If more
        /// arrives than the MIDI thread can process, pieces are lost and the inlet's notes, which
        /// might hang, are ended. One thread writes into an inlet.
        VEXA_REALTIME void Put(std::span<const uint8> bytes, bigtime_t time) noexcept;

        /// Notes that a piece of the stream could not be read: it is lost as in Put. The writing
        /// thread.
        VEXA_REALTIME void Lose() noexcept;

        /// Waits until the MIDI thread has processed everything that was put in, for a second at
        /// most. The writing thread, where that may wait.
        VEXA_REALTIME void AwaitDelivery() const noexcept;

        /// Ends the notes that came in here, as when the source has vanished; those of other inlets
        /// stay. Any thread.
        VEXA_REALTIME void EndNotes() noexcept;

      private:
        friend class MidiThread;
        struct Header {
            bigtime_t time;
            uint32 size;
            /// Pieces before this one were lost.
            bool gap;
        };
        void Drain();

        MidiThread& thread;
        WireDecoder decoder;
        Ring<uint8> ring{1U << 20};
        /// The writing thread's: the latest pieces were lost.
        bool gap = false;
        /// The number of pieces put in (the writing thread's) and processed (the MIDI thread's).
        int64 put = 0;
        std::atomic<int64> done{0};
        /// The latest time of all pieces so far; the MIDI thread's.
        bigtime_t latest = 0;
        /// The notes are to be ended.
        std::atomic<bool> lost{false};
        std::atomic<int64> lostPieces{0};
    };

    explicit MidiThread(BMidiLocalConsumer& consumer);
    /// Ends the thread; everything put in is delivered first. No thread may write into an inlet any
    /// more.
    ~MidiThread();
    MidiThread(const MidiThread&) = delete;
    MidiThread& operator=(const MidiThread&) = delete;

    /// Makes an inlet, which lives as long as the thread. It must be called before Start.
    Inlet& NewInlet();
    void Start();

    /// Calls Inlet::EndNotes for all inlets. Any thread.
    void EndNotes() noexcept;
    /// Returns the number of pieces that all inlets have lost. Any thread.
    int64 LostPieces() const;

  private:
    void Run();

    BMidiLocalConsumer& consumer;
    std::list<Inlet> inlets;
    sem_t arrived;
    std::atomic<bool> quitting{false};
    std::thread thread;
};

} // namespace kits
