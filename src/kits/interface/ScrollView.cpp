// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/ScrollView.h"

#include "kits/interface/backends/ViewWidget.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>

namespace {

// In pixels.

constexpr int kBarWidth = 12;
/// Round what has got the focus.
constexpr int kSight = 8;

/// The area gives a bar the width that it asks for, whatever it is fixed to.
class Bar : public QScrollBar {
  public:
    using QScrollBar::QScrollBar;
    QSize sizeHint() const override { return {kBarWidth, kBarWidth}; }
};

/// Tab goes on through what is shown; the area itself has no use for the keyboard.
class Area : public QScrollArea {
  public:
    Area() {
        setFrameShape(QFrame::NoFrame);
        setFocusPolicy(Qt::NoFocus);
        setHorizontalScrollBar(new Bar(Qt::Horizontal));
        setVerticalScrollBar(new Bar(Qt::Vertical));
    }

  protected:
    // The keys that scroll belong to the window.
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

// The target is the view's, not the toolkit's.
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

/// A bar in one direction takes room from the other.
void BScrollView::Fit() {
    if (!target)
        return;
    float width = Bounds().Width();
    float height = Bounds().Height();
    const bool isTooLow = height < leastHeight;
    if (width - (isTooLow ? kBarWidth : 0) < leastWidth)
        height -= kBarWidth;
    if (height < leastHeight)
        width -= kBarWidth;
    target->ResizeTo(std::max(width, leastWidth), std::max(height, leastHeight));
    // The frame of a view knows nothing of how far it is scrolled.
    target->Widget().move(-area->horizontalScrollBar()->value(),
                          -area->verticalScrollBar()->value());
}
