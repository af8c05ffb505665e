// SPDX-License-Identifier: GPL-3.0-or-later
// vexa-render: plays a MIDI file through a sound into a sound file.
#include "kits/application/GuardedMain.h"
#include "kits/storage/ProgramFolder.h"
#include "render/Options.h"
#include "render/RenderJob.h"
#include "synth/InstructionSet.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

void Say(const std::string& text) {
    std::fprintf(stderr, "vexa-render: %s\n", text.c_str());
}

int Fail(const std::string& text, int exitCode) {
    Say(text);
    return exitCode;
}

/// Prints to standard output. GuardedMain tells whether the system has taken it.
int Print(const std::string& text) {
    std::fputs(text.c_str(), stdout);
    return 0;
}

int Run(const std::vector<std::string>& texts) {
    const auto options = vexa::ParseOptions(texts);
    if (!options)
        return Fail(options.Fault().text + "\n" + vexa::kUsageHint, vexa::kUsageExitCode);
    if (options->action == vexa::Options::Action::Help)
        return Print(vexa::HelpText());
    if (options->action == vexa::Options::Action::Version)
        return Print(vexa::VersionText());

    if (const auto set = vexa::CheckInstructionSet(); !set)
        return Fail(set.Fault().text, 1);
    const auto folders = kits::FindProgramFolders("vexa", options->userFolder);
    if (!folders)
        return Fail(folders.Fault().text, 1);
    const vexa::RenderOutcome outcome = vexa::RunRender(*options, *folders);
    for (const std::string& warning : outcome.warnings)
        Say("warning: " + warning);
    if (outcome.exitCode != 0)
        return Fail(outcome.fault, outcome.exitCode);
    if (!options->quiet)
        return Print(vexa::SummaryLine(outcome.summary) + '\n');
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    return kits::GuardedMain("vexa-render", [&] {
        return Run({arguments + std::min(count, 1), arguments + count});
    });
}
