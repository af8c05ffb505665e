// SPDX-License-Identifier: GPL-3.0-or-later
// The list of a folder's entries in a file panel.
#pragma once

#include "kits/interface/backends/FolderModel.h"

#include <QTreeView>
#include <functional>
#include <string>
#include <vector>

namespace kits {

/// Keeps what is selected when the list is sorted, filtered or read anew.
class FileList : public QTreeView {
  public:
    /// The model must outlive the list.
    FileList(FolderModel& model, bool multipleSelection);

    /// Called at Enter or a double click.
    std::function<void()> onActivated;
    /// Called at Backspace, by which a person asks for the folder above.
    std::function<void()> onParent;
    std::function<void()> onSelection;

    /// Returns the selected entries in the order of the list.
    std::vector<const FolderModel::Entry*> Selected() const;
    /// Selects that entry alone, and brings it into view. Where it is not listed, none is selected
    /// and the first has the keyboard.
    void Select(const std::string& name);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

  private:
    void Remember();
    void Restore();

    FolderModel& model;
    std::vector<std::string> names;
    std::string current;
    bool restoring = false;
};

} // namespace kits
