// SPDX-License-Identifier: GPL-3.0-or-later
// A bar of three images, of which the middle one is stretched between the others.
#pragma once

#include "kits/interface/View.h"

#include <memory>

namespace vexa {

/// Shows three images in a bar and takes ownership of them. Each may be null, which counts as an
/// image of width 0. Window thread.
class BitmapBarView : public BView {
  public:
    BitmapBarView(BBitmap* left, BBitmap* middle, BBitmap* right, BRect frame, const char* name,
                  uint32 resizingMode, uint32 flags);

    /// Shows or leaves out the images at the ends; the middle one takes the place of what is left
    /// out.
    void ShowEnds(bool left, bool right);
    /// Return the widths of the images at the ends, whether they are shown or not, in pixels.
    float LeftWidth() const;
    float RightWidth() const;

    void Draw(BRect update) override;
    void FrameResized(float width, float height) override;

  private:
    std::unique_ptr<BBitmap> leftBitmap;
    std::unique_ptr<BBitmap> middleBitmap;
    std::unique_ptr<BBitmap> rightBitmap;
    bool showsLeft = true;
    bool showsRight = true;
};

} // namespace vexa
