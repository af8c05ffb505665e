// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Control.h"

#include "kits/interface/Colors.h"
#include "kits/interface/Window.h"
#include "kits/interface/backends/ViewWidget.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QStyle>
#include <QTextLayout>
#include <QWheelEvent>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace {

/// The frame of a text field and of a button, in pixels.
constexpr float kBorder = 1;
/// Fields below this width hold numbers, in pixels: what they say has to be read whole.
constexpr int kNarrow = 48;
/// What the toolkit leaves free beside a field's text on each side, in pixels.
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

    /// On its way out, it gives the focus up, which must not count as leaving the field.
    void Retire() {
        field = nullptr;
        blockSignals(true);
    }

    Stepping stepping;
    std::optional<std::string> reset;
    /// Drawn here, as the toolkit's own is too pale to read.
    QString placeholder;

    /// Writes what a narrow field says so small that all of it is seen.
    void FitText() {
        if (width() >= kNarrow)
            return;
        const std::string said = text().toStdString();
        const float room = float(width()) - 2 * kBorder;
        BFont font = *be_plain_font();
        // The sides are used too where the text needs them, but for the cursor's pixel.
        const bool tight = font.StringWidth(said) > room - 2 * kTextMargin;
        const int margin = tight ? 1 - kTextMargin : 0;
        setTextMargins(margin, 0, margin, 0);
        if (tight)
            font.SetSize(kits::FittingFontSize(said, room - 2));
        setFont(kits::ToQt(font));
    }

    /// Makes one line of what was pasted or dropped: more cannot be seen, and what is copied
    /// elsewhere often ends with a line break.
    void JoinLines() {
        static const QRegularExpression breaks("\\s*[\n\r\u2028\u2029]\\s*");
        if (!text().contains(breaks))
            return;
        QString before = text().left(cursorPosition());
        QString after = text().mid(cursorPosition());
        if (after.isEmpty())
            before = before.trimmed();
        before.replace(breaks, " ");
        after.replace(breaks, " ");
        setText(before + after);
        setCursorPosition(int(before.size()));
    }

    /// Where the character is shown, in pixels from the left.
    float PositionOf(qsizetype index) const {
        // The layout is the editor's, which rounds the widths of letters.
        QTextLayout layout(text(), font());
        layout.beginLayout();
        const QTextLine whole = layout.createLine();
        layout.endLayout();
        const double shift = whole.cursorToX(int(index)) - whole.cursorToX(cursorPosition());
        return static_cast<float>(cursorRect().center().x() + shift);
    }

  protected:
    void resizeEvent(QResizeEvent* event) override {
        QLineEdit::resizeEvent(event);
        FitText();
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Escape) {
            setText(QString::fromStdString(field->confirmed));
            clearFocus();
            // The window may have a use for the key too.
            event->ignore();
        } else if ((event->matches(QKeySequence::Undo) &&
                    text().toStdString() == field->confirmed) ||
                   (event->matches(QKeySequence::Redo) && !isRedoAvailable())) {
            // There is no typing to take back.
            event->ignore();
        } else if (stepping && (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)) {
            Step(event->key() == Qt::Key_Up ? 1 : -1, event->modifiers());
        } else {
            QLineEdit::keyPressEvent(event);
        }
    }
    void paintEvent(QPaintEvent* event) override {
        /// From the left edge to the text, in pixels; a text's share of a hint's ink.
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
        /// What a step of a usual wheel counts in the toolkit.
        constexpr int kStep = 120;
        if (!stepping || !isEnabled())
            return event->ignore();
        // Touch pads turn by little.
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
    // A file would become its address; the window may have a use for it.
    void dragEnterEvent(QDragEnterEvent* event) override {
        if (event->mimeData()->hasUrls())
            event->ignore();
        else
            QLineEdit::dragEnterEvent(event);
    }
    // The press that enters the field comes after the focus, and places the cursor.
    void mousePressEvent(QMouseEvent* event) override {
        if (reset && event->modifiers() & Qt::ControlModifier)
            return field->Replace(*reset);
        QLineEdit::mousePressEvent(event);
        if (std::exchange(clicked, false))
            selectAll();
    }
    void focusOutEvent(QFocusEvent* event) override {
        QLineEdit::focusOutEvent(event);
        if (field && field->end)
            field->Target().SendMessage(*field->end);
    }

  private:
    void Step(int steps, Qt::KeyboardModifiers modifiers) {
        field->Replace(stepping(text().toStdString(), steps, kits::FromQt(modifiers)));
    }

    BTextControl* field;
    /// The turn of the wheel that is not a whole step yet.
    int turned = 0;
    /// A press has brought the focus and has not been seen yet.
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
    // What a document holds is not cut.
    line->setMaxLength(std::numeric_limits<int>::max());
    line->setText(kits::ToQt(confirmed));
    line->setCursorPosition(0);
    QObject::connect(line, &QLineEdit::returnPressed, line, [this] {
        Confirm();
        // The keyboard is the window's again.
        line->clearFocus();
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
    // Where it stands there already the cursor stays too.
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

/// As if the user had typed and confirmed it; nothing where it is the same.
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
