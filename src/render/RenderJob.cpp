// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/RenderJob.h"

#include "documents/SoundDocument.h"
#include "instrument/FunctionSources.h"
#include "kits/application/Interrupt.h"
#include "kits/media/SoundFileWriter.h"
#include "kits/storage/FileReplacement.h"
#include "kits/support/NumberText.h"
#include "render/Arrangement.h"
#include "render/FloatStore.h"

#include <algorithm>
#include <bit>
#include <list>
#include <optional>
#include <utility>

#include <unistd.h>

namespace vexa {

namespace {

using kits::Error;
using kits::Result;

constexpr int kFailed = 1;
/// The error of work that ends early because a signal asks for it.
constexpr const char* kStopped = "interrupted";

/// Returns the greatest magnitude among `least` and the samples, none of which is NaN. Magnitudes
/// compare like their bit patterns as integers, and compilers vectorize integer comparisons.
float Peak(float least, std::span<const float> samples) {
    auto most = std::bit_cast<int32>(least);
    for (const float sample : samples)
        most = std::max(most, std::bit_cast<int32>(sample) & INT32_MAX);
    return std::bit_cast<float>(most);
}

class RenderJob {
  public:
    RenderJob(const Options& options, const kits::ProgramFolders& folders)
        : options(options), folders(folders) {}

    RenderOutcome Run() {
        Result<void> done = Render();
        // A signal makes other work fail too, such as that of the compiler, whose words would
        // mislead. What is to be completed all the same fails for a reason of its own.
        if (!done && interrupt && interrupt->Requested() && !completing)
            done = EndWith(interrupt->ExitCode(),
                           "interrupted; " + options.output.string() + " was not written");
        if (!done) {
            outcome.exitCode = std::max(outcome.exitCode, kFailed);
            outcome.fault = done.Fault().text;
        }
        return std::move(outcome);
    }

  private:
    Result<void> Render();
    bool IsOutput(const std::filesystem::path& path) const;
    Result<void> CheckInput(const std::string& option, const std::filesystem::path& path);
    Result<void> CheckOutput();
    Result<void> CheckOutputOf(const Sound& sound, const std::filesystem::path& path) const;
    Result<Sound> SoundOf(const std::filesystem::path& path);
    Result<std::filesystem::path> MainFile() const;
    Result<Sound> MainSound(const std::filesystem::path& path);
    const char* FunctionOption() const;
    Result<Arrangement> Arrange(MidiFile midi);
    Result<void> Write(Arrangement& arrangement, kits::SoundFileWriter& writer,
                       kits::SoundFileFormat format);
    Result<double> RenderInto(Arrangement& arrangement, const FloatStore::Sink& sink);

    /// Returns the error of a run that ends with an exit code other than that of a failure.
    Error EndWith(int exitCode, std::string text) {
        outcome.exitCode = exitCode;
        return {std::move(text)};
    }
    /// Adds the warnings that are not there yet: several channels may have the same sound.
    void Warn(std::vector<std::string> more) {
        for (std::string& warning : more) {
            if (std::ranges::find(outcome.warnings, warning) == outcome.warnings.end())
                outcome.warnings.push_back(std::move(warning));
        }
    }

    const Options& options;
    const kits::ProgramFolders& folders;
    RenderOutcome outcome;
    FunctionSources sources;
    std::optional<kits::Interrupt> interrupt;
    std::optional<kits::Interrupt::Completion> completing;
};

/// Returns the warning about notes that nothing in the file ends.
std::string HeldText(std::size_t notes) {
    return std::to_string(notes) + (notes == 1 ? " note is" : " notes are") +
           " held at the end, by a key or a pedal that the file never lets go, and faded out "
           "there; --tail says how long they last";
}

Result<void> RenderJob::Render() {
    const Result<kits::SoundFileFormat> format = kits::SoundFileFormatOf(options.output);
    if (!format)
        return format.Fault();
    if (Result<void> checked = CheckOutput(); !checked)
        return checked;
    Result<MidiFile> midi = ReadMidiFile(options.midi);
    if (!midi)
        return midi.Fault();
    Warn(std::move(midi->warnings));
    // Signals are caught only from here on: before, a signal ends the program even if it reads a
    // pipe that never ends.
    interrupt.emplace();
    Result<Arrangement> arrangement = Arrange(std::move(*midi));
    if (!arrangement)
        return arrangement.Fault();

    Result<kits::FileReplacement> file = kits::FileReplacement::Create(options.output);
    if (!file)
        return file.Fault();
    const auto frames = static_cast<std::uint64_t>(arrangement->Seconds() * options.rate + 1);
    Result<kits::SoundFileWriter> writer =
        kits::SoundFileWriter::Create(file->Descriptor(), *format, options.output, options.rate,
                                      frames, static_cast<int>(arrangement->Channels()));
    if (!writer)
        return writer.Fault();
    if (Result<void> written = Write(*arrangement, *writer, *format); !written)
        return written;
    completing.emplace();
    if (Result<void> finished = writer->Finish(); !finished)
        return finished;
    if (arrangement->HasBounded())
        outcome.warnings.push_back("the function has values beyond 1e30, which count as that");
    if (const std::size_t held = arrangement->FadedNotes(); held > 0)
        outcome.warnings.push_back(HeldText(held));

    arrangement->Summarize(outcome.summary);
    if (options.channel != -1 && outcome.summary.notes == 0)
        Warn({"--channel " + std::to_string(options.channel + 1) +
              ": there is no note on that channel"});
    return file->Commit();
}

/// Returns true if the output would replace that file, by whatever name or link.
bool RenderJob::IsOutput(const std::filesystem::path& path) const {
    std::error_code ignored;
    return std::filesystem::equivalent(options.output, path, ignored);
}

/// Fails if the output would replace that file, which the option has as an input.
Result<void> RenderJob::CheckInput(const std::string& option, const std::filesystem::path& path) {
    if (!IsOutput(path))
        return {};
    return EndWith(kUsageExitCode, option + ": " + path.string() +
                                       " is the output's file too, which would be overwritten");
}

/// Fails if the output would replace a file that the command line names as an input.
Result<void> RenderJob::CheckOutput() {
    std::vector<std::pair<std::string, std::filesystem::path>> inputs{{"MIDI", options.midi}};
    const auto add = [&](const char* option, const std::optional<std::filesystem::path>& path) {
        if (path)
            inputs.emplace_back(option, *path);
    };
    const auto addSound = [&](const std::string& option,
                              const std::optional<std::filesystem::path>& name) {
        // What cannot be found is told where it is read.
        if (const auto path = folders.FindDocument("sounds", name.value_or("default")); path)
            inputs.emplace_back(option, *path);
    };
    addSound("--sound", options.sound);
    for (std::size_t channel = 0; channel < options.channelSounds.size(); channel++) {
        if (options.channelSounds[channel])
            addSound("--channel-sound " + std::to_string(channel + 1),
                     options.channelSounds[channel]);
    }
    add("--sample", options.sample);
    add("--picture", options.picture);
    add("--tuning", options.tuning.scale);
    add("--keymap", options.tuning.keymap);
    for (const auto& [option, path] : inputs) {
        if (Result<void> checked = CheckInput(option, path); !checked)
            return checked;
    }
    return {};
}

/// Fails if the output would replace the sample or the picture of a sound.
Result<void> RenderJob::CheckOutputOf(const Sound& sound, const std::filesystem::path& path) const {
    const auto input = FileOf(sound.function, folders);
    if (!input || !IsOutput(*input))
        return {};
    return Error{path.string() + " plays " + input->string() +
                 ", which is the output's file too and would be overwritten"};
}

Result<Sound> RenderJob::SoundOf(const std::filesystem::path& path) {
    Warnings warnings;
    Result<Sound> sound = ReadSound(path, &warnings);
    Warn(kits::Texts(warnings));
    return sound;
}

Result<std::filesystem::path> RenderJob::MainFile() const {
    Result<std::filesystem::path> path = options.sound
                                             ? folders.FindDocument("sounds", *options.sound)
                                             : folders.Find("sounds", "default.xml");
    if (!path)
        return Error{"--sound: " + path.Fault().text};
    return path;
}

/// Returns the sound of that file, with the function that the options replace it by.
Result<Sound> RenderJob::MainSound(const std::filesystem::path& path) {
    Result<Sound> sound = SoundOf(path);
    if (!sound)
        return sound;
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
            function.macros[i].value = kits::RoundedText(*options.macros[i], 17);
    }
    if (options.sampleFrequency) {
        if (function.kind != FunctionKind::Sample)
            return EndWith(kUsageExitCode, "--sample-frequency is for a sound from a sample, and " +
                                               path.string() + " is none");
        function.frequency = kits::RoundedText(*options.sampleFrequency, 17);
    }
    return sound;
}

/// Returns the option from which the main sound has its function; null if that is its own.
const char* RenderJob::FunctionOption() const {
    return options.function  ? "--function"
           : options.sample  ? "--sample"
           : options.picture ? "--picture"
                             : nullptr;
}

/// Makes a part for the channels with the main sound and one for each of the other channels, in
/// their order.
Result<Arrangement> RenderJob::Arrange(MidiFile midi) {
    const Result<std::filesystem::path> main = MainFile();
    if (!main)
        return main.Fault();
    std::list<Part> parts;
    const auto add = [&](const Result<Sound>& sound, const std::filesystem::path& path,
                         MidiFile events) -> Result<void> {
        if (!sound)
            return sound.Fault();
        if (Result<void> checked = CheckOutputOf(*sound, path); !checked)
            return checked;
        const Result<Tuning> tuning = ReadTuning(options.tuning);
        if (!tuning)
            return tuning.Fault();
        const char* const option = parts.empty() ? FunctionOption() : nullptr;
        std::vector<std::string> remarks;
        Part& part = parts.emplace_back(options, folders, sources, std::move(events));
        const FunctionReport report = part.SetUp(*sound, *tuning, remarks);
        for (const auto& [number, chosen] : part.Programs()) {
            if (Result<void> checked = CheckInput("--programs", chosen.path); !checked)
                return checked;
            if (!chosen.sound)
                continue;
            if (Result<void> checked = CheckOutputOf(*chosen.sound, chosen.path); !checked)
                return checked;
        }
        const Error fault = option ? Error{std::string(option) + ": " + Text(report)}
                                   : FaultIn(path, sound->function, report);
        if (!Plays(report))
            return fault;
        if (IsNews(report, sound->function))
            Warn({fault.text});
        if (options.compile)
            Warn(NotCompiled(option ? option : FunctionOf(path), sound->function));
        Warn(std::move(remarks));
        return {};
    };
    const auto& own = options.channelSounds;
    const auto eventsOf = [&](auto isThere) {
        return midi.Part([&](std::size_t from) {
            return isThere(from) && (options.channel == -1 || std::size_t(options.channel) == from);
        });
    };
    MidiFile rest = HasChannelSounds(options)
                        ? eventsOf([&](std::size_t from) { return !own[from]; })
                        : std::move(midi);
    if (const Result<void> added = add(MainSound(*main), *main, std::move(rest)); !added)
        return added.Fault();
    for (std::size_t channel = 0; channel < own.size(); channel++) {
        if (!own[channel])
            continue;
        const std::string option =
            "--channel-sound " + std::to_string(channel + 1) + '=' + own[channel]->string() + ": ";
        const auto path = folders.FindDocument("sounds", *own[channel]);
        if (!path)
            return Error{option + path.Fault().text};
        MidiFile events = eventsOf([&](std::size_t from) { return from == channel; });
        if (events.notes == 0 && options.channel == -1)
            Warn({option + "there is no note on that channel"});
        if (const Result<void> added = add(SoundOf(*path), *path, std::move(events)); !added)
            return Error{option + added.Fault().text};
    }
    return Arrangement(std::move(parts));
}

/// Renders everything and writes it, scaled if the options say so.
Result<void> RenderJob::Write(Arrangement& arrangement, kits::SoundFileWriter& writer,
                              kits::SoundFileFormat format) {
    const auto write = [&](std::span<const float> samples) {
        return writer.Write(samples.data(), samples.size() / arrangement.Channels());
    };
    double& peak = outcome.summary.peak;
    if (!options.normalize) {
        const Result<double> rendered = RenderInto(arrangement, write);
        if (!rendered)
            return rendered.Fault();
        peak = *rendered;
        if (peak > 1 && format != kits::SoundFileFormat::wav)
            outcome.warnings.push_back(options.output.string() +
                                       ": what goes beyond full volume is clipped; --normalize or "
                                       "a lower --gain avoids it");
        return {};
    }

    // The scale is only known after everything is rendered.
    Result<FloatStore> store = FloatStore::Create(options.output);
    if (!store)
        return store.Fault();
    const Result<double> rendered =
        RenderInto(arrangement, [&store](std::span<const float> s) { return store->Append(s); });
    if (!rendered)
        return rendered.Fault();
    // Silence is not scaled.
    peak = *rendered > 0 ? 1 : 0;
    const auto scale = static_cast<float>(*rendered > 0 ? 1 / *rendered : 1);
    std::vector<float> scaled;
    return store->Replay([&](std::span<const float> samples) -> Result<void> {
        if (interrupt->Requested())
            return Error{kStopped};
        scaled.assign(samples.begin(), samples.end());
        for (float& sample : scaled)
            sample *= scale;
        return write(scaled);
    });
}

/// Renders everything into the sink, with interleaved channels; returns the peak.
Result<double> RenderJob::RenderInto(Arrangement& arrangement, const FloatStore::Sink& sink) {
    Progress progress(options.quiet ? -1 : STDERR_FILENO, arrangement.Seconds());
    std::vector<float> frames;
    float peak = 0;
    while (true) {
        if (interrupt->Requested())
            return Error{kStopped};
        const Result<bool> more = arrangement.Render(frames);
        if (!more)
            return more.Fault();
        peak = Peak(peak, frames);
        if (const Result<void> taken = sink(frames); !taken)
            return taken.Fault();
        if (!*more)
            return double(peak);
        progress.Update(arrangement.SecondsDone());
    }
}

} // namespace

RenderOutcome RunRender(const Options& options, const kits::ProgramFolders& folders) {
    return RenderJob(options, folders).Run();
}

} // namespace vexa
