// SPDX-License-Identifier: GPL-3.0-or-later
// What do oversampling and stereo cost in the media thread, without a server around it?
//
// PeriodCost [SECONDS [ROUNDS [PERIOD [SOUND]]]] renders the chord of LiveCost period by period. It
// plays the given sound ("twin-hills" by default) in turns plain, in stereo, oversampled, and both.
// It prints the percentage of a core that each would take: the median of the rounds, and the median
// of the differences from the first in the same round.
#include "CostTable.h"
#include "documents/SoundDocument.h"
#include "functions/ProgramFolder.h"
#include "instrument/Instrument.h"
#include "synth/Oversampler.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <stdexcept>

namespace {

constexpr int kRate = 48000;
/// Frames from one controller change to the next.
constexpr std::size_t kTick = 2400;

struct Way {
    const char* name;
    float spread;
    /// The oversampling factor as a power of 2.
    float oversample;
    std::vector<double> percent{};
};

double Seconds() {
    timespec used{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return double(used.tv_sec) + 1e-9 * double(used.tv_nsec);
}

/// Returns the load in percent of a core.
double Cost(const vexa::Sound& sound, const Way& way, std::size_t seconds, std::size_t period) {
    static const test::ProgramFolder folder;
    vexa::Instrument instrument(folder.Path(), vexa::Addons::Awaited);
    if (const vexa::FunctionReport report = instrument.Load(sound); !report)
        throw std::runtime_error(report.text);
    vexa::Engine& engine = instrument.Engine();
    engine.playing.given = true;
    engine.playing.spread = way.spread;
    engine.playing.oversample = way.oversample;
    engine.consumer.ReduceToMaxVox(20);
    vexa::Oversampler oversampler(engine.renderer);
    oversampler.SetFrameRate(kRate);
    std::vector<float> left(period), right(period);
    for (uchar note = 40; note < 60; note++)
        engine.consumer.NoteOn(0, note, 90, 0);
    std::size_t tick = 1;
    const auto play = [&](std::size_t from, std::size_t to) {
        const double begin = Seconds();
        for (std::size_t frame = from * kRate; frame < to * kRate; frame += period) {
            if (frame / kTick != tick) {
                tick = frame / kTick;
                engine.consumer.ControlChange(0, 1, uchar(tick % 128), 0);
                if (tick % 8 == 0) {
                    const auto note = uchar(40 + tick / 8 % 20);
                    engine.consumer.NoteOff(0, note, 0, 0);
                    engine.consumer.NoteOn(0, note, 90, 0);
                }
            }
            oversampler.Render(left.data(), way.spread > 0 ? right.data() : nullptr, period);
        }
        return Seconds() - begin;
    };
    play(0, 1);
    return 100 * play(1, 1 + seconds) / double(seconds);
}

} // namespace

int main(int count, char** arguments) {
    const auto number = [&](int index, int otherwise) {
        return std::size_t(count > index ? std::atoi(arguments[index]) : otherwise);
    };
    const std::size_t seconds = number(1, 5), rounds = number(2, 11), period = number(3, 64);
    const auto sound =
        vexa::ReadSound(count > 4 ? arguments[4] : VEXA_SOURCE_FOLDER "/benchmarks/twin-hills.xml");
    if (!sound) {
        std::fprintf(stderr, "%s\n", sound.Fault().text.c_str());
        return 1;
    }
    std::array<Way, 4> ways{
        {{"1 x", 0, 0}, {"stereo", 60, 0}, {"4 x", 0, 2}, {"4 x and stereo", 60, 2}}};
    for (std::size_t round = 0; round < rounds; round++) {
        for (Way& way : ways)
            way.percent.push_back(Cost(*sound, way, seconds, period));
    }
    vexa::benchmark::PrintCosts(std::span<const Way>(ways));
}
