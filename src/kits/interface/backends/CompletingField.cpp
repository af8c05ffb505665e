// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/CompletingField.h"

#include "kits/interface/Control.h"
#include "kits/interface/backends/ViewWidget.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QFile>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QStringListModel>

namespace kits {

CompletingField::CompletingField(BRect frame, const char* name, const char* label, float labelWidth,
                                 uint32 resizingMode)
    : BView(frame, name, resizingMode, B_WILL_DRAW | B_NAVIGABLE),
      line(new QLineEdit),
      completer(new QCompleter(line)),
      words(new QStringListModel(completer)) {
    completer->setModel(words);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    line->setCompleter(completer);
    line->setFont(ToQt(*be_plain_font()));
    line->setAccessibleName(label);
    completer->popup()->setFont(line->font());

    auto* both = new QWidget;
    auto* layout = new QHBoxLayout(both);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    if (labelWidth > 0) {
        auto* caption = new QLabel(label);
        caption->setFont(line->font());
        caption->setBuddy(line);
        caption->setFixedWidth(static_cast<int>(labelWidth));
        layout->addWidget(caption);
    }
    layout->addWidget(line, 1);
    both->setFocusProxy(line);
    Widget().SetContent(both);

    // Sets the words before the completer reads them: the completer connects to the same signal
    // only when the line gets the focus, so its slot runs after this one.
    QObject::connect(line, &QLineEdit::textEdited, line, [this](const QString& text) {
        if (completions)
            words->setStringList(completions(text));
    });
    QObject::connect(line, &QLineEdit::returnPressed, line, [this] {
        // The Enter that accepts a completion does nothing else.
        const QAbstractItemView& popup = *completer->popup();
        const bool completes = popup.isVisible() && popup.currentIndex().isValid();
        if (onConfirmed && !completes)
            onConfirmed();
    });
}

std::string CompletingField::Text() const {
    return line->text().toStdString();
}

void CompletingField::SetText(const QString& text) {
    line->setText(text);
}

void CompletingField::SelectStem() {
    const qsizetype dot = line->text().lastIndexOf('.');
    line->setSelection(0, static_cast<int>(dot > 0 ? dot : line->text().size()));
}

} // namespace kits
