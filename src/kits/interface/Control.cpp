// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Control.h"

#include "kits/interface/Colors.h"
#include "kits/interface/Window.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/interface/backends/WindowWidget.h"

#include <QApplication>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QFontMetricsF>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QTextLayout>
#include <QToolTip>
#include <QWheelEvent>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace {

/// The frame of a text field and of a button, in pixels.
constexpr float kBorder = 1;
/// Fields narrower than this, in pixels, hold numbers, which must be readable as a whole.
constexpr int kNarrow = 48;
/// The margin that the toolkit leaves on each side of a field's text, in pixels.
constexpr int kTextMargin = 2;

} // namespace

namespace kits {

float FittingFontSize(std::string_view label, float width) {
    BFont font = *be_plain_font();
    while (font.Size() > 8 && font.StringWidth(label) > width)
        font.SetSize(font.Size() - 1);
    return font.Size();
}

} // namespace kits

class BTextControl::Line : public QLineEdit {
  public:
    explicit Line(BTextControl& field) : field(&field) {}

    /// Detaches the line from its field, which is being deleted. The line then loses the focus, and
    /// that must not count as leaving the field.
    void Retire() {
        field = nullptr;
        blockSignals(true);
    }

    Stepping stepping;
    std::function<void()> down;
    std::function<bool()> escape;
    std::optional<std::string> reset;
    bool escapeClears = false;
    /// Drawn by paintEvent, because the toolkit's own placeholder is too pale to read.
    QString placeholder;

    /// Reduces the font of a narrow field so that its whole text is visible.
    void FitText() {
        if (width() >= kNarrow)
            return;
        const std::string said = text().toStdString();
        const float room = float(width()) - 2 * kBorder;
        BFont font = *be_plain_font();
        // A long text also uses the margins, except for one pixel for the cursor.
        const bool tight = font.StringWidth(said) > room - 2 * kTextMargin;
        const int margin = tight ? 1 - kTextMargin : 0;
        setTextMargins(margin, 0, margin, 0);
        if (tight)
            font.SetSize(kits::FittingFontSize(said, room - 2));
        setFont(kits::ToQt(font));
    }

    /// Returns the text with each line break, and the white space around it, replaced by a space.
    static QString Joined(QString lines) {
        static const QRegularExpression breaks("\\s*[\n\r\u2028\u2029]\\s*");
        return lines.replace(breaks, " ");
    }

    /// Joins the lines of text that was dropped or that the context menu has pasted: the field
    /// shows only one line, and copied text often ends with a line break. There is nothing to undo
    /// afterwards, because an undo would bring the breaks back.
    void JoinLines() {
        if (Joined(text()) == text())
            return;
        QString before = text().left(cursorPosition());
        const QString after = Joined(text().mid(cursorPosition()));
        if (after.isEmpty())
            before = before.trimmed();
        before = Joined(before);
        setText(before + after);
        setCursorPosition(int(before.size()));
    }

    /// Pastes the clipboard's text as one line, as a step that can be undone.
    void PasteLine() {
        const QString copied = QGuiApplication::clipboard()->text();
        insert(Joined(copied) == copied ? copied : Joined(copied.trimmed()));
    }

    /// Gives the keyboard to whoever has it when the user is done with the field.
    void GiveKeyboard() {
        if (field->heir)
            field->heir->MakeFocus();
        else if (auto* around = dynamic_cast<kits::WindowWidget*>(window()))
            around->TakeKeyboardFrom(*this);
    }

    /// Returns the position of the character in pixels from the left edge of the field.
    float PositionOf(qsizetype index) const {
        // A layout like the editor's own, which rounds the widths of letters.
        QTextLayout layout(text(), font());
        layout.beginLayout();
        const QTextLine whole = layout.createLine();
        layout.endLayout();
        const double shift = whole.cursorToX(int(index)) - whole.cursorToX(cursorPosition());
        return static_cast<float>(cursorRect().center().x() + shift);
    }

    /// Returns true if the field is too narrow for its text.
    bool IsCut() const {
        /// The toolkit's own margins at both sides of the text, in pixels.
        constexpr double kMargins = 4;
        QStyleOptionFrame option;
        initStyleOption(&option);
        const QRect inside = style()->subElementRect(QStyle::SE_LineEditContents, &option, this);
        const double room = inside.marginsRemoved(textMargins()).width() - kMargins;
        return QFontMetricsF(font()).horizontalAdvance(text()) > room;
    }

  protected:
    /// The tip over a text that is cut begins with the whole text.
    bool event(QEvent* event) override {
        if (event->type() != QEvent::ToolTip || !field || !IsCut())
            return QLineEdit::event(event);
        const std::string tip = *field->ToolTip() ? field->ToolTip() : field->Help();
        const QString whole = text() + (tip.empty() ? "" : "\n") + kits::ToQt(tip);
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), kits::TipText(whole),
                           this);
        return true;
    }
    void resizeEvent(QResizeEvent* event) override {
        QLineEdit::resizeEvent(event);
        FitText();
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Escape) {
            if (!escape || !escape())
                setText(escapeClears ? QString() : QString::fromStdString(field->confirmed));
            GiveKeyboard();
            // The window may use the key too.
            event->ignore();
        } else if ((event->matches(QKeySequence::Undo) &&
                    text().toStdString() == field->confirmed) ||
                   (event->matches(QKeySequence::Redo) && !isRedoAvailable())) {
            // There is no typing to undo or redo, so the window gets the key.
            event->ignore();
        } else if (event->matches(QKeySequence::Paste)) {
            PasteLine();
        } else if (stepping && (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)) {
            Step(event->key() == Qt::Key_Up ? 1 : -1, event->modifiers());
        } else if (down && event->key() == Qt::Key_Down) {
            down();
        } else {
            QLineEdit::keyPressEvent(event);
            // What has the keyboard now must not take the same key.
            if (field->heir && field->heir->IsFocus())
                event->accept();
        }
    }
    void paintEvent(QPaintEvent* event) override {
        /// The distance from the left edge to the hint in pixels, and the opacity of the hint.
        constexpr int kLeft = 4;
        constexpr float kInk = 0.72F;
        QLineEdit::paintEvent(event);
        if (placeholder.isEmpty() || !text().isEmpty())
            return;
        QPainter painter(this);
        QColor ink = kits::ToQt(kits::PresentControlColors().text);
        ink.setAlphaF(kInk);
        painter.setPen(ink);
        painter.drawText(rect().adjusted(kLeft, 0, -kLeft, 0), Qt::AlignVCenter | Qt::AlignLeft,
                         placeholder);
    }
    void wheelEvent(QWheelEvent* event) override {
        /// The angle of one step of an ordinary wheel, in the toolkit's units of 1/8 degree.
        constexpr int kStep = 120;
        if (!stepping || !isEnabled())
            return event->ignore();
        // Touch pads send fractions of a step, which add up.
        turned += event->angleDelta().y();
        const int steps = turned / kStep;
        turned -= steps * kStep;
        if (steps != 0)
            Step(steps, event->modifiers());
        event->accept();
    }
    void focusInEvent(QFocusEvent* event) override {
        QLineEdit::focusInEvent(event);
        clicked = event->reason() == Qt::MouseFocusReason;
    }
    // The line edit would insert the URL of a dropped file. Ignored, so that the window can take
    // the file.
    void dragEnterEvent(QDragEnterEvent* event) override {
        if (event->mimeData()->hasUrls())
            return event->ignore();
        QLineEdit::dragEnterEvent(event);
        CopyFromElsewhere(*event);
    }
    void dragMoveEvent(QDragMoveEvent* event) override {
        QLineEdit::dragMoveEvent(event);
        CopyFromElsewhere(*event);
    }
    void dropEvent(QDropEvent* event) override {
        QLineEdit::dropEvent(event);
        CopyFromElsewhere(*event);
    }
    // The press that brings the focus arrives after focusInEvent and would place the cursor.
    void mousePressEvent(QMouseEvent* event) override {
        if (reset && event->modifiers() & Qt::ControlModifier)
            return field->Replace(*reset);
        QLineEdit::mousePressEvent(event);
        if (std::exchange(clicked, false))
            selectAll();
    }
    void focusOutEvent(QFocusEvent* event) override {
        QLineEdit::focusOutEvent(event);
        // A menu or another window takes the focus only for a time.
        if (event->reason() != Qt::PopupFocusReason &&
            event->reason() != Qt::ActiveWindowFocusReason)
            setCursorPosition(0);
        if (field && field->end)
            field->Target().SendMessage(*field->end);
    }

  private:
    /// Makes the drop of text from another program a copy: for a move that would delete its text.
    static void CopyFromElsewhere(QDropEvent& event) {
        if (event.isAccepted() && !event.source())
            event.setDropAction(Qt::CopyAction);
    }
    void Step(int steps, Qt::KeyboardModifiers modifiers) {
        field->Replace(stepping(text().toStdString(), steps, kits::FromQt(modifiers)));
    }

    BTextControl* field;
    /// The turn of the wheel that does not make a whole step yet.
    int turned = 0;
    /// True between a focus event caused by a press and the press itself.
    bool clicked = false;
};

BControl::BControl(BRect frame, const char* name, const char* label, BMessage* message,
                   uint32 resizingMode, uint32 flags)
    : BView(frame, name, resizingMode, flags), BInvoker(message), label(label ? label : "") {}

void BControl::AttachedToWindow() {
    if (!Target().IsValid())
        SetTarget(Window());
}

void BControl::SetContent(QWidget* content) {
    const bool navigable = Flags() & B_NAVIGABLE;
    content->setFocusPolicy(navigable ? Qt::StrongFocus : Qt::ClickFocus);
    content->setAccessibleName(kits::ToQt(label.empty() ? Name() : Label()));
    content->setFont(kits::ToQt(*be_plain_font()));
    Widget().SetContent(content);
}

void BControl::SetEnabled(bool enabled) {
    Widget().Content()->setEnabled(enabled);
}

bool BControl::IsEnabled() const {
    return Widget().Content()->isEnabled();
}

BButton::BButton(BRect frame, const char* name, const char* label, BMessage* message,
                 uint32 resizingMode, uint32 flags)
    : BControl(frame, name, label, message, resizingMode, flags),
      button(new QPushButton(kits::ToQt(Label()))) {
    button->setAutoDefault(true);
    QObject::connect(button, &QPushButton::clicked, button, [this] { Invoke(); });
    SetContent(button);
    const float room = frame.Width() - 2 * kBorder - 4;
    SetFontSize(kits::FittingFontSize(Label(), room));
}

void BButton::SetFontSize(float size) {
    BFont font = *be_plain_font();
    font.SetSize(size);
    button->setFont(kits::ToQt(font));
}

void BButton::SetLabel(const char* next) {
    NoteLabel(next);
    button->setText(kits::ToQt(next));
}

void BButton::SetOnDark() {
    button->setProperty("onDark", true);
    button->setAutoDefault(false);
}

void BButton::SetDown(bool down) {
    if (down == button->isChecked() && down == button->isCheckable())
        return;
    const QSignalBlocker silence(button);
    button->setCheckable(down);
    button->setChecked(down);
}

void BButton::Press() {
    button->click();
}

void BButton::MakeDefault() {
    button->setDefault(true);
}

BTextControl::BTextControl(BRect frame, const char* name, const char* label, const char* initial,
                           BMessage* message, uint32 resizingMode, uint32 flags)
    : BControl(frame, name, label, message, resizingMode, flags),
      line(new Line(*this)),
      confirmed(initial) {
    // No limit, so that a text from a document is never cut off.
    line->setMaxLength(std::numeric_limits<int>::max());
    line->setText(kits::ToQt(confirmed));
    line->setCursorPosition(0);
    QObject::connect(line, &QLineEdit::returnPressed, line, [this] {
        Confirm();
        line->GiveKeyboard();
    });
    QObject::connect(line, &QLineEdit::editingFinished, line, [this] {
        if (Text() != confirmed)
            Confirm();
    });
    QObject::connect(line, &QLineEdit::textEdited, line, [this] { line->JoinLines(); });
    QObject::connect(line, &QLineEdit::textChanged, line, [this] {
        changes++;
        line->FitText();
        if (modification)
            Target().SendMessage(*modification);
    });
    if (*Label()) {
        auto* both = new QWidget;
        auto* layout = new QHBoxLayout(both);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(7);
        auto* caption = new QLabel(kits::ToQt(Label()));
        caption->setFont(kits::ToQt(*be_plain_font()));
        caption->setBuddy(line);
        layout->addWidget(caption);
        layout->addWidget(line, 1);
        SetContent(both);
        both->setFocusProxy(line);
        line->setAccessibleName(kits::ToQt(Label()));
        line->setFont(kits::ToQt(*be_plain_font()));
    } else {
        SetContent(line);
    }
    ResizeTo(frame.Width(), PreferredHeight());
}

BTextControl::~BTextControl() {
    line->Retire();
}

const char* BTextControl::Text() const {
    text = line->text().toStdString();
    return text.c_str();
}

void BTextControl::SetText(const char* next) {
    confirmed = next;
    changes++;
    // If the field already shows this text, the cursor keeps its place.
    if (confirmed == Text())
        return;
    const QSignalBlocker silence(line);
    line->setText(kits::ToQt(confirmed));
    line->setCursorPosition(0);
    line->FitText();
}

void BTextControl::Type(const char* next) {
    line->setText(kits::ToQt(next));
}

void BTextControl::SetPlaceholder(std::string_view text) {
    line->placeholder = kits::ToQt(text);
    line->update();
}

std::string BTextControl::Placeholder() const {
    return line->placeholder.toStdString();
}

void BTextControl::SelectAll() {
    line->selectAll();
}

void BTextControl::Confirm() {
    confirmed = Text();
    changes++;
    if (!Message())
        return;
    BMessage message = *Message();
    message.AddString("be:text", confirmed);
    Target().SendMessage(message);
}

void BTextControl::SetModificationMessage(BMessage* message) {
    modification.reset(message);
}

bool BTextControl::IsEdited() const {
    return Text() != confirmed;
}

float BTextControl::PositionOf(std::size_t byte) const {
    const std::string_view shown = Text();
    const QString before = kits::ToQt(shown.substr(0, byte));
    return line->PositionOf(before.size());
}

/// Has the effect of the user typing and confirming the text; does nothing if that text is
/// confirmed already.
void BTextControl::Replace(const std::string& next) {
    if (next == Text() && !IsEdited())
        return;
    line->setText(kits::ToQt(next));
    line->setCursorPosition(0);
    Confirm();
}

void BTextControl::SetStepping(Stepping next) {
    line->stepping = std::move(next);
}

void BTextControl::SetReset(std::string_view next) {
    line->reset = next;
}

void BTextControl::SetEscapeClears() {
    line->escapeClears = true;
}

void BTextControl::SetEscapeAction(std::function<bool()> next) {
    line->escape = std::move(next);
}

void BTextControl::TabAfter(const BView& view) {
    QWidget::setTabOrder(&view.Widget(), line);
}

void BTextControl::SetDownAction(std::function<void()> next) {
    line->down = std::move(next);
}

void BTextControl::SetEndMessage(BMessage* message) {
    end.reset(message);
}

void BTextControl::SetEnabled(bool enabled) {
    line->setEnabled(enabled);
}

bool BTextControl::IsFocus() const {
    return line->hasFocus();
}

void BTextControl::MarkWrong(bool wrong) {
    if (line->property("wrong").toBool() == wrong)
        return;
    line->setProperty("wrong", wrong);
    line->style()->unpolish(line);
    line->style()->polish(line);
}

float BTextControl::PreferredHeight() {
    font_height height;
    be_plain_font()->GetHeight(&height);
    return std::ceil(height.ascent + height.descent) + 2 * kBorder;
}

float BTextControl::BaselineOffset() {
    font_height height;
    be_plain_font()->GetHeight(&height);
    return kBorder + height.ascent;
}
