// SPDX-License-Identifier: GPL-3.0-or-later
// What does a note-on cost with a free voice, and when it has to steal one?
#include "midi/Engine.h"

#include <benchmark/benchmark.h>

namespace {

/// Notes that fit into a table of 20 voices.
void FreeVoice(benchmark::State& state) {
    vexa::Engine instrument;
    instrument.consumer.ReduceToMaxVox(vexa::kMostVoices);
    uchar note = 0;
    for (auto _ : state) {
        instrument.consumer.NoteOn(0, static_cast<uchar>(40 + note), 100, 0);
        if (++note == vexa::kMostVoices) {
            note = 0;
            instrument.consumer.AllNotesOff(false, 0);
        }
    }
}
BENCHMARK(FreeVoice);

/// Notes of which each steals the voice of another.
void StolenVoice(benchmark::State& state) {
    vexa::Engine instrument;
    instrument.consumer.ReduceToMaxVox(vexa::kMostVoices);
    for (uchar note = 0; note < vexa::kMostVoices; note++)
        instrument.consumer.NoteOn(0, note, 100, 0);
    uchar note = 40;
    for (auto _ : state) {
        instrument.consumer.NoteOn(0, note, 100, 0);
        note = note == 120 ? 40 : static_cast<uchar>(note + 1);
    }
}
BENCHMARK(StolenVoice);

} // namespace
