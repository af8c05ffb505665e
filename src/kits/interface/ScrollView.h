// SPDX-License-Identifier: GPL-3.0-or-later
// A view that shows a part of a larger one.
#pragma once

#include "kits/interface/View.h"

class QScrollArea;

/// A view with a larger one inside, which it scrolls. It has bars where that one, its target, is
/// larger than itself. The wheel moves the target where nothing in it has another use for the
/// wheel, and what gets the focus comes into sight. Window thread.
class BScrollView : public BView {
  public:
    BScrollView(BRect frame, const char* name, uint32 resizingMode = B_FOLLOW_LEFT | B_FOLLOW_TOP);
    ~BScrollView() override;

    /// Takes the view that is shown, once. It is as large as it says, but not smaller than what
    /// can be seen, and than the least size given here (as BRect::Width and Height count it).
    void SetTarget(BView* view, float leastWidth, float leastHeight);
    /// Sets another least size, counted as in SetTarget.
    void SetLeastSize(float width, float height);

    void FrameResized(float width, float height) override;

    /// Returns how thick a bar is, in pixels.
    static float BarWidth();

  private:
    void Fit();

    QScrollArea* area;
    BView* target = nullptr;
    float leastWidth = 0;
    float leastHeight = 0;
};
