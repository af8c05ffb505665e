// SPDX-License-Identifier: GPL-3.0-or-later
// The list of a folder's entries in a file panel.
#pragma once

#include "kits/interface/backends/FolderModel.h"

#include <QTreeView>
#include <functional>
#include <string>
#include <vector>

namespace kits {

/// A list that keeps its selection when it is sorted, filtered or read again.
class FileList : public QTreeView {
  public:
    /// The model must outlive the list.
    FileList(FolderModel& model, bool multipleSelection);

    /// Called on Enter or a double click.
    std::function<void()> onActivated;
    /// Called on Backspace, with which the user asks for the parent folder.
    std::function<void()> onParent;
    std::function<void()> onSelection;

    /// Returns the selected entries in the order of the list.
    std::vector<const FolderModel::Entry*> Selected() const;
    /// Selects that entry alone and scrolls to it. If it is not listed, nothing is selected and the
    /// first entry becomes the current one.
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
