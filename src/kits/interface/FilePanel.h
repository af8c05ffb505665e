// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog in which a person chooses files to open, or where to save one.
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

/// The code of the message that a panel sends which was given none of its own.
constexpr uint32 B_REFS_RECEIVED = FourCC("RRCV");
constexpr uint32 B_SAVE_REQUESTED = FourCC("SAVE");

/// What a person has confirmed goes to the target, as a copy of the panel's message with
///
/// - open mode: "refs", an entry_ref for each selected entry,
/// - save mode: "directory" (entry_ref) and "name" (string), once the name is one that a file can
///   have and the person agrees to replace a file that exists (AskOnlyIn),
/// - always: "panel" (int32), the Id() of the panel.
///
/// The window is there from the start, hidden; its first child holds the views "PoseView" (the
/// list), "HScrollBar", "VScrollBar", "CountVw" (how many entries are listed), "cancel button",
/// "default button" and, in save mode, "text view" (the file name). Window thread.
class BFilePanel : private kits::FilePanelOwner {
  public:
    /// A null target is the application, a null directory the person's home folder, no flavours
    /// are files. With B_DIRECTORY_NODE a selected folder can be the result. Takes the message,
    /// which may be null; the target is copied, the filter must outlive the panel. After a result
    /// the panel hides itself if `hideWhenDone`.
    explicit BFilePanel(file_panel_mode mode = B_OPEN_PANEL, const BMessenger* target = nullptr,
                        const entry_ref* directory = nullptr, uint32 nodeFlavors = 0,
                        bool multipleSelection = true, BMessage* message = nullptr,
                        BRefFilter* filter = nullptr, bool modal = false, bool hideWhenDone = true);
    ~BFilePanel() override;
    BFilePanel(const BFilePanel&) = delete;
    BFilePanel& operator=(const BFilePanel&) = delete;

    // Hooks.

    /// The panel has been hidden, after a result or because the person has cancelled it.
    void WasHidden() override {}
    /// Another entry has been selected, or none.
    void SelectionChanged() override {}
    /// Sends the result; `message` is a copy that may be changed.
    virtual void SendMessage(const BMessenger* to, BMessage* message);

    /// Returns the window, null once the application has gone.
    BWindow* Window() const;
    /// Differs from that of every other panel of this run.
    int32 Id() const { return id; }
    /// The panel that has sent the message; null if it has gone, or if no panel sent it.
    static BFilePanel* SenderOf(const BMessage& message);

    /// The messenger is copied.
    void SetTarget(const BMessenger& next) { target = next; }
    const BMessenger& Target() const { return target; }
    /// The message is copied.
    void SetMessage(const BMessage* next) { message = *next; }
    const BMessage& Message() const { return message; }

    /// While the panel shows the folder `path`, it lists the files of the folder `beneath` too,
    /// except those whose names are in `path` as well; "refs" say where each lies. It must be
    /// called before the panel is shown.
    void SetBeneath(const char* path, const char* beneath);
    /// A folder that cannot be read is reported when the panel is next on the screen, and the
    /// nearest one above it that can be read is shown.
    void SetPanelDirectory(const char* path);
    void SetPanelDirectory(const entry_ref* ref);
    void GetPanelDirectory(entry_ref* ref) const;
    /// Sets the name in the text field of a panel in save mode.
    void SetSaveText(std::string_view name);
    std::string SaveText() const;
    /// Save mode: whether to replace a file is asked only while that folder is shown, for a target
    /// that saves there whatever is shown.
    void AskOnlyIn(const std::filesystem::path& folder) { askOnlyIn = folder; }
    /// Save mode: a name that ends otherwise gets that ending, unless there is a file of that name.
    void SetEnding(const std::string& next) { ending = next; }

    /// Shows the panel on the current desktop, with the folder read anew.
    void Show();
    void Hide();
    bool IsShowing() const;

    /// GetNextSelectedRef starts anew, with what is selected now.
    void Rewind();
    /// B_ENTRY_NOT_FOUND when all have been given.
    status_t GetNextSelectedRef(entry_ref* ref);

  private:
    bool AsksIn(const std::filesystem::path& folder) const override;
    const std::string& Ending() const override { return ending; }
    BMessage NewResult() const override { return message; }
    bool Deliver(BMessage result) override;
    void WindowGone() override { window = nullptr; }

    int32 id;
    BMessenger target;
    BMessage message;
    bool hideWhenDone;
    /// The folder in which a person is asked before a file is replaced; empty means every folder.
    std::filesystem::path askOnlyIn;
    std::string ending;
    kits::FilePanelWindow* window;
    std::vector<entry_ref> refs;
    std::size_t next = 0;
};
