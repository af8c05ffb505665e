// SPDX-License-Identifier: GPL-3.0-or-later
// The envelope editor.
#pragma once

#include "kits/interface/View.h"
#include "synth/Envelope.h"

#include <optional>

namespace vexa {

/// Draws an envelope as a line through its points and lets the user add points (press the primary
/// button beside a point), drag them and delete them (press another button on a point). A change is
/// heard when a button is released in the view or the pointer leaves it. One second is equally wide
/// in the key-down part, at the left, and in the release part. Window thread.
class EnvView : public BView, public Envelope {
  public:
    EnvView(BRect frame, const char* name, float minimum, float maximum, float timeRange,
            uint32 resizingMode, rgb_color viewColor, rgb_color lineColor);

    /// Where a point is shown.
    BPoint EnvPoint2View(const EnvPoint& point) const;
    /// The point that would be shown there: its value is within the bounds and its time at most the
    /// end of its part, but it may be before the beginning.
    EnvPoint View2EnvPoint(BPoint where) const;

    /// Takes other points, which are heard and shown at once; a drag ends.
    void SetPoints(const std::vector<EnvPoint>& next);
    void SetColors(rgb_color behind, rgb_color line);
    rgb_color LineColor() const { return lineColor; }

    void Draw(BRect update) override;
    void MouseDown(BPoint where) override;
    void MouseUp(BPoint where) override;
    void MouseMoved(BPoint where, uint32 transit, const BMessage* dragged) override;
    void FrameResized(float width, float height) override;

  private:
    /// A point that is being dragged, and the times between which it can be dragged.
    struct Drag {
        std::size_t point;
        float minT;
        float maxT;
    };

    float PixelsPerSecond() const;
    /// Where the release part starts.
    float ReleaseX() const;
    Drag DragOf(std::size_t index) const;
    /// The part of the view that moving the point can change.
    BRect Band(const Drag& drag) const;
    void Publish();

    std::optional<Drag> selected;
    rgb_color lineColor;
};

} // namespace vexa
