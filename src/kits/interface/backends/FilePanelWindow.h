// SPDX-License-Identifier: GPL-3.0-or-later
// The window of a file panel, with its views and their behaviour.
#pragma once

#include "kits/interface/FilePanelDefs.h"
#include "kits/interface/Window.h"
#include "kits/interface/backends/FolderModel.h"

#include <QFileSystemWatcher>
#include <filesystem>
#include <string>
#include <vector>

class BButton;

namespace kits {

class CompletingField;
class FileList;
class TextView;

/// The window lives until its panel is deleted. Closing it only hides it.
class FilePanelWindow : public BWindow {
  public:
    FilePanelWindow(FilePanelOwner& panel, file_panel_mode mode, uint32 nodeFlavors,
                    bool multipleSelection, BRefFilter* filter, bool modal);
    ~FilePanelWindow() override;

    bool QuitRequested() override;
    void MessageReceived(BMessage* message) override;

    /// Called when the panel is being deleted; the window quits.
    void Abandon();

    /// These two set the content of the list. SetBeneath takes effect when the folder is next read.
    /// SetFolder reads the folder at once if the window is shown, otherwise when it is shown next.
    void SetBeneath(const std::filesystem::path& upper, const std::filesystem::path& lower) {
        model.SetBeneath(upper, lower);
    }
    void SetFolder(const std::filesystem::path& next);
    const std::filesystem::path& Folder() const { return folder; }
    /// Sets the name and selects the part of it that typing replaces.
    void SetName(const QString& name);
    std::string NameText() const;
    std::vector<entry_ref> SelectedRefs() const;

    void Present();
    /// Hides the window and notifies the panel.
    void Dismiss();

  private:
    bool SaveMode() const { return name != nullptr; }
    void AddNavigation(BView& background);
    void AddList(BView& background);
    void AddChoices(BView& background, file_panel_mode mode);
    void AddShortcuts();

    /// Lists the folder and selects the entry `select`. If the folder cannot be read, reports the
    /// reason in an alert and returns false.
    bool Enter(const std::filesystem::path& next, const std::string& select = "");
    void EnterParent();
    void Reload();
    void ToggleHidden();
    void EditPath();
    void GoToTypedPath();
    void GoToFile(const std::filesystem::path& file);
    QStringList FoldersLike(const QString& text) const;
    QStringList NamesListed() const;

    void ListActivated();
    void SelectionChanged();
    void SelectName();
    void ShowState();
    /// Has the effect of the default button.
    void Confirm();
    void ConfirmName();
    void Send(BMessage message);
    void Complain(const std::string& text);

    /// The panel, or null once it has been deleted.
    FilePanelOwner* panel;
    uint32 flavors;
    std::filesystem::path folder;
    FolderModel model;
    FileList* list = nullptr;
    CompletingField* path = nullptr;
    /// The field of the file name; null in open mode.
    CompletingField* name = nullptr;
    BButton* parentButton = nullptr;
    BButton* defaultButton = nullptr;
    TextView* count = nullptr;
    QFileSystemWatcher watcher;
};

} // namespace kits
