// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog in which the user chooses files to open, or where to save one.
#pragma once

#include "kits/application/Messenger.h"
#include "kits/interface/FilePanelDefs.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class BWindow;

namespace kits {
class FilePanelWindow;
}

/// The codes of the messages that a panel sends if it was given none, in open mode and in save
/// mode.
constexpr uint32 B_REFS_RECEIVED = FourCC("RRCV");
constexpr uint32 B_SAVE_REQUESTED = FourCC("SAVE");

/// A dialog for opening or saving files. When the user confirms a choice, the target gets a copy of
/// the panel's message with these fields:
///
/// - open mode: "refs", an entry_ref for each selected entry,
/// - save mode: "directory" (entry_ref) and "name" (string), once the name is a valid file name and
///   the user has agreed to replace a file that exists (see AskOnlyIn),
/// - always: "panel" (int32), the Id() of the panel.
///
/// The window exists from the start, hidden. Its first child holds the views "PoseView" (the list),
/// "HScrollBar", "VScrollBar", "CountVw" (the number of listed entries), "cancel button", "default
/// button" and, in save mode, "text view" (the file name). Window thread.
class BFilePanel : private kits::FilePanelOwner {
  public:
    /// A null target means the application, a null directory the user's home folder, and 0 as
    /// `nodeFlavors` files only; with B_DIRECTORY_NODE a selected folder can be the result too.
    /// Takes ownership of the message, which may be null. The target is copied; the filter must
    /// outlive the panel. The panel hides itself after a result if `hideWhenDone` is true.
    explicit BFilePanel(file_panel_mode mode = B_OPEN_PANEL, const BMessenger* target = nullptr,
                        const entry_ref* directory = nullptr, uint32 nodeFlavors = 0,
                        bool multipleSelection = true, BMessage* message = nullptr,
                        BRefFilter* filter = nullptr, bool modal = false, bool hideWhenDone = true);
    ~BFilePanel() override;
    BFilePanel(const BFilePanel&) = delete;
    BFilePanel& operator=(const BFilePanel&) = delete;

    // Hooks.

    /// Called when the panel has been hidden, after a result or because the user has cancelled it.
    void WasHidden() override {}
    /// Called when the selection has changed.
    void SelectionChanged() override {}
    /// Sends the result to the target. `message` is a copy that may be changed.
    virtual void SendMessage(const BMessenger* to, BMessage* message);

    /// Returns the window, or null after the application has ended.
    BWindow* Window() const;
    /// Returns the panel's id, which is unique within this run of the program.
    int32 Id() const { return id; }
    /// Returns the panel that has sent the message, or null if it no longer exists or no panel sent
    /// it.
    static BFilePanel* SenderOf(const BMessage& message);

    /// Sets the target by copying the messenger.
    void SetTarget(const BMessenger& next) { target = next; }
    const BMessenger& Target() const { return target; }
    /// Sets the panel's message by copying it.
    void SetMessage(const BMessage* next) { message = *next; }
    const BMessage& Message() const { return message; }

    /// While the panel shows the folder `path`, it also lists the files of the folder `beneath`,
    /// except those whose names occur in `path` too. The "refs" of a result say in which folder
    /// each lies. It must be called before the panel is shown.
    void SetBeneath(const char* path, const char* beneath);
    /// Sets the folder to list. If the panel is hidden, a folder that cannot be read is reported
    /// when the panel is next shown, and the nearest readable folder above it is listed. If the
    /// panel is shown, it is reported at once and the present folder stays.
    void SetPanelDirectory(const char* path);
    void SetPanelDirectory(const entry_ref* ref);
    void GetPanelDirectory(entry_ref* ref) const;
    /// Sets the name in the text field of a panel in save mode.
    void SetSaveText(std::string_view name);
    std::string SaveText() const;
    /// Save mode: makes the panel ask before replacing a file only while it shows `folder`. This is
    /// for a target that always saves in `folder`, whichever folder is shown.
    void AskOnlyIn(const std::filesystem::path& folder) { askOnlyIn = folder; }
    /// Save mode: sets an ending that is appended to names without it, unless a file with the typed
    /// name exists.
    void SetEnding(const std::string& next) { ending = next; }

    /// Shows the panel on the current desktop and reads its folder again.
    void Show();
    void Hide();
    bool IsShowing() const;

    /// Restarts GetNextSelectedRef with the present selection.
    void Rewind();
    /// Gives the next selected entry, or returns B_ENTRY_NOT_FOUND after the last one.
    status_t GetNextSelectedRef(entry_ref* ref);

  private:
    const BWindow* Asker() const override;
    bool AsksIn(const std::filesystem::path& folder) const override;
    const std::string& Ending() const override { return ending; }
    BMessage NewResult() const override { return message; }
    bool Deliver(BMessage result) override;
    void WindowGone() override { window = nullptr; }

    int32 id;
    BMessenger target;
    BMessage message;
    bool hideWhenDone;
    /// The only folder in which the user is asked before a file is replaced; empty means every
    /// folder.
    std::filesystem::path askOnlyIn;
    std::string ending;
    kits::FilePanelWindow* window;
    std::vector<entry_ref> refs;
    std::size_t next = 0;
};
