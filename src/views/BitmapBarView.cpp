// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/BitmapBarView.h"

#include "views/Theme.h"

#include <cmath>

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

void BitmapBarView::Draw(BRect) {
    const BRect bounds = ConvertFromParent(Frame());
    const float leftWidth = WidthOf(leftBitmap);
    const float rightWidth = WidthOf(rightBitmap);
    DrawBitmap(leftBitmap.get(), {bounds.left, bounds.top, leftWidth, bounds.bottom});
    DrawBitmap(middleBitmap.get(),
               {leftWidth, bounds.top, bounds.right - rightWidth + 1, bounds.bottom});
    // Last, so that it covers the middle image's last column.
    DrawBitmap(rightBitmap.get(),
               {bounds.right - rightWidth, bounds.top, bounds.right, bounds.bottom});
    font_height height;
    GetFontHeight(&height);
    const float middle = (leftWidth + bounds.right - rightWidth) / 2;
    SetHighColor(Colors().barText);
    DrawString(caption, {std::floor(middle - StringWidth(caption) / 2),
                         std::floor((bounds.top + bounds.bottom + height.ascent) / 2)});
}

void BitmapBarView::SetCaption(const std::string& next) {
    if (next == caption)
        return;
    caption = next;
    Invalidate();
}

void BitmapBarView::FrameResized(float, float) {
    Invalidate();
}

} // namespace vexa
