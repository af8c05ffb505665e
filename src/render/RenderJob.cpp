// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/RenderJob.h"

#include "documents/SoundDocument.h"
#include "instrument/Instrument.h"
#include "kits/application/Interrupt.h"
#include "kits/media/SoundFileWriter.h"
#include "kits/storage/FileReplacement.h"
#include "render/FilePrograms.h"
#include "render/FloatStore.h"
#include "render/Performance.h"
#include "synth/Decimator.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <optional>
#include <set>

#include <unistd.h>

namespace vexa {

namespace {

using kits::Error;
using kits::Result;

constexpr int kFailed = 1;

/// The greatest magnitude, of `least` and the samples, none of which is NaN. Magnitudes are in the
/// order of their bits, which compilers compare in vectors.
float Peak(float least, std::span<const float> samples) {
    auto most = std::bit_cast<int32>(least);
    for (const float sample : samples)
        most = std::max(most, std::bit_cast<int32>(sample) & INT32_MAX);
    return std::bit_cast<float>(most);
}

class RenderJob {
  public:
    RenderJob(const Options& options, const kits::ProgramFolders& folders)
        : options(options),
          folders(folders),
          instrument(folders, options.compile ? Addons::Awaited : Addons::None) {}

    RenderOutcome Run() {
        if (const Result<void> done = Render(); !done) {
            outcome.exitCode = std::max(outcome.exitCode, kFailed);
            outcome.fault = done.Fault().text;
        }
        return std::move(outcome);
    }

  private:
    Result<void> Render();
    Result<Sound> ChosenSound();
    Result<void> SetUpInstrument();
    void ChooseForm(const MidiFile& midi);
    Result<void> Write(Performance& performance, kits::SoundFileWriter& writer,
                       kits::SoundFileFormat format);
    Result<double> RenderInto(Performance& performance, const FloatStore::Sink& sink);
    /// Of the file: two where a sound that is heard has a spread.
    std::size_t Channels() const { return channels; }

    /// The reason for ending with an exit code that is not that of a failure.
    Error EndWith(int exitCode, std::string text) {
        outcome.exitCode = exitCode;
        return {std::move(text)};
    }
    Error Interrupted() {
        return EndWith(interrupt->ExitCode(),
                       "interrupted; " + options.output.string() + " was not written");
    }
    void Warn(std::vector<std::string> more) {
        outcome.warnings.insert(outcome.warnings.end(), std::make_move_iterator(more.begin()),
                                std::make_move_iterator(more.end()));
    }

    /// Samples that the engine computes for each frame, as many as that of the sounds heard which
    /// wants most, and for each second.
    int Oversampling() const { return oversampling; }
    double FullRate() const { return double(options.rate) * Oversampling(); }

    const Options& options;
    const kits::ProgramFolders& folders;
    RenderOutcome outcome;
    std::optional<kits::Interrupt> interrupt;
    Instrument instrument;
    FilePrograms programs{instrument, folders};
    int oversampling = 1;
    std::size_t channels = 1;
};

Result<void> RenderJob::Render() {
    const Result<kits::SoundFileFormat> format = kits::SoundFileFormatOf(options.output);
    if (!format)
        return EndWith(kUsageExitCode, format.Fault().text);
    Result<MidiFile> midi = ReadMidiFile(options.midi);
    if (!midi)
        return midi.Fault();
    Warn(std::move(midi->warnings));
    // Not before: a read of a pipe that never ends must end with the program.
    interrupt.emplace();
    if (Result<void> ready = SetUpInstrument(); !ready)
        return ready;
    ChooseForm(*midi);

    Result<kits::FileReplacement> file = kits::FileReplacement::Create(options.output);
    if (!file)
        return file.Fault();
    Performance performance(instrument.Playing(), *midi, FullRate(), options.tail, Oversampling());
    if (options.programs)
        performance.Watch(&programs);
    const auto frames = static_cast<std::uint64_t>(performance.Length() / Oversampling() + 1);
    Result<kits::SoundFileWriter> writer =
        kits::SoundFileWriter::Create(file->Descriptor(), *format, options.output, options.rate,
                                      frames, static_cast<int>(Channels()));
    if (!writer)
        return writer.Fault();
    if (Result<void> written = Write(performance, *writer, *format); !written)
        return written;
    if (Result<void> finished = writer->Finish(); !finished)
        return finished;
    if (instrument.Playing().renderer.HasBounded())
        outcome.warnings.push_back("the function has values beyond 1e30, which count as that");

    outcome.summary.seconds = static_cast<double>(performance.Length()) / FullRate();
    outcome.summary.notes = midi->notes;
    outcome.summary.mostVoices = static_cast<std::size_t>(performance.MostVoices());
    outcome.summary.stolenVoices =
        static_cast<std::size_t>(instrument.Playing().consumer.StolenVox());
    return file->Commit();
}

/// The sound document that the options name, with the function that they put in its place.
Result<Sound> RenderJob::ChosenSound() {
    const Result<std::filesystem::path> path = options.sound
                                                   ? folders.FindDocument("sounds", *options.sound)
                                                   : folders.Find("sounds", "default.xml");
    if (!path)
        return Error{"--sound: " + path.Fault().text};
    ReadReport report;
    Result<Sound> sound = ReadSound(*path, report);
    if (!sound)
        return Error{report.reason};
    Warn(std::move(report.warnings));
    Function& function = sound->function;
    if (options.function) {
        function.kind = FunctionKind::Expression;
        function.expression = *options.function;
    }
    if (options.sample) {
        function.kind = FunctionKind::Sample;
        function.sampleFile = std::filesystem::absolute(*options.sample).string();
        function.frequency = Function().frequency;
    }
    if (options.picture) {
        function.kind = FunctionKind::Picture;
        function.pictureFile = std::filesystem::absolute(*options.picture).string();
    }
    for (std::size_t i = 0; i < kMacros; i++) {
        if (options.macros[i])
            function.macros[i].value = std::to_string(*options.macros[i]);
    }
    if (options.sampleFrequency) {
        if (function.kind != FunctionKind::Sample)
            return EndWith(kUsageExitCode, "--sample-frequency is for a sound from a sample, and " +
                                               path->string() + " is none");
        function.frequency = std::to_string(*options.sampleFrequency);
    }
    return sound;
}

Result<void> RenderJob::SetUpInstrument() {
    const Result<Sound> sound = ChosenSound();
    if (!sound)
        return sound.Fault();
    const Result<Tuning> tuning = ReadTuning(options.tuning);
    if (!tuning)
        return tuning.Fault();
    instrument.Prefer(options.playing);
    instrument.SetUsualVoices(kMostVoices);
    if (options.voices)
        instrument.ChooseVoices(*options.voices);
    if (const FunctionReport report = instrument.Load(*sound); !report)
        return Error{Text(report)};
    Engine& engine = instrument.Playing();
    engine.consumer.SetTuning(*tuning);
    if (options.mpe)
        engine.consumer.ExpectMpe();
    engine.renderer.SetGain(static_cast<float>(options.gain));
    engine.consumer.SetChannel(options.channel);
    return {};
}

/// Channels and oversampling, by all the sounds that will be heard.
void RenderJob::ChooseForm(const MidiFile& midi) {
    if (options.programs)
        Warn(programs.Read(midi));
    std::set<const Sound*> heard = programs.Struck();
    if (heard.empty())
        heard.insert(&instrument.State());
    for (const Sound* sound : heard) {
        Playing playing;
        ApplyPlaying(*sound, options.playing, playing);
        oversampling = std::max(oversampling, playing.Oversampling());
        channels = std::max<std::size_t>(channels, playing.Spread() > 0 ? 2 : 1);
    }
}

/// Renders the whole, and scales it where that is asked for.
Result<void> RenderJob::Write(Performance& performance, kits::SoundFileWriter& writer,
                              kits::SoundFileFormat format) {
    const auto write = [this, &writer](std::span<const float> samples) {
        return writer.Write(samples.data(), samples.size() / Channels());
    };
    double& peak = outcome.summary.peak;
    if (!options.normalize) {
        const Result<double> rendered = RenderInto(performance, write);
        if (!rendered)
            return rendered.Fault();
        peak = *rendered;
        if (peak > 1 && format != kits::SoundFileFormat::wav)
            outcome.warnings.push_back(options.output.string() +
                                       ": what goes beyond full volume is clipped; --normalize or "
                                       "a lower --gain avoids it");
        return {};
    }

    // The scale is known when all is rendered.
    Result<FloatStore> store = FloatStore::Create(options.output);
    if (!store)
        return store.Fault();
    const Result<double> rendered =
        RenderInto(performance, [&store](std::span<const float> s) { return store->Append(s); });
    if (!rendered)
        return rendered.Fault();
    // Silence stays silence.
    peak = *rendered > 0 ? 1 : 0;
    const auto scale = static_cast<float>(*rendered > 0 ? 1 / *rendered : 1);
    std::vector<float> scaled;
    return store->Replay([&](std::span<const float> samples) -> Result<void> {
        if (interrupt->Requested())
            return Interrupted();
        scaled.assign(samples.begin(), samples.end());
        for (float& sample : scaled)
            sample *= scale;
        return write(scaled);
    });
}

/// Renders the whole into the sink, the channels by turns; returns the peak.
Result<double> RenderJob::RenderInto(Performance& performance, const FloatStore::Sink& sink) {
    Progress progress(options.quiet ? -1 : STDERR_FILENO,
                      static_cast<double>(performance.Length()) / FullRate());
    struct Channel {
        Decimator decimator;
        std::vector<float> block, output;
    };
    std::vector<Channel> channels(Channels(),
                                  {Decimator(Oversampling()),
                                   std::vector<float>(static_cast<std::size_t>(options.block)),
                                   {}});
    std::vector<float> frames;
    float peak = 0;
    for (bool more = true; more;) {
        if (interrupt->Requested())
            return Interrupted();
        float* const right = channels.size() > 1 ? channels[1].block.data() : nullptr;
        const std::size_t count =
            performance.Render(channels[0].block.data(), right, channels[0].block.size());
        if (!programs.Fault().empty())
            return Error{programs.Fault()};
        more = count > 0;
        for (Channel& channel : channels) {
            channel.output.clear();
            if (more)
                channel.decimator.Process(channel.block.data(), count, channel.output);
            else
                channel.decimator.Finish(channel.output);
        }
        frames.resize(channels[0].output.size() * channels.size());
        for (std::size_t k = 0; k < channels.size(); k++) {
            for (std::size_t i = 0; i < channels[k].output.size(); i++)
                frames[i * channels.size() + k] = channels[k].output[i];
        }
        peak = Peak(peak, frames);
        if (const Result<void> taken = sink(frames); !taken)
            return taken.Fault();
        progress.Update(static_cast<double>(performance.Position()) / FullRate());
    }
    return double(peak);
}

} // namespace

RenderOutcome RunRender(const Options& options, const kits::ProgramFolders& folders) {
    return RenderJob(options, folders).Run();
}

} // namespace vexa
