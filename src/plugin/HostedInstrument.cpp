// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/HostedInstrument.h"

#include "documents/SoundDocument.h"
#include "instrument/DefaultSound.h"
#include "instrument/InitialSound.h"
#include "kits/support/Published.h"

#include <filesystem>
#include <limits>

namespace vexa {

namespace {

struct Header {
    Request request;
    uint32 size;
};

/// Returns the kind of function that a request sets.
FunctionKind KindOf(Request request) {
    return request == Request::Sample    ? FunctionKind::Sample
           : request == Request::Picture ? FunctionKind::Picture
                                         : FunctionKind::Expression;
}

/// Returns the fault of a function, or what is wrong with a file or doubtful in a formula that
/// plays all the same, in words for a plug-in, in which no compiler is involved; empty if there is
/// neither.
std::string Fault(const FunctionReport& report, const Function& function) {
    if (report.text.empty() || function.kind != FunctionKind::Expression)
        return Text(report);
    return (report ? "In the formula, " : "The formula cannot be played: ") + report.text;
}

} // namespace

HostedInstrument::HostedInstrument(kits::ProgramFolders programFolders, double rate,
                                   std::function<void()> wake)
    : folders(std::move(programFolders)), wake(std::move(wake)) {
    oversampler.SetFrameRate(rate);
    instrument.Engine().renderer.SetGain(VoiceRenderer::kUsualGain);
    const DefaultSound read = ReadDefaultSound(folders);
    startFault = read.fault;
    const FunctionReport loaded = instrument.Load(read.sound);
    if (const std::string fault = Fault(loaded, read.sound.function); !fault.empty())
        startFault += (startFault.empty() ? "" : "\n") + fault;
    if (!Plays(loaded)) {
        startFault += "\ninstead a plain sound plays";
        instrument.Load(InitialSound());
    }
    ControlValues none;
    none.fill(std::numeric_limits<float>::quiet_NaN());
    TakeControls(none);
}

void HostedInstrument::Restart(double rate) noexcept {
    Engine& engine = instrument.Engine();
    posted.Skip(posted.Readable());
    engine.consumer.Restart();
    for (std::size_t i = 0; i < kMacros; i++) {
        // A controller may have moved the macro.
        engine.macros[i].value = macros[i];
        engine.macros[i].modulation = 0;
    }
    engine.renderer.Clear();
    oversampler.SetFrameRate(rate);
}

void HostedInstrument::TakeControls(const ControlValues& values) noexcept {
    Engine& engine = instrument.Engine();
    const uint32 loaded = said.playing.loads;
    bool given = said.playing.given;
    uint32 ownPlaying = 0, ownMacros = 0;
    for (std::size_t row = 0; row < kPlayingRows; row++) {
        const auto target = PlayingRows()[row].target;
        float value = said.playing.*target;
        for (std::size_t i = 0; i < kControls; i++) {
            const Control& control = Controls()[i];
            if (control.target != target || control.LeavesToSound(values[i]))
                continue;
            value = control.Bounded(values[i]);
            ownPlaying |= 1U << row;
            // The oversampling factor does not count as a setting of how the sound is played.
            given = given || target != &Playing::oversample;
        }
        engine.playing.*target = value;
    }
    engine.playing.given = given;
    hostsPlaying = ownPlaying;
    engine.playing.loads = loaded;
    // A controller may move a macro away from the value of the sound or the control.
    for (std::size_t i = 0; i < kMacros; i++) {
        const std::size_t at = kFirstMacroControl + i;
        const Control& control = Controls()[at];
        const bool isHosts = !control.LeavesToSound(values[at]);
        const float value = isHosts ? control.Bounded(values[at]) : float(said.macros[i].value);
        ownMacros |= uint32(isHosts) << i;
        if (macros[i] != value || loaded != loads)
            engine.macros[i].value = value;
        engine.macros[i].controller = int32(said.macros[i].controller);
        macros[i] = value;
    }
    hostsMacros = ownMacros;
    const bool mpe = !Controls()[kMpeControl].LeavesToSound(values[kMpeControl]);
    if (mpe != expectsMpe)
        engine.consumer.ExpectMpe(mpe);
    expectsMpe = mpe;
    const auto voices = static_cast<int32>(float(engine.playing.polyphony));
    const int32 next = voices > 0 ? voices : kMostVoices;
    // A newly loaded sound with a lower limit does not cut off keys that are held.
    if (loaded != loads)
        engine.consumer.LimitNewVox(next);
    else if (next != limit)
        engine.consumer.ReduceToMaxVox(next);
    limit = next;
    loads = loaded;
}

void HostedInstrument::Midi(std::span<const uint8> message) noexcept {
    if (message.empty() || message[0] < 0x80 || message[0] >= 0xF0)
        return;
    VexaMidiConsumer& consumer = instrument.Engine().consumer;
    const uint8 kind = message[0] & 0xF0, channel = message[0] & 0x0F;
    const bool isShort = kind == 0xC0 || kind == 0xD0;
    if (message.size() < (isShort ? 2U : 3U))
        return;
    const uint8 first = message[1] & 0x7F;
    const uint8 second = isShort ? 0 : message[2] & 0x7F;
    switch (kind) {
    case 0x80:
        return consumer.NoteOff(channel, first, second, 0);
    case 0x90:
        return second > 0 ? consumer.NoteOn(channel, first, second, 0)
                          : consumer.NoteOff(channel, first, second, 0);
    case 0xA0:
        return consumer.KeyPressure(channel, first, second, 0);
    case 0xB0:
        return first == 120 || first >= 123 ? consumer.AllNotesOff(true, 0)
                                            : consumer.ControlChange(channel, first, second, 0);
    case 0xD0:
        return consumer.ChannelPressure(channel, first, 0);
    case 0xE0:
        return consumer.PitchBend(channel, first, second, 0);
    default:
        return;
    }
}

void HostedInstrument::Render(float* left, float* right, std::size_t count) noexcept {
    PlayPosted();
    oversampler.Render(left, right, count);
}

bool HostedInstrument::Post(Request request, std::string_view text) noexcept {
    if (text.size() > kMostText)
        return false;
    const Header header{request, static_cast<uint32>(text.size())};
    return requests.Write(
        {{reinterpret_cast<const char*>(&header), sizeof header}, {text.data(), text.size()}});
}

std::string HostedInstrument::Work() {
    const std::lock_guard lock(documents);
    std::string messages;
    Header header{};
    while (requests.Read(reinterpret_cast<char*>(&header), sizeof header) == sizeof header) {
        std::string text(header.size, '\0');
        requests.Read(text.data(), text.size());
        messages += Do(header.request, text);
    }
    kits::CollectRetired();
    return messages;
}

std::string HostedInstrument::Do(Request request, const std::string& text) {
    if (request == Request::Sound) {
        kits::Result<Sound> sound = ReadSound(text);
        bool loaded = false;
        const std::string fault =
            sound ? Install(*std::move(sound), {}, loaded) : sound.Fault().text;
        if (loaded)
            soundFile = text;
        return fault;
    }
    if (request == Request::Tuning || request == Request::Keymap) {
        // Keeps the other file only if it is part of the present tuning.
        TuningChoice next = tuned ? tunedBy : TuningChoice();
        (request == Request::Tuning ? next.scale : next.keymap) =
            text.empty() ? std::nullopt : std::optional<std::filesystem::path>(text);
        return Tune(next, false);
    }
    Function function = instrument.State().function;
    function.kind = KindOf(request);
    SourceOf(function) = text;
    function.author = kDefaultAuthor;
    return Fault(instrument.SetFunction(function), function);
}

/// On failure nothing changes, unless `anyway` is true: then the choice is kept and equal
/// temperament plays.
std::string HostedInstrument::Tune(const TuningChoice& choice, bool anyway) {
    const kits::Result<Tuning> tuning = ReadTuning(choice);
    if (!tuning && !anyway)
        return tuning.Fault().text;
    tunedBy = choice;
    tuned = bool(tuning);
    instrument.Engine().consumer.SetTuning(tuning ? *tuning : EqualTemperament());
    return tuning ? "" : tuning.Fault().text;
}

std::string HostedInstrument::Text(Request request) {
    const std::lock_guard lock(documents);
    const Function& function = instrument.State().function;
    switch (request) {
    case Request::Formula:
    case Request::Sample:
    case Request::Picture:
        if (function.kind != KindOf(request))
            return "";
        return PresentFile().value_or(function.expression).string();
    case Request::Sound:
        return soundFile;
    case Request::Tuning:
        return tunedBy.scale.value_or("").string();
    case Request::Keymap:
        return tunedBy.keymap.value_or("").string();
    }
    return "";
}

std::string HostedInstrument::State() {
    const std::lock_guard lock(documents);
    return SoundText(instrument.State());
}

std::string HostedInstrument::Restore(const std::string& document, const std::string& file,
                                      bool& restored) {
    const std::lock_guard lock(documents);
    restored = false;
    kits::Result<Sound> sound = SoundOfText(document);
    return sound ? Install(*std::move(sound), file, restored) : sound.Fault().text;
}

std::string HostedInstrument::Install(Sound next, const std::string& file, bool& installed) {
    const Function own = next.function;
    std::error_code ignored;
    if (own.kind != FunctionKind::Expression && std::filesystem::is_regular_file(file, ignored))
        SourceOf(next.function) = file;
    if (own.kind == FunctionKind::Expression) {
        if (const FunctionReport tried = instrument.Try(own); !tried)
            return Fault(tried, own);
    }
    installed = true;
    instrument.Engine().renderer.SetJoins(false);
    const FunctionReport report = instrument.Load(next);
    // A missing file plays silence, and the sound keeps its name.
    if (!Plays(report))
        instrument.Silence();
    instrument.Adopt(own);
    soundFile.clear();
    return Fault(report, own);
}

HostedInstrument::Kept HostedInstrument::Keep() {
    const std::lock_guard lock(documents);
    return {SoundText(instrument.State()), PresentFile(), tunedBy};
}

/// Returns the file that plays, which the document may name by a path of another machine; a missing
/// file is returned as the document names it.
std::optional<std::filesystem::path> HostedInstrument::PresentFile() const {
    const auto named = FileOf(instrument.State().function, folders);
    return named && !instrument.File().empty() ? instrument.File() : named;
}

std::string HostedInstrument::RestoreTuning(const TuningChoice& choice) {
    const std::lock_guard lock(documents);
    return Tune(choice, true);
}

} // namespace vexa
