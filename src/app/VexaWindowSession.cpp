// SPDX-License-Identifier: GPL-3.0-or-later
// The main window's part in a session.
#include "app/DescriptionWindow.h"
#include "app/VexaView.h"
#include "app/VexaWindow.h"

#include <cstdio>
#include <utility>

namespace vexa {

void VexaWindow::Begin(std::unique_ptr<Session> joined, const Project& project,
                       kits::Recording* recording) {
    session = std::move(joined);
    const bool isNew = !ProjectExists(session->Project());
    // The project has been read, so its faults are known. Answer before loading, as the manager
    // does not wait for a user who reads an alert.
    if (!isNew)
        session->TellOpened({}, false);
    savedProject = project;
    opening = true;
    Begin(project.options, recording);
    opening = false;
    if (!isNew)
        mainView->NameSound(project.soundName);
    savedProject = PresentProject();
    // The choices in the menus take effect only when their messages arrive.
    savedProject.options.voices = project.options.voices;
    savedProject.options.channel = project.options.channel.value_or(-1);
    if (isNew)
        session->TellOpened(WriteProject(session->Project(), savedProject), true);
}

/// Returns the project as it would be saved now.
Project VexaWindow::PresentProject() {
    Project project = savedProject;
    project.sound = mainView->SoundToKeep();
    project.soundName = mainView->SoundName();
    project.windowShown = !IsHidden();
    project.options.voices = mainView->Played().ChosenVoices();
    project.options.channel = mainView->Graph().Consumer().Channel();
    project.options.midi = mainView->ChosenSource();
    project.options.tuning = mainView->KeyTuning().Chosen();
    project.tuningFiles = mainView->KeyTuning().Files();
    project.options.programs = mainView->FollowsPrograms();
    project.options.playing = mainView->Played().Preferred();
    return project;
}

kits::Result<void> VexaWindow::SaveProject() {
    // Until its sound is loaded, the project is what its files say. An alert may hold that up.
    if (opening)
        return {};
    mainView->EnterElsewhere();
    Project project = PresentProject();
    if (auto written = WriteProject(session->Project(), project); !written) {
        std::fprintf(stderr, "vexa: %s\n", written.Fault().text.c_str());
        return written;
    }
    mainView->TakeAsSaved(project.sound);
    savedProject = std::move(project);
    return {};
}

bool VexaWindow::ProjectHasChanged() {
    if (opening)
        return false;
    const Project present = PresentProject();
    return !AreAlike(present, savedProject) || !mainView->Match(present.sound, savedProject.sound);
}

void VexaWindow::ShowWindow(bool shown) {
    if (shown) {
        Show();
        Activate();
    } else {
        if (DescriptionWindow* open = Description())
            open->Close();
        Hide();
    }
}

/// Handles the session's messages. If the manager has gone, the session ends and the window is
/// shown, as nobody else could show it any more.
void VexaWindow::FollowSession() {
    if (!session)
        return;
    session->Pulse(*this);
    if (!session->HasGone())
        return;
    std::fprintf(stderr, "vexa: the session manager has gone; what is here is not in %s any more\n",
                 session->Project().c_str());
    session.reset();
    ShowWindow(true);
}

} // namespace vexa
