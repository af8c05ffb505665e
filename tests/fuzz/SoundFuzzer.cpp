// SPDX-License-Identifier: GPL-3.0-or-later
// Fails if a file gives neither a reason nor a sound that can be played: a second of notes must be
// finite and take a time that does not depend on the sound. The expression is not compiled, as no
// compiler keeps up with a fuzzer; one of a few functions replaces it.

#include "documents/ApplySound.h"
#include "documents/SoundDocument.h"
#include "functions/SampleFunction.h"
#include "fuzz/Fuzzing.h"
#include "kits/support/NumberText.h"
#include "midi/Engine.h"

#include <array>
#include <cmath>
#include <ctime>
#include <fstream>
#include <functional>

namespace {

constexpr std::size_t kRate = 44100;
constexpr int kVoices = 6;
/// The limit of processor time in seconds, under sanitizers, for a second of sound: about a hundred
/// times the usual time.
constexpr double kMostSeconds = 10;

float Hills(float x, float y) {
    return std::sin(3 * x) * std::cos(2 * y);
}
float Steps(float x, float y) {
    return x < y ? -0.9F : 0.9F;
}
float Steep(float x, float y) {
    return std::clamp(x * y * 1e6F, -1e6F, 1e6F);
}

vexa::PlaneFunction FunctionOf(const vexa::Function& function) {
    if (function.kind == vexa::FunctionKind::Sample) {
        static const auto sample =
            vexa::LoadSample(VEXA_SOURCE_FOLDER "/tests/fuzz/seeds/SampleFile/a.wav");
        fuzz::Require(bool(sample), "there is a sample");
        const auto winding =
            vexa::WindingFor(sample->frames->size(), kRate, kits::NumberOf(function.frequency));
        return std::make_shared<vexa::SampleSpiral>(sample->frames,
                                                    winding.value_or(vexa::Winding()));
    }
    constexpr std::array<vexa::PlaneFunction::Point, 4> kFunctions{vexa::dummyfunction, Hills,
                                                                   Steps, Steep};
    return {kFunctions[std::hash<std::string>{}(function.expression) % kFunctions.size()]};
}

double ProcessorSeconds() {
    return double(std::clock()) / CLOCKS_PER_SEC;
}

/// Plays chords over the whole keyboard, with controllers; the keys are held half of the time.
void Play(vexa::Engine& instrument) {
    std::vector<float> samples(kRate / 10);
    for (int step = 0; step < 10; step++) {
        for (int voice = 0; voice < 3; voice++) {
            const int key = (step * 41 + voice * 53) % 128;
            if (step % 2 == 0)
                instrument.consumer.NoteOn(0, uchar(key), uchar(1 + key % 127), 0);
            else
                instrument.consumer.NoteOff(0, uchar((key + 87) % 128), 0, 0);
        }
        instrument.consumer.ControlChange(0, uchar(step), uchar(step * 14), 0);
        instrument.renderer.Render(samples.data(), samples.size());
        for (const float sample : samples)
            fuzz::Require(std::isfinite(sample), "what is heard is finite");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    static const fuzz::WorkFolder work;
    const std::string path = (work.path / "sound.xml").string();
    std::ofstream(path, std::ios::binary) << fuzz::Text(data, size);
    vexa::Warnings warnings;
    const auto sound = vexa::ReadSound(path, &warnings);
    for (const kits::Error& warning : warnings)
        fuzz::Require(warning.place.file == path, "a warning names the file");
    fuzz::Require(sound || !sound.Fault().text.empty(), "there is a sound or a reason");
    if (!sound)
        return 0;

    vexa::Engine instrument;
    vexa::ApplyParameters(*sound, instrument.parameters);
    vexa::ApplyEnvelopes(*sound, instrument.parameters);
    vexa::ApplyPlaying(*sound, {}, instrument.playing);
    instrument.SetFunction(FunctionOf(sound->function));
    instrument.consumer.ReduceToMaxVox(kVoices);
    const double start = ProcessorSeconds();
    Play(instrument);
    fuzz::Require(ProcessorSeconds() - start < kMostSeconds, "a sound is rendered in bounded time");
    return 0;
}
