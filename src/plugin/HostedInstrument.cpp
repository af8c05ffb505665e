// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/HostedInstrument.h"

#include "documents/SoundDocument.h"

#include <algorithm>
#include <filesystem>

namespace vexa {

namespace {

/// The voice limit of a sound that has none, as with the programs without a window.
constexpr int32 kUsualVoices = 20;
constexpr float kGain = 0.25F; // that of vexa-render

struct Header {
    Request request;
    uint32 size;
};

} // namespace

HostedInstrument::HostedInstrument(kits::ProgramFolders programFolders, double rate)
    : folders(std::move(programFolders)), instrument(folders, Addons::None) {
    instrument.SetUsualVoices(kUsualVoices);
    oversampler.SetFrameRate(rate);
    instrument.Playing().renderer.SetGain(kGain);
    instrument.Load(Sound());
    TellSound();
}

void HostedInstrument::TakeControls(const ControlValues& values) noexcept {
    Engine& engine = instrument.Playing();
    bool anyPlaying = false;
    const uint32 loaded = engine.playing.loads;
    for (std::size_t i = 0; i < kControls; i++) {
        const Control& control = Controls()[i];
        const bool own = !control.LeavesToSound(values[i]);
        const float value = own ? control.Bounded(values[i]) : float(told[i]);
        if (control.target) {
            anyPlaying |= own;
            engine.playing.*control.target = value;
        } else if (own && (taken[i] != value || loaded != loads)) {
            engine.macros[i - kFirstMacroControl].value = value;
        } else if (!own && taken[i]) {
            engine.macros[i - kFirstMacroControl].value = value;
        }
        taken[i] = own ? std::optional(value) : std::nullopt;
    }
    engine.playing.given = anyPlaying || given;
    const auto said = static_cast<int32>(float(engine.playing.polyphony));
    const int32 next = said > 0 ? said : kUsualVoices;
    if (next != limit || loaded != loads)
        engine.consumer.ReduceToMaxVox(next);
    limit = next;
    loads = loaded;
}

void HostedInstrument::Midi(std::span<const uint8> message) noexcept {
    if (message.empty() || message[0] < 0x80 || message[0] >= 0xF0)
        return;
    VexaMidiConsumer& consumer = instrument.Playing().consumer;
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
    return messages;
}

std::string HostedInstrument::Do(Request request, const std::string& text) {
    if (request == Request::Sound) {
        ReadReport report;
        kits::Result<Sound> sound = ReadSound(text, report);
        bool loaded = false;
        return sound ? Install(*std::move(sound), {}, loaded) : report.reason;
    }
    Function function = instrument.State().function;
    const bool isSample = request == Request::Sample;
    function.kind = isSample ? FunctionKind::Sample : FunctionKind::Expression;
    (isSample ? function.sampleFile : function.expression) = text;
    function.author = kDefaultAuthor;
    const FunctionReport report = instrument.SetFunction(function);
    return report ? "" : Text(report);
}

std::string HostedInstrument::State() {
    const std::lock_guard lock(documents);
    return SoundText(instrument.State());
}

std::string HostedInstrument::Restore(const std::string& document, const std::string& sample,
                                      bool& restored) {
    const std::lock_guard lock(documents);
    restored = false;
    kits::Result<Sound> sound = SoundOfText(document);
    return sound ? Install(*std::move(sound), sample, restored) : sound.Fault().text;
}

std::string HostedInstrument::Install(Sound next, const std::string& sample, bool& installed) {
    const Sound before = instrument.State();
    const Function own = next.function;
    std::error_code ignored;
    if (own.kind == FunctionKind::Sample && std::filesystem::is_regular_file(sample, ignored))
        next.function.sampleFile = sample;
    const FunctionReport report = instrument.Load(next);
    installed = report || report.alerts.empty() || own.kind == FunctionKind::Sample;
    if (!installed) {
        instrument.Load(before);
    } else {
        // A sample that has gone is silent, and the sound still says which it was.
        if (!report.alerts.empty())
            instrument.Silence();
        instrument.Adopt(own);
    }
    TellSound();
    return report ? "" : Text(report);
}

std::optional<std::string> HostedInstrument::SampleFile() {
    const std::lock_guard lock(documents);
    const Function& function = instrument.State().function;
    if (function.kind != FunctionKind::Sample)
        return std::nullopt;
    return SamplePath(function, folders).string();
}

/// From the texts and not from the engine, in which the knobs may have had their say meanwhile.
void HostedInstrument::TellSound() {
    Playing playing;
    ApplyPlaying(instrument.State(), {}, playing);
    Macros macros;
    ApplyMacros(instrument.State().function, macros);
    for (std::size_t i = 0; i < kControls; i++) {
        const Control& control = Controls()[i];
        told[i] = control.target ? float(playing.*control.target)
                                 : float(macros[i - kFirstMacroControl].value);
    }
    given = bool(playing.given);
}

} // namespace vexa
