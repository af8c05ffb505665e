// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/BitmapBarView.h"

namespace vexa {

namespace {

float WidthOf(const std::unique_ptr<BBitmap>& bitmap) {
    return bitmap ? bitmap->Bounds().Width() : 0;
}

} // namespace

BitmapBarView::BitmapBarView(BBitmap* left, BBitmap* middle, BBitmap* right, BRect frame,
                             const char* name, uint32 resizingMode, uint32 flags)
    : BView(frame, name, resizingMode, flags),
      leftBitmap(left),
      middleBitmap(middle),
      rightBitmap(right) {
    SetViewColor(B_TRANSPARENT_COLOR);
}

void BitmapBarView::ShowEnds(bool left, bool right) {
    if (left == showsLeft && right == showsRight)
        return;
    showsLeft = left;
    showsRight = right;
    Invalidate();
}

float BitmapBarView::LeftWidth() const {
    return WidthOf(leftBitmap);
}

float BitmapBarView::RightWidth() const {
    return WidthOf(rightBitmap);
}

void BitmapBarView::Draw(BRect) {
    const BRect bounds = ConvertFromParent(Frame());
    const float leftWidth = showsLeft ? LeftWidth() : 0;
    const float rightWidth = showsRight ? RightWidth() : 0;
    if (showsLeft)
        DrawBitmap(leftBitmap.get(), {bounds.left, bounds.top, leftWidth, bounds.bottom});
    DrawBitmap(middleBitmap.get(),
               {leftWidth, bounds.top, bounds.right - rightWidth + 1, bounds.bottom});
    // Drawn last, to cover the last column of the middle image.
    if (showsRight)
        DrawBitmap(rightBitmap.get(),
                   {bounds.right - rightWidth, bounds.top, bounds.right, bounds.bottom});
}

void BitmapBarView::FrameResized(float, float) {
    Invalidate();
}

} // namespace vexa
