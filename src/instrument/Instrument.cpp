// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/Instrument.h"

#include "documents/NumberDoubt.h"
#include "instrument/PlayableFormula.h"
#include "kits/support/NumberText.h"
#include "kits/support/Quoted.h"

#include <new>
#include <system_error>
#include <utility>

namespace vexa {

bool Plays(const FunctionReport& report) {
    return report.alerts.empty();
}

namespace {

std::string FrequencyFault(const Function& function) {
    return "a sample frequency of " + kits::Quoted(function.frequency) +
           " Hz: expected one above 0, which makes turns that the spiral can have";
}

} // namespace

bool IsNews(const FunctionReport& report, const Function& function) {
    const bool isTold =
        report.text == FrequencyFault(function) && !FrequencyDoubt(function.frequency).empty();
    return !isTold && !Text(report).empty();
}

std::string Text(const FunctionReport& report) {
    if (report.status == B_BAD_VALUE)
        return report.text;
    std::string text;
    for (const std::string& alert : report.alerts)
        text += alert + '\n';
    return text + report.text;
}

kits::Error FaultIn(const std::filesystem::path& file, const Function& function,
                    const FunctionReport& report) {
    const bool isExpression = function.kind == FunctionKind::Expression;
    return {file.string() + ": " + (isExpression ? "<expression>: " : "") + Text(report)};
}

std::optional<std::filesystem::path> FileOf(const Function& function,
                                            const kits::ProgramFolders& folders) {
    switch (function.kind) {
    case FunctionKind::Sample:
        return folders.Find("samples", function.sampleFile);
    case FunctionKind::Picture:
        return folders.Find("pictures", function.pictureFile);
    case FunctionKind::Expression:
        break;
    }
    return std::nullopt;
}

namespace {

/// Loads the file of a sample or picture by `load`, whose errors have the alert `alert`.
template<class Load>
auto LoadFile(const Function& function, const kits::ProgramFolders& folders, const Load& load,
              const char* alert) -> decltype(load(std::filesystem::path())) {
    // The path of an empty name is that of the folder.
    if (SourceOf(function).empty())
        return kits::Error{"the sound names no file for its terrain", {alert}};
    return load(*FileOf(function, folders));
}

} // namespace

Instrument::Instrument(kits::ProgramFolders programFolders, Addons addons, SoundsSay* apart)
    : folders(std::move(programFolders)),
      isApart(apart),
      addons(addons),
      thread(folders),
      saidPlaying(apart ? apart->playing : engine.playing),
      saidMacros(apart ? apart->macros : engine.macros) {}

/// Marks the replacement of a sound for the renderer: a function that is installed while this
/// exists begins the replacement, and the destructor ends it.
class Instrument::Replacing {
  public:
    explicit Replacing(Instrument& instrument) : instrument(instrument) {
        SilenceReleased(instrument.engine.voices, Released::Over);
        instrument.replaces = true;
    }
    ~Replacing() {
        instrument.replaces = false;
        instrument.engine.renderer.EndReplacing();
    }
    Replacing(const Replacing&) = delete;
    Replacing& operator=(const Replacing&) = delete;

  private:
    Instrument& instrument;
};

FunctionReport Instrument::Load(const Sound& next) {
    const Replacing replacing(*this);
    SetMacros(next.function);
    FunctionReport report = SetFunction(next.function);
    LoadRest(next);
    Adopt(next.function);
    return report;
}

void Instrument::LoadRest(const Sound& next) {
    ApplyParameters(next, engine.parameters);
    ApplyEnvelopes(next, engine.parameters);
    ApplyPlaying(next, preferred, saidPlaying);
    saidPlaying.loads = saidPlaying.loads + 1;
    LimitNewVoices();
    Function function = std::move(sound.function);
    sound = next;
    sound.function = std::move(function);
    changes++;
}

void Instrument::Adopt(const Function& function) {
    sound.function = function;
    changes++;
}

void Instrument::Prefer(const PlayingTexts& choices) {
    preferred = choices;
    ApplyPlaying(sound, preferred, saidPlaying);
    saidPlaying.loads = saidPlaying.loads + 1;
}

bool Instrument::EditPlaying(const PlayingRow& row, const std::optional<std::string>& text) {
    if (text && !PlayingValue(row, *text))
        return false;
    PlayingTexts next = sound.playing.value_or(PlayingTexts());
    std::optional<std::string>& present = next.Of(row.name);
    // A field may be confirmed without a change.
    if (present != text)
        sound.author = user;
    present = text;
    changes++;
    if (row.target == &Playing::polyphony)
        chosenVoices.reset();
    SetPlaying(next);
    return true;
}

/// Changes the playing settings of the present sound, which plays on.
void Instrument::SetPlaying(const std::optional<PlayingTexts>& next) {
    const bool given = saidPlaying.given, pedal = saidPlaying.Pedal();
    const float bend = saidPlaying.bend;
    const int32 limit = VoiceLimit();
    sound.playing = next;
    ApplyPlaying(sound, preferred, saidPlaying);
    // These settings change the effect of the player's controls, so the consumer applies the
    // controls afresh.
    if (given != saidPlaying.given || pedal != saidPlaying.Pedal() || bend != saidPlaying.bend)
        saidPlaying.loads = saidPlaying.loads + 1;
    if (limit != VoiceLimit())
        LimitNewVoices();
}

void Instrument::ChooseVoices(int32 limit) {
    chosenVoices = limit;
    LimitVoices();
}

void Instrument::SetUsualVoices(int32 limit) {
    usualVoices = limit;
    LimitVoices();
}

void Instrument::LimitVoices() {
    if (!isApart)
        engine.consumer.ReduceToMaxVox(VoiceLimit());
}

void Instrument::LimitNewVoices() {
    if (!isApart)
        engine.consumer.LimitNewVox(VoiceLimit());
}

int32 Instrument::VoiceLimit() const {
    const auto said = static_cast<int32>(float(saidPlaying.polyphony));
    return chosenVoices.value_or(said > 0 ? said : usualVoices);
}

FunctionReport Instrument::SetFunction(const Function& function) {
    FunctionReport report = InstallKind(function);
    if (Plays(report))
        Adopt(function);
    return report;
}

FunctionReport Instrument::InstallKind(const Function& function) {
    switch (function.kind) {
    case FunctionKind::Sample:
        return InstallSample(function);
    case FunctionKind::Picture:
        return InstallPicture(function);
    case FunctionKind::Expression:
        break;
    }
    return InstallExpression(function.expression);
}

FunctionReport Instrument::Try(const Function& function) const {
    const auto outcome = [](const auto& loaded) {
        return loaded ? FunctionReport() : FunctionReport{loaded.Fault(), B_ERROR};
    };
    switch (function.kind) {
    case FunctionKind::Sample:
        return outcome(SampleOf(function));
    case FunctionKind::Picture:
        return outcome(PictureOf(function));
    case FunctionKind::Expression:
        break;
    }
    const PlayableFormula read = ReadPlayable(function.expression);
    return read.formula ? FunctionReport() : FunctionCompiler(folders).Refusal(read.reason);
}

void Instrument::Silence() {
    thread.Drop();
    file.clear();
    sample.reset();
    Install(nullfunc);
}

FunctionReport Instrument::InstallExpression(const std::string& expression) try {
    const FunctionCompiler compiler(folders);
    const PlayableFormula read = ReadPlayable(expression);
    if (!read.formula)
        return compiler.Refusal(read.reason);
    const bool mayBeAddon = addons != Addons::None && WhyNoAddon(*read.formula, expression).empty();
    PlaneFunction f = read.formula;
    FunctionReport report;
    if (mayBeAddon && addons == Addons::Awaited) {
        CompileOutcome compiled =
            kept ? kept->Compile(compiler, expression) : compiler.Compile(expression);
        if (!compiled)
            return compiled;
        f = std::move(compiled.addon);
        report = std::move(compiled);
    }
    thread.Drop();
    file.clear();
    sample.reset();
    Install(f);
    if (mayBeAddon && addons == Addons::Following)
        report = Follow(expression);
    if (!read.reason.empty())
        report.text = read.reason + (report.text.empty() ? "" : '\n' + report.text);
    return report;
} catch (const std::bad_alloc&) {
    return FunctionCompiler(folders).Refusal("there is not enough memory");
}

/// Starts to compile the add-on. If the thread for it cannot be created, the formula plays on.
FunctionReport Instrument::Follow(const std::string& expression) try {
    thread.Begin(expression);
    return {};
} catch (const std::system_error& fault) {
    return {{std::string("there is no thread for the compiler: ") + fault.what()}};
}

FunctionReport Instrument::Collect() {
    std::optional<CompileOutcome> outcome = thread.Take();
    if (!outcome || outcome->status == B_ENTRY_NOT_FOUND)
        return {};
    if (*outcome)
        engine.SetFunction(std::move(outcome->addon));
    return *std::move(outcome);
}

kits::Result<LoadedSample> Instrument::SampleOf(const Function& function) const {
    const auto load = [this](const std::filesystem::path& path) {
        return kept ? kept->ReadSample(path) : LoadSample(path);
    };
    return LoadFile(function, folders, load, kSampleAlert);
}

kits::Result<Picture> Instrument::PictureOf(const Function& function) const {
    const auto load = [this](const std::filesystem::path& path) {
        return kept ? kept->ReadPicture(path) : LoadPicture(path);
    };
    return LoadFile(function, folders, load, kPictureAlert);
}

FunctionReport Instrument::InstallSample(const Function& function) {
    const std::filesystem::path path = *FileOf(function, folders);
    kits::Result<LoadedSample> loaded = SampleOf(function);
    if (!loaded)
        return {loaded.Fault(), B_ERROR};
    thread.Drop();
    file = path;
    FunctionReport report{{loaded->remark}};
    sample = *std::move(loaded);
    if (Wind(function.frequency))
        return report;
    Install(std::make_shared<SampleSpiral>(sample->frames, winding));
    report.status = B_BAD_VALUE;
    report.text += (report.text.empty() ? "" : "\n") + FrequencyFault(function);
    return report;
}

FunctionReport Instrument::InstallPicture(const Function& function) {
    const std::filesystem::path path = *FileOf(function, folders);
    kits::Result<Picture> loaded = PictureOf(function);
    if (!loaded)
        return {loaded.Fault(), B_ERROR};
    thread.Drop();
    file = path;
    sample.reset();
    Install(std::make_shared<PictureTerrain>(*std::move(loaded)));
    return {};
}

bool Instrument::SetSampleFrequency(const std::string& text) {
    sound.function.frequency = text;
    changes++;
    return sound.function.kind == FunctionKind::Sample && Wind(text);
}

/// Installs the loaded sample with the winding for a frequency. Returns false if there is no sample
/// or the text is no valid frequency.
bool Instrument::Wind(const std::string& frequency) {
    if (!sample)
        return false;
    const auto next =
        WindingFor(sample->frames->size(), sample->frameRate, kits::NumberOf(frequency));
    if (!next)
        return false;
    winding = *next;
    Install(std::make_shared<SampleSpiral>(sample->frames, winding));
    return true;
}

TextFault Instrument::Edit(const Parameter& row, const std::string& text) {
    std::string& present = sound.texts[static_cast<std::size_t>(&row - Parameters().data())];
    if (present != text)
        sound.author = user;
    present = text;
    changes++;
    return ApplyText(row, text, engine.parameters);
}

FunctionReport Instrument::Change(const Sound& from, const Sound& to) {
    const Replacing replacing(*this);
    const FunctionReport report = ChangeFunction(from.function, to.function);
    Function function = std::move(sound.function);
    for (std::size_t i = 0; i < Parameters().size(); i++) {
        if (from.texts[i] != to.texts[i])
            ApplyText(Parameters()[i], to.texts[i], engine.parameters);
    }
    if (from.envelopes != to.envelopes)
        ApplyEnvelopes(to, engine.parameters);
    if (from.playing != to.playing)
        SetPlaying(to.playing);
    sound = to;
    Adopt(function);
    return report;
}

/// Changes all parts of the function, and adopts the result in State.
FunctionReport Instrument::ChangeFunction(const Function& from, const Function& to) {
    FunctionReport report;
    Function next = to;
    if (!HaveOneSource(from, to)) {
        report = SetFunction(to);
        const bool failed = !Plays(report);
        const bool isExpression = to.kind == FunctionKind::Expression;
        if (failed && !isExpression)
            Silence();
        if (failed && isExpression) {
            next.kind = sound.function.kind;
            next.expression = sound.function.expression;
        }
    } else {
        // The present sound may differ from both: an expression that could not be installed was
        // left out, and the file may have another name.
        next.kind = sound.function.kind;
        next.expression = sound.function.expression;
        next.sampleFile = sound.function.sampleFile;
        next.pictureFile = sound.function.pictureFile;
        if (from.frequency != to.frequency)
            SetSampleFrequency(to.frequency);
    }
    for (std::size_t i = 0; i < kMacros; i++) {
        if (from.macros[i].value != to.macros[i].value)
            EditMacroValue(i, to.macros[i].value);
        if (from.macros[i].controller != to.macros[i].controller)
            EditMacroController(i, to.macros[i].controller);
    }
    Adopt(next);
    return report;
}

void Instrument::Describe(const std::string& author, const SoundInfo& info) {
    sound.author = author;
    sound.info = info;
    changes++;
}

void Instrument::SetMacros(const Function& function) {
    ApplyMacros(function, saidMacros);
    for (std::size_t i = 0; i < kMacros; i++)
        toldMacros[i] = saidMacros[i].value;
}

void Instrument::EditMacro(std::string& present, const std::string& text) {
    if (present != text)
        sound.function.author = user;
    present = text;
    changes++;
}

TextFault Instrument::EditMacroValue(std::size_t macro, const std::string& text) {
    EditMacro(sound.function.macros[macro].value, text);
    const TextFault fault = ApplyMacroValue(text, saidMacros[macro]);
    toldMacros[macro] = saidMacros[macro].value;
    return fault;
}

TextFault Instrument::EditMacroController(std::size_t macro, const std::string& text) {
    EditMacro(sound.function.macros[macro].controller, text);
    return ApplyMacroController(text, saidMacros[macro]);
}

void Instrument::FollowMacros() {
    for (std::size_t i = 0; i < kMacros; i++) {
        const float value = saidMacros[i].value;
        if (value == toldMacros[i])
            continue;
        toldMacros[i] = value;
        sound.function.macros[i].value = kits::ShortText(value);
        changes++;
    }
}

void Instrument::Install(const PlaneFunction& f) {
    if (watcher)
        watcher(f);
    if (replaces)
        engine.renderer.BeginReplacing();
    engine.SetFunction(f);
}

} // namespace vexa
