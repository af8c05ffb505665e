// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/ViewWidget.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QScopedValueRollback>

namespace kits {

QImage ToQt(const BBitmap& bitmap) {
    const bool alpha = bitmap.ColorSpace() == B_RGBA32;
    return {static_cast<const uchar*>(bitmap.Bits()), bitmap.Bounds().IntegerWidth() + 1,
            bitmap.Bounds().IntegerHeight() + 1, bitmap.BytesPerRow(),
            alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32};
}

namespace {

BPoint Position(const QMouseEvent& event) {
    return {static_cast<float>(event.position().x()), static_cast<float>(event.position().y())};
}

} // namespace

ViewWidget::ViewWidget(BView& view) : view(view) {
    setMouseTracking(true);
    // Every view paints its whole area, so what lies behind need not be painted first.
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void ViewWidget::SetContent(QWidget* next) {
    content = next;
    content->setParent(this);
    content->setGeometry(rect());
    setFocusProxy(content);
    // What the control leaves free shows the parent.
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
    buttons = 0;
    if (event.buttons() & Qt::LeftButton)
        buttons |= B_PRIMARY_MOUSE_BUTTON;
    if (event.buttons() & Qt::RightButton)
        buttons |= B_SECONDARY_MOUSE_BUTTON;
    if (event.buttons() & Qt::MiddleButton)
        buttons |= B_TERTIARY_MOUSE_BUTTON;
}

bool ViewWidget::Contains(BPoint point) const {
    return rect().contains(QPointF(point.x, point.y).toPoint());
}

void ViewWidget::mousePressEvent(QMouseEvent* event) {
    Note(*event);
    inside = true;
    // A press beside the text fields gives the keyboard back to the window.
    if (QWidget* focused = QApplication::focusWidget())
        focused->clearFocus();
    view.MouseDown(pointer);
}

void ViewWidget::mouseReleaseEvent(QMouseEvent* event) {
    Note(*event);
    if (Contains(pointer))
        view.MouseUp(pointer);
}

// The toolkit goes on reporting moves outside while a button is held, views do not want to know.
void ViewWidget::mouseMoveEvent(QMouseEvent* event) {
    Note(*event);
    if (!Contains(pointer)) {
        Leave();
        return;
    }
    const uint32 transit = inside ? B_INSIDE_VIEW : B_ENTERED_VIEW;
    inside = true;
    view.MouseMoved(pointer, transit, nullptr);
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

void ViewWidget::resizeEvent(QResizeEvent*) {
    if (content)
        content->setGeometry(rect());
}

} // namespace kits
