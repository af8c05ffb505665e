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
    /// The label is shown left of the field in a column of `labelWidth` pixels; if that is 0, it is
    /// only the name for screen readers.
    CompletingField(BRect frame, const char* name, const char* label, float labelWidth,
                    uint32 resizingMode);

    /// Called when the user presses Enter.
    std::function<void()> onConfirmed;
    /// Returns the words to offer for a text. It is called whenever the user has edited the text.
    std::function<QStringList(const QString&)> completions;

    std::string Text() const;
    void SetText(const QString& text);
    /// Selects the text without its file name extension, which users seldom change.
    void SelectStem();

    /// The toolkit's field.
    QLineEdit& Line() { return *line; }

  private:
    QLineEdit* line;
    QCompleter* completer;
    QStringListModel* words;
};

} // namespace kits
