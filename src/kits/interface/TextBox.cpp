// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/TextBox.h"

#include "kits/interface/backends/ViewWidget.h"

#include <QKeyEvent>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QStyle>
#include <QTextDocument>

namespace kits {

namespace {

/// The margin around the text in pixels, by which it begins where that of a line does.
constexpr double kBoxMargin = 2;

} // namespace

class TextBox::Lines : public QPlainTextEdit {
  public:
    explicit Lines(TextBox& box) : box(&box) {
        setTabChangesFocus(true);
        document()->setDocumentMargin(kBoxMargin);
        connect(this, &QPlainTextEdit::textChanged, this, [this] { restored = false; });
    }

    /// Detaches the lines from their box, which is being deleted. They then lose the focus, and
    /// that must not count as leaving the box.
    void Retire() { box = nullptr; }

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        const bool undoes = event->matches(QKeySequence::Undo);
        const bool mayUndo = box->IsEdited() || restored;
        const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
        if (isEnter && event->modifiers() & Qt::ControlModifier) {
            box->Confirm();
            clearFocus();
        } else if (event->key() == Qt::Key_Escape && box->IsEdited()) {
            Restore();
        } else if (event->key() == Qt::Key_Escape ||
                   (undoes && !(mayUndo && document()->isUndoAvailable())) ||
                   (event->matches(QKeySequence::Redo) && !document()->isRedoAvailable())) {
            event->ignore();
        } else if (event->matches(QKeySequence::InsertLineSeparator)) {
            insertPlainText("\n");
            ensureCursorVisible();
        } else {
            QPlainTextEdit::keyPressEvent(event);
        }
    }
    void focusOutEvent(QFocusEvent* event) override {
        QPlainTextEdit::focusOutEvent(event);
        // A menu takes the focus only for a time.
        if (box && event->reason() != Qt::PopupFocusReason && box->IsEdited())
            box->Confirm();
    }
    // The window may take dropped files.
    bool canInsertFromMimeData(const QMimeData* data) const override {
        return data->hasText() && !data->hasUrls();
    }

  private:
    /// Puts the confirmed text back, as a step of typing.
    void Restore() {
        QTextCursor all(document());
        all.select(QTextCursor::Document);
        all.insertText(ToQt(box->confirmed));
        restored = true;
    }

    TextBox* box;
    /// True after Restore until the text changes.
    bool restored = false;
};

TextBox::TextBox(BRect frame, const char* name, BMessage* message, uint32 resizingMode,
                 uint32 flags)
    : BControl(frame, name, nullptr, message, resizingMode, flags), lines(new Lines(*this)) {
    SetContent(lines);
}

TextBox::~TextBox() {
    lines->Retire();
}

/// Returns the text of the lines. toPlainText would make other characters of some, such as spaces
/// of those that do not break.
std::string TextBox::Shown() const {
    QString text = lines->document()->toRawText();
    return text.replace(QChar::ParagraphSeparator, '\n').toStdString();
}

void TextBox::SetText(std::string_view text) {
    // If the box already shows this text, the cursor and the typing to undo stay.
    if (Text() != text)
        lines->setPlainText(ToQt(text));
    confirmed = text;
    shown = Shown();
}

void TextBox::Confirm() {
    confirmed = Text();
    shown = Shown();
    if (!Message())
        return;
    BMessage message = *Message();
    message.AddString("be:text", confirmed);
    Target().SendMessage(message);
}

void TextBox::MarkWrong(bool wrong) {
    if (lines->property("wrong").toBool() == wrong)
        return;
    lines->setProperty("wrong", wrong);
    lines->style()->unpolish(lines);
    lines->style()->polish(lines);
}

} // namespace kits
