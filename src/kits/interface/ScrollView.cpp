// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/ScrollView.h"

#include "kits/interface/Window.h"
#include "kits/interface/backends/ViewWidget.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>

namespace {

// The following are in pixels.

constexpr int kBarWidth = 12;
/// The margin to keep visible around the widget that has got the focus.
constexpr int kSight = 8;

/// The scroll area sizes a bar by its size hint, even if the bar has a fixed size.
class Bar : public QScrollBar {
  public:
    using QScrollBar::QScrollBar;
    QSize sizeHint() const override { return {kBarWidth, kBarWidth}; }
};

/// A scroll area that never takes the focus: Tab goes through the views inside it.
class Area : public QScrollArea {
  public:
    Area() {
        setFrameShape(QFrame::NoFrame);
        setFocusPolicy(Qt::NoFocus);
        setHorizontalScrollBar(new Bar(Qt::Horizontal));
        setVerticalScrollBar(new Bar(Qt::Vertical));
    }

  protected:
    // The arrow and page keys are left to the window.
    void keyPressEvent(QKeyEvent* event) override { event->ignore(); }
};

} // namespace

BScrollView::BScrollView(BRect frame, const char* name, uint32 resizingMode)
    : BView(frame, name, resizingMode, B_FRAME_EVENTS), area(new Area) {
    Widget().SetContent(area);
    QObject::connect(qApp, &QApplication::focusChanged, area, [this](QWidget*, QWidget* now) {
        if (now && area->widget() && area->widget()->isAncestorOf(now))
            area->ensureWidgetVisible(now, kSight, kSight);
    });
}

// The target belongs to the view, not to the toolkit, which must not delete it.
BScrollView::~BScrollView() {
    area->takeWidget();
}

void BScrollView::SetTarget(BView* view, float width, float height) {
    target = view;
    AddChild(view);
    area->setWidget(&view->Widget());
    view->Widget().setVisible(!view->IsHidden());
    SetLeastSize(width, height);
}

void BScrollView::SetLeastSize(float width, float height) {
    leastWidth = width;
    leastHeight = height;
    Fit();
}

void BScrollView::FrameResized(float, float) {
    Fit();
}

float BScrollView::BarWidth() {
    return kBarWidth;
}

/// Sizes the target to the visible area. A bar in one direction reduces the room in the other.
void BScrollView::Fit() {
    if (!target)
        return;
    float width = Bounds().Width();
    float height = Bounds().Height();
    const auto isTooSmall = [](float size, float least) {
        return size < least - BWindow::kRounding;
    };
    if (isTooSmall(width - (isTooSmall(height, leastHeight) ? kBarWidth : 0), leastWidth))
        height -= kBarWidth;
    if (isTooSmall(height, leastHeight))
        width -= kBarWidth;
    target->ResizeTo(isTooSmall(width, leastWidth) ? leastWidth : width,
                     isTooSmall(height, leastHeight) ? leastHeight : height);
    // Restores the scroll position, which a view's frame does not include.
    target->Widget().move(-area->horizontalScrollBar()->value(),
                          -area->verticalScrollBar()->value());
}
