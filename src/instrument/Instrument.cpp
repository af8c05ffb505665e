#include "instrument/Instrument.h"

#include "kits/support/NumberText.h"
#include "kits/support/Quoted.h"

#include <utility>

namespace vexa {

std::string Text(const FunctionReport& report) {
    std::string text;
    for (const std::string& alert : report.alerts)
        text += alert + '\n';
    return text + report.details;
}

std::filesystem::path SamplePath(const Function& function, const kits::ProgramFolders& folders) {
    return folders.Find("samples", function.sampleFile);
}

Instrument::Instrument(kits::ProgramFolders folders) : folders(std::move(folders)) {}

FunctionReport Instrument::Load(const Sound& next) {
    FunctionReport report = SetFunction(next.function);
    ApplyParameters(next, engine.parameters);
    ApplyEnvelopes(next, engine.parameters);
    sound = next;
    return report;
}

FunctionReport Instrument::SetFunction(const Function& function) {
    sound.function = function;
    return function.kind == FunctionKind::Sample ? InstallSample(function)
                                                 : InstallExpression(function.expression);
}

FunctionReport Instrument::InstallExpression(const std::string& expression) {
    CompileOutcome outcome = FunctionCompiler(folders).Compile(expression);
    if (outcome)
        Install(outcome.addon);
    return outcome;
}

FunctionReport Instrument::InstallSample(const Function& function) {
    kits::Result<LoadedSample> loaded = LoadSample(SamplePath(function, folders));
    if (!loaded)
        return {B_ERROR, {kSampleAlert}, loaded.Fault().text};
    sample = *std::move(loaded);
    if (SetSampleFrequency(function.frequency))
        return {};
    Install(std::make_shared<SampleSpiral>(sample->frames, winding));
    return {B_BAD_VALUE,
            {},
            "a sample frequency of " + kits::Quoted(function.frequency) +
                " Hz: it must be above 0"};
}

bool Instrument::SetSampleFrequency(const std::string& text) {
    sound.function.frequency = text;
    if (!sample)
        return false;
    const auto next = WindingFor(sample->frames->size(), sample->frameRate, kits::NumberOf(text));
    if (!next)
        return false;
    winding = *next;
    Install(std::make_shared<SampleSpiral>(sample->frames, winding));
    return true;
}

TextFault Instrument::Edit(const Parameter& row, const std::string& text) {
    sound.texts[static_cast<std::size_t>(&row - Parameters().data())] = text;
    return ApplyText(row, text, engine.parameters);
}

void Instrument::Install(const PlaneFunction& f) {
    if (watcher)
        watcher(f);
    engine.SetFunction(f);
}

} // namespace vexa
