// SPDX-License-Identifier: GPL-3.0-or-later
// vexa: the synthesizer, played live.
#include "app/AppOptions.h"
#include "app/HeadlessPlayer.h"
#include "app/JoinedSession.h"
#include "app/VexaApplication.h"
#include "kits/application/GuardedMain.h"
#include "kits/application/Interrupt.h"
#include "kits/storage/ProgramFolder.h"
#include "kits/support/Room.h"
#include "synth/InstructionSet.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

/// The open descriptors and the bytes of address space that playing needs once the loader has run;
/// the system may limit both. tests/app/FaultsTest.cpp measures that they suffice; a window on a
/// JACK server needs most.
constexpr std::size_t kDescriptors = 64;
constexpr std::size_t kMemory = std::size_t{736} << 20;

int Fail(const std::string& text, int exitCode) {
    std::fprintf(stderr, "vexa: %s\n", text.c_str());
    return exitCode;
}

/// Makes the folders of what a person makes. Without them everything can be played, so a failure is
/// a warning; returns its text for a person who sees no terminal, else an empty one.
std::string MakeFolders(const vexa::AppOptions& options, const kits::ProgramFolders& folders) {
    const auto made = folders.MakeOwn();
    if (made)
        return "";
    const std::string text =
        made.Fault().text + "; nothing can be saved, recorded in the window or compiled there";
    std::fprintf(stderr, "vexa: warning: %s\n", text.c_str());
    const bool hasWindow = !options.noWindow && !options.attach;
    return hasWindow && ::isatty(STDERR_FILENO) == 0 ? text : "";
}

int Play(const vexa::AppOptions& options, const kits::ProgramFolders& folders,
         const vexa::Tuning& tuning, vexa::JoinedSession* joined) {
    // From here on a signal ends the program in order, so that no recording is left incomplete.
    const kits::Interrupt interrupt;
    std::unique_ptr<kits::Recording> recording;
    if (options.record) {
        auto begun = kits::Recording::Begin(*options.record);
        if (!begun)
            return Fail("--record: " + begun.Fault().text, 1);
        recording = *std::move(begun);
    }
    const std::string warning = MakeFolders(options, folders);
    const int exitCode =
        options.noWindow
            ? vexa::PlayWithoutWindow(options, folders, tuning, interrupt, recording.get(), joined)
            : vexa::RunWindow(options, folders, warning, recording.get(), joined);
    if (exitCode != 0 || !recording)
        return exitCode;
    const auto finished = recording->Finish();
    if (const std::string remark = recording->Remark(); !remark.empty())
        std::fprintf(stderr, "vexa: warning: %s\n", remark.c_str());
    return finished ? 0 : Fail("--record: " + finished.Fault().text, 1);
}

int Run(const std::vector<std::string>& texts) {
    auto options = vexa::ParseAppOptions(texts);
    if (!options)
        return Fail(options.Fault().text + "\n" + vexa::kAppUsageHint, vexa::kAppUsageExitCode);
    switch (options->action) {
    case vexa::AppOptions::Action::Help:
        std::fputs(vexa::AppHelpText().c_str(), stdout);
        return 0;
    case vexa::AppOptions::Action::Version:
        std::fputs(vexa::AppVersionText().c_str(), stdout);
        return 0;
    case vexa::AppOptions::Action::List:
    case vexa::AppOptions::Action::Play:
        break;
    }
    if (const auto room = kits::CheckRoom(kDescriptors, kMemory); !room)
        return Fail(room.Fault().text, 1);
    if (const auto set = vexa::CheckInstructionSet(); !set)
        return Fail(set.Fault().text, 1);
    kits::ChooseAudioSystem(options->audio);
    if (options->action == vexa::AppOptions::Action::List)
        return vexa::ListDevices();
    const auto folders = kits::FindProgramFolders("vexa", options->userFolder);
    if (!folders) {
        const int exitCode = Fail(folders.Fault().text, 1);
        // A user who has started the program from a menu sees no terminal.
        if (!options->noWindow && ::isatty(STDERR_FILENO) == 0)
            vexa::ShowFault(folders.Fault().text);
        return exitCode;
    }
    if (options->sound) {
        const auto sound = folders->FindDocument("sounds", *options->sound);
        if (!sound)
            return Fail("--sound: " + sound.Fault().text, 1);
        options->sound = *sound;
    }
    std::optional<vexa::JoinedSession> session;
    if (!options->attach) {
        auto joined = vexa::JoinSession(*options);
        if (!joined)
            return Fail(joined.Fault().text, 1);
        session = *std::move(joined);
        if (session)
            *options = session->project.options;
    }
    vexa::TuningParts parts;
    const auto tuning = parts.Change(options->tuning);
    if (!tuning) {
        if (session)
            session->session->TellOpened(tuning.Fault(), false);
        return Fail(tuning.Fault().text, 1);
    }
    if (session)
        session->project.tuningFiles = parts.files;
    return Play(*options, *folders, *tuning, session ? &*session : nullptr);
}

} // namespace

int main(int count, char** arguments) {
    return kits::GuardedMain("vexa", [&] {
        return Run({arguments + std::min(count, 1), arguments + count});
    });
}
