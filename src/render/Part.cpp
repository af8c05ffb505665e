// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/Part.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace vexa {

Part::Part(const Options& options, const kits::ProgramFolders& folders, FunctionSources& sources,
           MidiFile events)
    : options(options),
      events(std::move(events)),
      instrument(folders, options.compile ? Addons::Awaited : Addons::None),
      programs(instrument, folders, options.compile) {
    instrument.KeepSources(sources);
}

FunctionReport Part::SetUp(const Sound& sound, const Tuning& tuning,
                           std::vector<std::string>& warnings) {
    instrument.Prefer(options.playing);
    instrument.SetUsualVoices(kMostVoices);
    if (options.voices)
        instrument.ChooseVoices(*options.voices);
    FunctionReport report = instrument.Load(sound);
    if (!Plays(report))
        return report;
    Engine& engine = instrument.Engine();
    engine.consumer.SetTuning(tuning);
    if (options.mpe)
        engine.consumer.ExpectMpe();
    engine.renderer.SetGain(static_cast<float>(options.gain));
    engine.consumer.SetChannel(options.channel);

    if (options.programs)
        std::ranges::move(programs.Read(events), std::back_inserter(warnings));
    std::set<const Sound*> heard = programs.Struck();
    if (heard.empty())
        heard.insert(&instrument.State());
    std::size_t earCount = 1;
    for (const Sound* one : heard) {
        Playing playing;
        ApplyPlaying(*one, options.playing, playing);
        oversampling = std::max(oversampling, playing.Oversampling());
        earCount = std::max<std::size_t>(earCount, playing.Spread() > 0 ? 2 : 1);
    }
    const auto block = static_cast<std::size_t>(options.block * oversampling);
    ears.assign(earCount, {Decimator(oversampling), std::vector<float>(block), {}});
    performance.emplace(engine, events, FullRate(), options.tail, oversampling);
    if (options.programs)
        performance->Watch(&programs);
    return report;
}

kits::Result<void> Part::Render() {
    if (done)
        return {};
    float* const right = ears.size() > 1 ? ears[1].block.data() : nullptr;
    const std::size_t count =
        performance->Render(ears[0].block.data(), right, ears[0].block.size());
    if (!programs.Fault().empty())
        return kits::Error{programs.Fault()};
    done = count == 0;
    for (Ear& ear : ears) {
        if (done)
            ear.decimator.Finish(ear.frames);
        else
            ear.decimator.Process(ear.block.data(), count, ear.frames);
    }
    return {};
}

void Part::MixInto(std::span<float> mix, std::size_t channels) {
    const std::size_t count = std::min(Ready(), mix.size() / channels);
    for (std::size_t k = 0; k < channels; k++) {
        const std::vector<float>& frames = ears[std::min(k, ears.size() - 1)].frames;
        for (std::size_t i = 0; i < count; i++)
            mix[i * channels + k] += frames[i];
    }
    for (Ear& ear : ears)
        ear.frames.erase(ear.frames.begin(),
                         ear.frames.begin() + static_cast<std::ptrdiff_t>(count));
}

} // namespace vexa
