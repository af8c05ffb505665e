// SPDX-License-Identifier: GPL-3.0-or-later
// A line of text that offers completions while it is being typed.
#pragma once

#include "kits/interface/View.h"

#include <QStringList>
#include <functional>
#include <string>

class QCompleter;
class QLineEdit;
class QStringListModel;

namespace kits {

class CompletingField : public BView {
  public:
    /// The label, which may be empty, stands left of the field in a column of that width.
    CompletingField(BRect frame, const char* name, const char* label, float labelWidth,
                    uint32 resizingMode);

    /// Called when a person presses Enter.
    std::function<void()> onConfirmed;
    /// The words to offer for a text; asked whenever the text is edited.
    std::function<QStringList(const QString&)> completions;

    std::string Text() const;
    void SetText(const QString& text);
    /// Selects the text up to its extension, which seldom is what changes.
    void SelectStem();

    /// The toolkit's field.
    QLineEdit& Line() { return *line; }

  private:
    QLineEdit* line;
    QCompleter* completer;
    QStringListModel* words;
};

} // namespace kits
