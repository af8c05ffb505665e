// SPDX-License-Identifier: GPL-3.0-or-later
// These are the types that a file panel and its window share.
#pragma once

#include "kits/support/EntryRef.h"
#include "kits/support/Message.h"

#include <filesystem>
#include <string>

struct stat;

enum file_panel_mode { B_OPEN_PANEL, B_SAVE_PANEL };

// Kinds of entries, added up.

constexpr uint32 B_FILE_NODE = 1;
constexpr uint32 B_DIRECTORY_NODE = 4;

/// Says which files a panel lists.
class BRefFilter {
  public:
    virtual ~BRefFilter() = default;
    /// Folders are not asked about. `status` is that of what a link points to.
    virtual bool Filter(const entry_ref* ref, const struct stat* status) = 0;
};

namespace kits {

/// The owner of a file panel's window, as the window sees it. Window thread.
class FilePanelOwner {
  public:
    virtual ~FilePanelOwner() = default;
    /// True where a person is to be asked before a file in that folder is replaced.
    virtual bool AsksIn(const std::filesystem::path& folder) const = 0;
    /// What a name that is saved ends with; empty for any.
    virtual const std::string& Ending() const = 0;
    /// A result without what the person has chosen.
    virtual BMessage NewResult() const = 0;
    /// Takes a whole result, upon which the owner may go. Returns whether the window hides now.
    virtual bool Deliver(BMessage result) = 0;
    /// Another entry has been selected, or none.
    virtual void SelectionChanged() = 0;
    /// The window has been hidden.
    virtual void WasHidden() = 0;
    /// The window is being deleted, as when the application ends.
    virtual void WindowGone() = 0;
};

} // namespace kits
