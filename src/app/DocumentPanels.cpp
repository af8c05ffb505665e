// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DocumentPanels.h"

#include "kits/interface/Window.h"
#include "kits/storage/FileName.h"

#include <filesystem>
#include <utility>

namespace vexa {

namespace {

/// Hides the user's files that are mere copies of shipped ones.
class NoCopies : public BRefFilter {
  public:
    explicit NoCopies(const kits::ProgramFolders& folders) : folders(folders) {}
    bool Filter(const entry_ref* ref, const struct stat*) override {
        return !folders.IsCopy(std::filesystem::path(ref->directory) / ref->name);
    }

  private:
    const kits::ProgramFolders& folders;
};

} // namespace

DocumentPanels::DocumentPanels(const kits::ProgramFolders& folders, const BMessenger& target)
    : folders(folders), target(target), filter(std::make_unique<NoCopies>(folders)) {}

void DocumentPanels::Show(file_panel_mode mode, uint32 result, const char* folder,
                          const char* title, const std::string& name) {
    // Cancelled panels are no longer needed.
    std::erase_if(panels, [](const Open& open) { return !open.panel->IsShowing(); });
    for (Open& open : panels) {
        if (open.panel->Message().what != result)
            continue;
        if (open.name != name)
            open.panel->SetSaveText(open.name = name);
        return open.panel->Show();
    }
    auto panel = std::make_unique<BFilePanel>(mode, &target, nullptr, B_FILE_NODE, false,
                                              new BMessage(result), filter.get(), false, true);
    if (folder)
        panel->SetPanelDirectory(folders.Own(folder).c_str());
    // The user's and the shipped files can be loaded; only the user's can be replaced.
    if (folder && mode == B_OPEN_PANEL)
        panel->SetBeneath(folders.Own(folder).c_str(), folders.Shipped(folder).c_str());
    panel->Window()->SetTitle(title);
    // In other folders the panel would ask about a file that is not written; whoever takes the
    // result asks instead.
    if (folder)
        panel->AskOnlyIn(folders.Own(folder));
    // The lists show only files with this ending.
    if (mode == B_SAVE_PANEL) {
        panel->SetEnding(kits::kDocumentEnding);
        panel->SetSaveText(name);
    }
    panel->Show();
    panels.push_back({std::move(panel), name});
}

void DocumentPanels::Remove(const BMessage& result) {
    const BFilePanel* sender = BFilePanel::SenderOf(result);
    std::erase_if(panels, [sender](const Open& open) { return open.panel.get() == sender; });
}

} // namespace vexa
