// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MainMenu.h"

#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "app/VexaWindow.h"
#include "kits/interface/Menu.h"
#include "views/plane/PlaneOverlay.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>

namespace vexa {

namespace {

BMenuItem* Add(BMenu& menu, const std::string& label, uint32 code, const BHandler& target,
               const char* keys = "") {
    auto* item = new BMenuItem(label.c_str(), new BMessage(code));
    item->SetKeys(keys);
    menu.AddItem(item);
    item->SetTarget(&target);
    return item;
}

void AddRecent(BMenu& menu, const VexaView& view) {
    TextList recent = view.Remembered().Get(kRecentSetting);
    if (recent.empty())
        return;
    // Several windows together may have written more entries to the file.
    recent.resize(std::min(recent.size(), kMostRecent));
    auto* files = new BMenu("Open Recent");
    for (const std::string& path : recent) {
        auto* message = new BMessage(kOpenRecentCode);
        message->AddString("path", path);
        const std::filesystem::path file = path;
        auto* item = new BMenuItem(
            (file.stem().string() + "   –   " + file.parent_path().filename().string()).c_str(),
            message);
        files->AddItem(item);
        item->SetTarget(&view);
    }
    menu.AddItem(new BMenuItem(files));
}

/// Adds the tuning menu: the present scale and keyboard map by file name, and the choices.
void AddTuning(BMenu& menu, const VexaView& view) {
    const TuningChoice& tuning = view.KeyTuning().Chosen();
    const auto named = [](const char* label, const std::optional<std::filesystem::path>& file) {
        return file ? std::string(label) + " (" + file->filename().string() + ")…"
                    : std::string(label) + "…";
    };
    auto* choices = new BMenu("Tuning");
    Add(*choices, named("Scala Scale", tuning.scale), kLoadScaleCode, view)
        ->SetMarked(tuning.scale.has_value());
    Add(*choices, named("Keyboard Map", tuning.keymap), kLoadKeymapCode, view)
        ->SetMarked(tuning.keymap.has_value());
    choices->AddItem(new BSeparatorItem);
    Add(*choices, "Twelve Equal Steps", kEqualStepsCode, view)
        ->SetMarked(!tuning.scale && !tuning.keymap);
    menu.AddItem(new BMenuItem(choices));
}

void AddPlane(BMenu& menu, const PlaneOverlay& plane) {
    auto* looks = new BMenu("Plane");
    plane.AddLooks(*looks);
    menu.AddItem(new BMenuItem(looks));
}

void AddSizes(BMenu& menu, VexaWindow& window) {
    const int present = window.MainView().Remembered().Get(kSizeSetting);
    auto* sizes = new BMenu("Size");
    for (const int percent : {100, 125, 150, 175, 200}) {
        auto* message = new BMessage(kSizeCode);
        message->AddInt32("percent", percent);
        auto* item = new BMenuItem((std::to_string(percent) + " %").c_str(), message);
        sizes->AddItem(item);
        item->SetTarget(&window);
        item->SetMarked(percent == present);
    }
    menu.AddItem(new BMenuItem(sizes));
}

} // namespace

void FillMainMenu(BMenu& menu, VexaWindow& window) {
    VexaView& view = window.MainView();
    menu.RemoveAll();
    Add(menu, "Open…", kOpenCode, view);
    AddRecent(menu, view);
    Add(menu, "Save Sound", kSaveAgainCode, view, "Ctrl+S");
    Add(menu, "Save Sound As…", kSaveSoundCode, view);
    Add(menu, "About This Sound", kDescribeCode, window, "Ctrl+I");
    Add(menu, "Save Picture…", kSavePictureCode, view);
    Add(menu, "Show My Sounds", kShowSoundsCode, window);
    menu.AddItem(new BSeparatorItem);
    Add(menu, "Initial Sound", kInitialSoundCode, view);
    Add(menu, "Mutate", kMutateCode, view);
    const std::string other = view.PresentSlot() == 'A' ? "B" : "A";
    Add(menu, "Compare with " + other, kSwitchSlotCode, view);
    Add(menu, "Copy to " + other, kCopySlotCode, view);
    menu.AddItem(new BSeparatorItem);
    if (view.HasGraph()) {
        AddTuning(menu, view);
        Add(menu, "Program Changes Choose Sounds", kFollowProgramsCode, view)
            ->SetMarked(view.FollowsPrograms());
        menu.AddItem(new BSeparatorItem);
    }
    Add(menu, "Sounds", kShowDrawerCode, window, "F9")
        ->SetMarked(window.IsShown(VexaWindow::Part::Drawer));
    Add(menu, "Strip for Playing", kShowStripCode, window, "F10")
        ->SetMarked(window.IsShown(VexaWindow::Part::Strip));
    AddPlane(menu, view.Overlay());
    AddSizes(menu, window);
    Add(menu, "Dark Colours", kDarkCode, window)->SetMarked(window.IsDark());
    Add(menu, "Classic Look", kClassicCode, window, "F11")->SetMarked(window.IsClassic());
    menu.AddItem(new BSeparatorItem);
    Add(menu, "Help", kHelpCode, window, "F1");
    Add(menu, "About Vexa", kAboutCode, window);
}

} // namespace vexa
