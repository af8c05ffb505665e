// SPDX-License-Identifier: GPL-3.0-or-later
// A view that shows a part of a larger one.
#pragma once

#include "kits/interface/View.h"

class QScrollArea;

/// Scrolls a larger view inside itself, its target. It has scroll bars where the target is larger
/// than itself. The wheel scrolls unless a view inside the target uses the wheel, and a view that
/// gets the focus is scrolled into sight. Window thread.
class BScrollView : public BView {
  public:
    BScrollView(BRect frame, const char* name, uint32 resizingMode = B_FOLLOW_LEFT | B_FOLLOW_TOP);
    ~BScrollView() override;

    /// Sets the target and takes ownership of it; it can be called once. The target always fills
    /// the visible area, but is never smaller than `leastWidth` and `leastHeight`, which count as
    /// BRect::Width and Height do, by more than BWindow::kRounding.
    void SetTarget(BView* view, float leastWidth, float leastHeight);
    /// Changes the target's least size, counted as in SetTarget.
    void SetLeastSize(float width, float height);

    void FrameResized(float width, float height) override;

    /// Returns the thickness of a scroll bar in pixels.
    static float BarWidth();

  private:
    void Fit();

    QScrollArea* area;
    BView* target = nullptr;
    float leastWidth = 0;
    float leastHeight = 0;
};
