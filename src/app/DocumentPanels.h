// SPDX-License-Identifier: GPL-3.0-or-later
// The file panels in which the user chooses documents, and samples, pictures and tunings.
#pragma once

#include "kits/application/Messenger.h"
#include "kits/interface/FilePanel.h"
#include "kits/storage/ProgramFolder.h"

#include <memory>
#include <string>
#include <vector>

namespace vexa {

/// The panels that are open. Window thread.
class DocumentPanels {
  public:
    /// The panels send their results to `target`. `folders` outlives the object.
    DocumentPanels(const kits::ProgramFolders& folders, const BMessenger& target);

    /// Shows a panel for files of one of the program's folders, or, if `folder` is null, for those
    /// that the user keeps elsewhere. `result` is the code of the result's message, and `name` the
    /// name that the panel proposes to save as. If a panel with that result is open, it is brought
    /// to the front instead; a name that is typed there stays, unless another one is proposed now.
    void Show(file_panel_mode mode, uint32 result, const char* folder, const char* title,
              const std::string& name);
    /// Removes the panel that has sent the result.
    void Remove(const BMessage& result);

  private:
    const kits::ProgramFolders& folders;
    const BMessenger target;
    /// Declared before the panels, which use it.
    std::unique_ptr<BRefFilter> filter;
    struct Open {
        std::unique_ptr<BFilePanel> panel;
        /// The name that was proposed last.
        std::string name;
    };
    std::vector<Open> panels;
};

} // namespace vexa
