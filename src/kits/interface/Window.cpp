// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/Window.h"

#include "kits/interface/backends/Embedding.h"
#include "kits/interface/backends/HeldKeys.h"
#include "kits/interface/backends/ViewWidget.h"
#include "kits/interface/backends/WindowWidget.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QPointer>
#include <QScreen>
#include <QUrl>
#include <QWindow>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>

namespace kits {

namespace {

void RecolorTree(BView& view) {
    view.ColorsChanged();
    view.Invalidate();
    for (BView* child : view.Children())
        RecolorTree(*child);
}

void PulseTree(BView& view) {
    if (view.Flags() & B_PULSE_NEEDED)
        view.Pulse();
    for (BView* child : view.Children())
        PulseTree(*child);
}

} // namespace

WindowWidget::WindowWidget(BWindow& window, Qt::WindowFlags flags)
    : QWidget(nullptr, flags), window(window) {
    // Not by Tab, because nothing would show where the keyboard is.
    setFocusPolicy(Qt::ClickFocus);
    HeldKeys::Instance();
    connect(&pulse, &QTimer::timeout, this, [this] { Pulse(); });
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (now && isAncestorOf(now))
            ForgetField();
    });
    pulse.setTimerType(Qt::PreciseTimer);
    pulse.start(500);
}

void WindowWidget::TakeKeyboardFrom(QWidget& field) {
    setFocus();
    left = &field;
}

bool WindowWidget::focusNextPrevChild(bool next) {
    const auto takesTab = [this](const QWidget& widget) {
        return isAncestorOf(&widget) && widget.focusPolicy() & Qt::TabFocus &&
               !widget.focusProxy() && widget.isEnabled() && widget.isVisibleTo(this);
    };
    const auto neighbour = [next](const QWidget& widget) {
        return next ? widget.nextInFocusChain() : widget.previousInFocusChain();
    };
    if (!left || (focusWidget() && focusWidget() != this))
        return QWidget::focusNextPrevChild(next);
    QWidget* to = neighbour(*left);
    while (to != left && !takesTab(*to))
        to = neighbour(*to);
    to->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void WindowWidget::Pulse() {
    if (window.embedding)
        window.embedding->Follow();
    BMessage message(B_PULSE);
    window.MessageReceived(&message);
    // The views of a hidden or minimized window cannot be seen and get no pulses.
    if (!isVisible() || isMinimized())
        return;
    for (std::size_t i = 0; BView* child = window.ChildAt(i); i++)
        PulseTree(*child);
}

void WindowWidget::closeEvent(QCloseEvent* event) {
    event->ignore();
    window.PostMessage(B_QUIT_REQUESTED);
}

void WindowWidget::resizeEvent(QResizeEvent* event) {
    window.Resized(float(event->size().width() - 1), float(event->size().height() - 1));
}

void WindowWidget::moveEvent(QMoveEvent* event) {
    window.frame = window.frame.OffsetToCopy(float(event->pos().x()), float(event->pos().y()));
}

// Calls the window directly instead of posting, as for a pulse: a release must end its note even
// while an alert waits for an answer.
void WindowWidget::SendKey(uint32 what, const QKeyEvent& event) {
    BMessage message(what);
    message.AddInt32("key", static_cast<int32>(event.nativeScanCode()));
    if (event.key() == Qt::Key_Escape)
        message.AddInt32("raw_char", B_ESCAPE);
    window.MessageReceived(&message);
}

void WindowWidget::keyPressEvent(QKeyEvent* event) {
    // Part of another program's window, the widget leaves it to that program what these keys do.
    if (!window.embedding &&
        (event->matches(QKeySequence::Quit) || event->matches(QKeySequence::Close))) {
        window.PostMessage(B_QUIT_REQUESTED);
        return;
    }
    const KeyPress press = FromQt(*event);
    const bool commands = press.modifiers & (B_CONTROL_KEY | B_ALT_KEY);
    if ((commands || press.key != Key::Character) && window.TakeShortcut(press))
        return;
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) {
        event->ignore();
    } else if (!event->isAutoRepeat()) {
        HeldKeys::Instance().Take(event->nativeScanCode(), *this);
        SendKey(B_KEY_DOWN, *event);
    }
}

namespace {

/// Returns the message for a window about the dropped data, or nothing if the data has neither
/// local files nor text.
std::optional<BMessage> Dropped(const QMimeData& data) {
    BMessage message(B_SIMPLE_DATA);
    for (const QUrl& url : data.urls()) {
        if (!url.isLocalFile())
            continue;
        const std::filesystem::path path = url.toLocalFile().toStdString();
        const entry_ref ref{path.parent_path(), path.filename()};
        message.AddRef("refs", &ref);
    }
    if (message.HasData("refs", B_REF_TYPE))
        return message;
    if (data.hasUrls() || !data.hasText())
        return std::nullopt;
    message.AddString("text", data.text().toStdString());
    return message;
}

} // namespace

void WindowWidget::dragEnterEvent(QDragEnterEvent* event) {
    if (!Dropped(*event->mimeData()))
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void WindowWidget::dropEvent(QDropEvent* event) {
    const std::optional<BMessage> dropped = Dropped(*event->mimeData());
    if (!dropped)
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    // Posted, because the program that the data comes from waits until this handler returns, and
    // handling the message may ask the user something.
    window.PostMessage(*dropped);
}

void WindowWidget::changeEvent(QEvent* event) {
    if (event->type() != QEvent::ActivationChange)
        return;
    BMessage message(B_WINDOW_ACTIVATED);
    message.AddInt32("active", isActiveWindow());
    window.MessageReceived(&message);
}

} // namespace kits

BWindow::BWindow(BRect frame, const char* title, window_type type, uint32 flags, uint32)
    : BLooper(title), frame(frame), title(title), flags(flags) {
    Qt::WindowFlags hints = Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                            Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint;
    if (!(flags & B_NOT_ZOOMABLE))
        hints |= Qt::WindowMaximizeButtonHint;
    widget = std::make_unique<kits::WindowWidget>(*this, hints);
    widget->setWindowTitle(kits::ToQt(this->title));
    if (type == B_MODAL_WINDOW)
        widget->setWindowModality(Qt::ApplicationModal);
    SetSizeLimits(0, 16000, 0, 16000);
    widget->setGeometry(kits::ToQt(frame));
}

BWindow::~BWindow() {
    // A deletion that is still to come must not begin again in here: what ends with the window may
    // let the toolkit handle events.
    leaving.reset();
    while (!children.empty())
        delete children.back();
}

void BWindow::Quit() {
    Hide();
    // Deferred, because the call may come from a hook of one of the window's own views. The toolkit
    // drops the call with its object: if the window is deleted otherwise, or if it quits again.
    leaving = std::make_unique<QObject>();
    QMetaObject::invokeMethod(
        leaving.get(), [this] { delete this; }, Qt::QueuedConnection);
}

void BWindow::MessageReceived(BMessage* message) {
    if (message->what == B_QUIT_REQUESTED) {
        if (!leaving && QuitRequested())
            Quit();
    } else {
        BLooper::MessageReceived(message);
    }
}

void BWindow::TakeDrops() {
    widget->setAcceptDrops(true);
}

void BWindow::ColorsChanged() {
    for (BView* child : children)
        kits::RecolorTree(*child);
}

void BWindow::AddChild(BView* child) {
    children.push_back(child);
    child->Widget().setParent(widget.get());
    child->Widget().setVisible(!child->IsHidden());
    child->SetWindow(this);
}

bool BWindow::RemoveChild(BView* child) {
    if (std::erase(children, child) == 0)
        return false;
    child->SetWindow(nullptr);
    child->Widget().setParent(nullptr);
    return true;
}

BView* BWindow::ChildAt(std::size_t index) const {
    return index < children.size() ? children[index] : nullptr;
}

BView* BWindow::FindView(std::string_view name) const {
    for (BView* child : children) {
        if (BView* found = child->FindView(name))
            return found;
    }
    return nullptr;
}

void BWindow::EmbedInto(uint32 host) {
    embedding = std::make_unique<kits::Embedding>(*widget, host);
}

void BWindow::StayAbove(const BWindow& other) {
    widget->setWindowFlag(Qt::Dialog);
    // The embedding puts dialogs above the host's window.
    if (other.embedding)
        return;
    // Both get their handles.
    widget->winId();
    other.widget->winId();
    widget->windowHandle()->setTransientParent(other.widget->windowHandle());
}

void BWindow::Show() {
    widget->show();
    // The window itself has the keyboard, and no field, until the user chooses one.
    widget->setFocus();
}

void BWindow::Hide() {
    widget->hide();
}

bool BWindow::IsHidden() const {
    return !widget->isVisible();
}

void BWindow::Activate() {
    widget->raise();
    widget->activateWindow();
}

void BWindow::SetTitle(const char* next) {
    title = next;
    widget->setWindowTitle(kits::ToQt(title));
}

void BWindow::ResizeTo(float width, float height) {
    widget->resize(int(std::ceil(width)) + 1, int(std::ceil(height)) + 1);
}

void BWindow::MoveTo(float x, float y) {
    // Not move(), which places the outer frame with the title bar.
    widget->setGeometry({QPoint(int(x), int(y)), widget->size()});
}

void BWindow::SetSizeLimits(float minWidth, float maxWidth, float minHeight, float maxHeight) {
    if (flags & B_NOT_RESIZABLE) {
        minWidth = maxWidth = frame.Width();
        minHeight = maxHeight = frame.Height();
    }
    widget->setMinimumSize(int(std::ceil(minWidth)) + 1, int(std::ceil(minHeight)) + 1);
    widget->setMaximumSize(int(std::ceil(maxWidth)) + 1, int(std::ceil(maxHeight)) + 1);
}

BRect BWindow::Room() const {
    /// The assumed height of the title bar and width of the other edges in pixels, until the window
    /// manager has reported the real ones.
    constexpr int kUsualTitle = 24;
    constexpr int kUsualEdge = 1;
    // Before the window is shown, QWidget::screen() is always the first screen.
    const QScreen* const there = QGuiApplication::screenAt(widget->geometry().center());
    const QRect free = (there ? there : widget->screen())->availableGeometry();
    const QRect outside = widget->frameGeometry();
    const QRect inside = widget->geometry();
    const bool decorated = outside != inside;
    const int above = decorated ? inside.top() - outside.top() : kUsualTitle;
    const int below = decorated ? outside.bottom() - inside.bottom() : kUsualEdge;
    const int beside = decorated ? inside.left() - outside.left() : kUsualEdge;
    return {float(free.left() + beside), float(free.top() + above), float(free.right() - beside),
            float(free.bottom() - below)};
}

void BWindow::SetWorkspaces(uint32) {
    if (IsHidden())
        return;
    // Hiding and showing a window moves it to the user's current desktop.
    widget->hide();
    widget->show();
}

void BWindow::SetPulseRate(bigtime_t rate) {
    widget->PulseTimer().start(static_cast<int>(std::max<bigtime_t>(rate, 1000) / 1000));
}

void BWindow::Resized(float width, float height) {
    const float dx = width - frame.Width();
    const float dy = height - frame.Height();
    if (dx == 0 && dy == 0)
        return;
    frame.right += dx;
    frame.bottom += dy;
    for (BView* child : children)
        child->FollowParent(dx, dy);
    FrameResized(width, height);
}
