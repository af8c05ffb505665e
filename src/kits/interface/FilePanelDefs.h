// SPDX-License-Identifier: GPL-3.0-or-later
// The types that a file panel and its window share.
#pragma once

#include "kits/support/EntryRef.h"
#include "kits/support/Message.h"

#include <filesystem>
#include <string>

struct stat;
class BWindow;

enum file_panel_mode { B_OPEN_PANEL, B_SAVE_PANEL };

// Kinds of entries; several are given as their sum.

constexpr uint32 B_FILE_NODE = 1;
constexpr uint32 B_DIRECTORY_NODE = 4;

/// Decides which files a panel lists.
class BRefFilter {
  public:
    virtual ~BRefFilter() = default;
    /// Returns true if the file is listed. It is not called for folders. `status` is that of the
    /// link's target if the file is a symbolic link.
    virtual bool Filter(const entry_ref* ref, const struct stat* status) = 0;
};

namespace kits {

/// The owner of a file panel's window, as the window sees it. Window thread.
class FilePanelOwner {
  public:
    virtual ~FilePanelOwner() = default;
    /// Returns the window that gets the results; null if another target gets them.
    virtual const BWindow* Asker() const = 0;
    /// Returns true if the user must be asked before a file in that folder is replaced.
    virtual bool AsksIn(const std::filesystem::path& folder) const = 0;
    /// Returns the ending of all saved names; empty allows any.
    virtual const std::string& Ending() const = 0;
    /// Returns a new result without the fields of the user's choice.
    virtual BMessage NewResult() const = 0;
    /// Delivers a complete result; the owner may be deleted meanwhile. Returns true if the window
    /// must hide now.
    virtual bool Deliver(BMessage result) = 0;
    /// Called when the selection has changed.
    virtual void SelectionChanged() = 0;
    /// Called when the window has been hidden.
    virtual void WasHidden() = 0;
    /// Called when the window is being deleted, for instance because the application ends.
    virtual void WindowGone() = 0;
};

} // namespace kits
