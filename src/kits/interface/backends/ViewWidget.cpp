// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/ViewWidget.h"

#include "kits/interface/backends/WindowWidget.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QScopedValueRollback>
#include <QTextDocument>
#include <QWheelEvent>
#include <utility>

namespace kits {

QImage ToQt(const BBitmap& bitmap) {
    const bool alpha = bitmap.ColorSpace() == B_RGBA32;
    return {static_cast<const uchar*>(bitmap.Bits()), bitmap.Bounds().IntegerWidth() + 1,
            bitmap.Bounds().IntegerHeight() + 1, bitmap.BytesPerRow(),
            alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32};
}

namespace {

/// Returns the text with its lines broken so that none is longer than `length` characters: at
/// blanks, and within words, such as formulas, that are longer.
QString Broken(const QString& words, qsizetype length) {
    QStringList lines;
    const auto add = [&](const QString& word) {
        if (lines.back().isEmpty())
            lines.back() = word;
        else if (lines.back().size() + 1 + word.size() <= length)
            lines.back() += ' ' + word;
        else
            lines << word;
    };
    for (const QString& line : words.split('\n')) {
        lines << QString();
        for (QString word : line.split(' ')) {
            while (word.size() > length) {
                const qsizetype end = length - (word[length - 1].isHighSurrogate() ? 1 : 0);
                add(word.left(end));
                word.remove(0, end);
            }
            add(word);
        }
    }
    return lines.join('\n');
}

} // namespace

QString TipText(const QString& words) {
    /// In characters. The toolkit shows a plain text in lines as long as they come.
    constexpr qsizetype kTipWidth = 60;
    const QString lines = Broken(words, kTipWidth);
    return Qt::mightBeRichText(lines) ? Qt::convertFromPlainText(lines, Qt::WhiteSpaceNormal)
                                      : lines;
}

namespace {

BPoint Position(const QMouseEvent& event) {
    return {static_cast<float>(event.position().x()), static_cast<float>(event.position().y())};
}

} // namespace

uint32 FromQt(Qt::KeyboardModifiers modifiers) {
    return (modifiers & Qt::ShiftModifier ? B_SHIFT_KEY : 0) |
           (modifiers & Qt::ControlModifier ? B_CONTROL_KEY : 0) |
           (modifiers & Qt::AltModifier ? B_ALT_KEY : 0);
}

KeyPress FromQt(const QKeyEvent& event) {
    static constexpr struct {
        int toolkit;
        Key key;
    } kKeys[] = {
        {Qt::Key_Up, Key::Up},
        {Qt::Key_Down, Key::Down},
        {Qt::Key_Left, Key::Left},
        {Qt::Key_Right, Key::Right},
        {Qt::Key_Home, Key::Home},
        {Qt::Key_End, Key::End},
        {Qt::Key_PageUp, Key::PageUp},
        {Qt::Key_PageDown, Key::PageDown},
        {Qt::Key_Return, Key::Enter},
        {Qt::Key_Enter, Key::Enter},
        {Qt::Key_Escape, Key::Escape},
        {Qt::Key_Delete, Key::Delete},
        {Qt::Key_Backspace, Key::Backspace},
        {Qt::Key_Insert, Key::Insert},
    };
    KeyPress press;
    press.modifiers = FromQt(event.modifiers());
    press.repeat = event.isAutoRepeat();
    if (!(press.modifiers & (B_CONTROL_KEY | B_ALT_KEY)))
        press.text = event.text().toStdString();
    const int code = event.key();
    for (const auto& row : kKeys) {
        if (row.toolkit == code)
            press.key = row.key;
    }
    if (code >= Qt::Key_F1 && code <= Qt::Key_F12)
        press.key = static_cast<Key>(static_cast<int>(Key::F1) + code - Qt::Key_F1);
    // Key codes below those of the special keys are characters.
    if (press.key == Key::Other && code < Qt::Key_Escape) {
        press.key = Key::Character;
        press.character = static_cast<char32_t>(code);
    }
    return press;
}

ViewWidget::ViewWidget(BView& view) : view(view) {
    setMouseTracking(true);
    // A view paints its whole area, so the toolkit need not paint the background first.
    setAttribute(Qt::WA_OpaquePaintEvent, !(view.Flags() & B_SEE_THROUGH));
    if (view.Flags() & B_NAVIGABLE)
        setFocusPolicy(Qt::StrongFocus);
}

void ViewWidget::SetContent(QWidget* next) {
    content = next;
    content->setParent(this);
    content->setGeometry(rect());
    setFocusPolicy(Qt::NoFocus);
    setFocusProxy(content);
    // The parent shows through where the control paints nothing.
    setAttribute(Qt::WA_OpaquePaintEvent, false);
}

void ViewWidget::paintEvent(QPaintEvent* event) {
    if (content)
        return;
    QPainter current(this);
    const QScopedValueRollback rollback(painter, &current);
    if (view.ViewColor() != B_TRANSPARENT_COLOR)
        current.fillRect(event->rect(), ToQt(view.ViewColor()));
    if (view.Flags() & B_WILL_DRAW) {
        const QRect update = event->rect();
        view.Draw({float(update.left()), float(update.top()), float(update.right()),
                   float(update.bottom())});
    }
}

void ViewWidget::Note(const QMouseEvent& event) {
    pointer = Position(event);
    modifiers = FromQt(event.modifiers());
    buttons = 0;
    if (event.buttons() & Qt::LeftButton)
        buttons |= B_PRIMARY_MOUSE_BUTTON;
    if (event.buttons() & Qt::RightButton)
        buttons |= B_SECONDARY_MOUSE_BUTTON;
    if (event.buttons() & Qt::MiddleButton)
        buttons |= B_TERTIARY_MOUSE_BUTTON;
}

bool ViewWidget::Contains(BPoint point) const {
    return point.x >= 0 && point.y >= 0 && point.x < float(width()) && point.y < float(height());
}

void ViewWidget::mousePressEvent(QMouseEvent* event) {
    Press(*event, 1);
}

void ViewWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    Press(*event, 2);
}

void ViewWidget::Press(const QMouseEvent& event, int32 count) {
    Note(event);
    if (event.buttons() == event.button())
        EndPress();
    clicks = count;
    inside = pressed = true;
    // A press outside the text fields gives the keyboard back to the window.
    QWidget* focused = QApplication::focusWidget();
    if (focused && focused != this)
        focused->clearFocus();
    if (auto* around = dynamic_cast<WindowWidget*>(window()))
        around->ForgetField();
    if (view.Flags() & B_NAVIGABLE)
        setFocus(Qt::MouseFocusReason);
    view.MouseDown(pointer);
}

bool ViewWidget::Keeps() const {
    return view.Flags() & B_KEEPS_POINTER;
}

void ViewWidget::mouseReleaseEvent(QMouseEvent* event) {
    Note(*event);
    if (!buttons)
        EndPress();
}

/// Tells the view that all buttons are released, unless it knows. Also called when an event shows
/// that their release went elsewhere, for example to an alert.
void ViewWidget::EndPress() {
    if (std::exchange(pressed, false) && (Keeps() || Contains(pointer)))
        view.MouseUp(pointer);
}

// While a button is held the toolkit also reports moves outside the view, which are passed on only
// to views with B_KEEPS_POINTER.
void ViewWidget::mouseMoveEvent(QMouseEvent* event) {
    Note(*event);
    if (!buttons)
        EndPress();
    if (!Contains(pointer) && !(Keeps() && buttons)) {
        Leave();
        return;
    }
    const uint32 transit = inside ? B_INSIDE_VIEW : B_ENTERED_VIEW;
    inside = true;
    view.MouseMoved(pointer, transit, nullptr);
}

void ViewWidget::wheelEvent(QWheelEvent* event) {
    /// The angle of one step of an ordinary wheel, in the toolkit's units of 1/8 degree.
    constexpr float kStep = 120;
    pointer = {static_cast<float>(event->position().x()),
               static_cast<float>(event->position().y())};
    modifiers = FromQt(event->modifiers());
    const QPoint delta = event->angleDelta();
    const BPoint steps = {static_cast<float>(-delta.x()) / kStep,
                          static_cast<float>(delta.y()) / kStep};
    event->setAccepted(view.WheelMoved(pointer, steps));
}

void ViewWidget::keyPressEvent(QKeyEvent* event) {
    modifiers = FromQt(event->modifiers());
    event->setAccepted(hasFocus() && view.KeyDown(FromQt(*event)));
}

void ViewWidget::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    const Qt::FocusReason reason = event->reason();
    // A focus change while a mouse button is down counts as one by the mouse, because a pressed
    // view may pass the focus on.
    if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
        focusCameByKeys =
            reason != Qt::MouseFocusReason && QApplication::mouseButtons() == Qt::NoButton;
    view.FocusChanged();
    // Later, because the toolkit tells only after this event that the view has the keyboard.
    QMetaObject::invokeMethod(
        this, [this] { TellChosen(); }, Qt::QueuedConnection);
}

void ViewWidget::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    view.FocusChanged();
}

void ViewWidget::leaveEvent(QEvent*) {
    Leave();
}

void ViewWidget::Leave() {
    if (!inside)
        return;
    inside = false;
    view.MouseMoved(pointer, B_EXITED_VIEW, nullptr);
}

void ViewWidget::StartAnimation() {
    // The duration of a frame; the toolkit's timers count whole milliseconds.
    constexpr int kFrame = 16;
    if (!frames) {
        frames = std::make_unique<QTimer>();
        frames->setTimerType(Qt::PreciseTimer);
        connect(frames.get(), &QTimer::timeout, this, [this] { Animate(); });
    }
    if (frames->isActive() || !isVisible() || window()->isMinimized())
        return;
    sinceFrame.start();
    frames->start(kFrame);
}

void ViewWidget::Animate() {
    const float seconds = static_cast<float>(sinceFrame.restart()) / 1000;
    const bool seen = isVisible() && !window()->isMinimized();
    if (seen && view.Animate(seconds))
        return;
    frames->stop();
    if (!seen)
        view.AnimationStopped();
}

void ViewWidget::resizeEvent(QResizeEvent*) {
    if (content)
        content->setGeometry(rect());
}

} // namespace kits
