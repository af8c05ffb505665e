#include "documents/FunctionSource.h"

#include "functions/FunctionCompiler.h"
#include "functions/SampleFunction.h"
#include "kits/support/NumberText.h"

namespace vexa {

namespace {

kits::Error Failure(const CompileReport& report) {
    std::string text;
    for (const std::string& alert : report.alerts)
        text += alert + '\n';
    return {text + report.details};
}

kits::Result<void> InstallExpression(const std::string& expression,
                                     const kits::ProgramFolders& folders,
                                     FunctionSwitch& receivers) {
    CompileOutcome outcome = FunctionCompiler(folders).Compile(expression);
    if (!outcome)
        return Failure(outcome);
    receivers.Install(*std::move(outcome.addon));
    return {};
}

kits::Result<void> InstallSample(const Function& function, const std::filesystem::path& path,
                                 FunctionSwitch& receivers) {
    const kits::Result<LoadedSample> sample = LoadSample(path);
    if (!sample)
        return sample.Fault();
    receivers.Install(SampleFunction());
    const double frequency = kits::NumberOf(function.frequency);
    if (!SetSampleFrequency(sample->format.u.raw_audio.frame_rate, frequency))
        return kits::Error{"a sample frequency of \"" + function.frequency +
                           "\" Hz: it must be above 0"};
    return {};
}

} // namespace

std::filesystem::path SamplePath(const Function& function, const kits::ProgramFolders& folders) {
    return folders.Find("samples", function.sampleFile);
}

kits::Result<void> InstallFunction(const Function& function, const kits::ProgramFolders& folders,
                                   FunctionSwitch& receivers) {
    if (function.kind == FunctionKind::Sample)
        return InstallSample(function, SamplePath(function, folders), receivers);
    return InstallExpression(function.expression, folders, receivers);
}

} // namespace vexa
