// SPDX-License-Identifier: GPL-3.0-or-later
// What the main view's file panels are for, and what they choose.
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "instrument/DefaultSound.h"
#include "instrument/InitialSound.h"
#include "kits/interface/Alert.h"
#include "kits/interface/FilePanelDefs.h"
#include "kits/storage/Entry.h"
#include "kits/storage/FileName.h"

#include <filesystem>

namespace vexa {

namespace {

/// The code of a button, the panel that it shows, and the action for the panel's result.
struct PanelCommand {
    uint32 button;
    file_panel_mode mode;
    uint32 result;
    /// One of the program's folders; null for files that the user keeps elsewhere.
    const char* folder;
    const char* title;
    void (VexaView::*open)(const std::string& path);
    void (VexaView::*save)(const std::string& name);
};

/// Returns the path of the first entry in an open panel's message; empty if there is none.
std::string ChosenPath(const BMessage& message) {
    entry_ref ref;
    BPath path;
    if (message.FindRef("refs", &ref) != B_OK || BEntry(&ref, false).GetPath(&path) != B_OK)
        return "";
    return path.Path();
}

/// Returns the name that a panel proposes for a sound of this name; empty if the program has given
/// the name or no file can have it.
std::string NameToSaveAs(const std::string& name) {
    // Every start begins with the sound that the user has saved as "default", so nobody is to do
    // that without typing the name.
    const bool isOwn = name != kInitialSoundName && name != kDefaultSoundName;
    return isOwn && kits::CheckFileName(name) ? name : "";
}

/// Asks whether to write a file. If it replaces one, Enter keeps that.
bool AskToWrite(const std::string& question, bool replaces) {
    auto* alert = new BAlert("Save", question.c_str(), "Cancel", replaces ? "Replace" : "Save",
                             nullptr, B_WIDTH_AS_USUAL, B_WARNING_ALERT);
    if (replaces)
        alert->SetDefaultButton(0);
    return alert->Go() == 1;
}

} // namespace

/// Shows a panel or takes the result of one. Returns false for any other message.
bool VexaView::TakePanelCommand(const BMessage& message) {
    static const PanelCommand kCommands[] = {
        {kLoadFunctionCode, B_OPEN_PANEL, kFunctionLoadedCode, "functions", "Load f(x,y)",
         &VexaView::OpenFunction, nullptr},
        {kSaveFunctionCode, B_SAVE_PANEL, kFunctionSavedCode, "functions", "Save f(x,y)", nullptr,
         &VexaView::SaveFunction},
        {kLoadSoundCode, B_OPEN_PANEL, kSoundLoadedCode, "sounds", "Load Sound",
         &VexaView::OpenSound, nullptr},
        {kSaveSoundCode, B_SAVE_PANEL, kSoundSavedCode, "sounds", "Save Sound", nullptr,
         &VexaView::SaveSound},
        {kOpenCode, B_OPEN_PANEL, kOpenedCode, "sounds", "Open", &VexaView::OpenAny, nullptr},
        {kLoadScaleCode, B_OPEN_PANEL, kScaleLoadedCode, nullptr, "Scala Scale",
         &VexaView::OpenScale, nullptr},
        {kLoadKeymapCode, B_OPEN_PANEL, kKeymapLoadedCode, nullptr, "Keyboard Map",
         &VexaView::OpenKeymap, nullptr},
        {kLoadSampleCode, B_OPEN_PANEL, kSampleLoadedCode, "samples", "Load Sample",
         &VexaView::OpenSample, nullptr},
    };
    for (const PanelCommand& command : kCommands) {
        if (message.what == command.button) {
            afterSaving = nullptr;
            panels.Show(command.mode, command.result, command.folder, command.title,
                        message.what == kSaveSoundCode ? NameToSaveAs(SoundName()) : "");
            return true;
        }
        if (message.what != command.result)
            continue;
        if (command.open) {
            if (const std::string path = ChosenPath(message); !path.empty())
                (this->*command.open)(path);
        } else {
            std::string name;
            message.FindString("name", &name);
            if (MaySave() && MayReplace(message, command.folder, name))
                (this->*command.save)(name);
        }
        panels.Remove(message);
        return true;
    }
    return false;
}

/// Applies typed texts, so that the saved sound is the heard one. Asks the user if they differ
/// anyhow, and returns whether to save.
bool VexaView::MaySave() {
    EnterTyped();
    const std::string remark = SavingRemark();
    if (remark.empty())
        return true;
    auto* alert = new BAlert("Save", remark.c_str(), "Cancel", "Save", nullptr, B_WIDTH_AS_USUAL,
                             B_WARNING_ALERT);
    // So that Enter writes nothing.
    alert->SetDefaultButton(0);
    return alert->Go() == 1;
}

/// Documents are saved in their own folder, whichever one the panel showed. If it showed another
/// one, tells and asks the user. Returns whether to save.
bool VexaView::MayReplace(const BMessage& message, const char* folder, const std::string& name) {
    entry_ref shown;
    message.FindRef("directory", &shown);
    const std::filesystem::path home = folders.Own(folder);
    std::error_code ignored;
    const std::filesystem::path chosen = std::filesystem::path(shown.directory) / shown.name;
    if (std::filesystem::equivalent(chosen, home, ignored))
        return true;
    const bool replaces = std::filesystem::exists(home / name, ignored);
    const std::string question = "The file \"" + name + "\" will be saved in the folder\n" +
                                 home.string() +
                                 (replaces ? ",\nwhere there is one already. Replace it?"
                                           : ",\nnot in the one that the panel showed.");
    return AskToWrite(question, replaces);
}

/// Asks before the sound replaces a file in which another program, or a sound that is no longer in
/// a slot, has left something else than what was read from it or written to it. Returns whether to
/// save.
bool VexaView::MayReplaceOwn() {
    const SoundFile& file = Steps().File();
    std::error_code ignored;
    if (!std::filesystem::exists(file.path, ignored))
        return true;
    const std::string digest = DigestOf(file.path);
    const History* const other = slots.Other();
    if (digest == file.digest ||
        (other && other->File().path == file.path && other->File().digest == digest))
        return true;
    return AskToWrite("The file \"" + file.path.filename().string() +
                          "\" has changed since it was opened. Replace it?",
                      true);
}

} // namespace vexa
