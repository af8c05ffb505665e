// SPDX-License-Identifier: GPL-3.0-or-later
// Fails if bytes give neither a file whose events are in order and in range, nor a reason.

#include "fuzz/Fuzzing.h"
#include "render/MidiFile.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    const auto file = vexa::ReadMidiFile(std::span(data, size), "fuzzed.mid");
    if (!file) {
        fuzz::Require(file.Fault().text.find("fuzzed.mid") != std::string::npos,
                      "a fault names the file");
        return 0;
    }
    fuzz::Require(std::isfinite(file->duration) && file->duration <= vexa::kMaxMidiSeconds,
                  "the duration is bounded");
    double before = 0;
    std::size_t notes = 0;
    for (const vexa::MidiEvent& event : file->events) {
        fuzz::Require(event.seconds >= before, "events are ordered by time");
        fuzz::Require(event.seconds <= file->duration, "no event lies after the end");
        fuzz::Require(event.channel < 16 && event.number < 128 && event.value < 128,
                      "data are in range");
        before = event.seconds;
        notes += event.kind == vexa::MidiEvent::Kind::NoteOn ? 1 : 0;
    }
    fuzz::Require(notes == file->notes, "the notes are counted");
    return 0;
}
