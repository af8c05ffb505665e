// SPDX-License-Identifier: GPL-3.0-or-later
// The envelope editor.
#pragma once

#include "kits/interface/View.h"
#include "synth/Envelope.h"

#include <optional>
#include <string>
#include <vector>

class BTextControl;

namespace vexa {

/// Draws an envelope as a line through its points and lets the user add points (press the primary
/// button beside a point), drag them and delete them (press another button on a point). A change is
/// heard when a button is released in the view or the pointer leaves it. One second is equally wide
/// in the key-down part, at the left, and in the release part.
///
/// A point under the pointer, or dragged, shows its time and value; a double click takes them as
/// numbers. With the keyboard's focus the arrows move the chosen point, Shift finer and Ctrl
/// coarser, Alt with Left and Right chooses another one, Insert adds one behind it, Delete deletes
/// it and Enter takes numbers. Window thread.
class EnvView : public BView, public Envelope {
  public:
    EnvView(BRect frame, const char* name, float minimum, float maximum, float timeRange,
            uint32 resizingMode, rgb_color viewColor, rgb_color lineColor);

    /// Returns where a point is shown, in the view's pixels.
    BPoint EnvPoint2View(const EnvPoint& point) const;
    /// The point that would be shown there: its value is within the bounds and its time at most the
    /// end of its part, but it may be before the beginning.
    EnvPoint View2EnvPoint(BPoint where) const;

    /// Takes other points, which are heard and shown at once; a drag ends.
    void SetPoints(const std::vector<EnvPoint>& next);
    void SetColors(rgb_color behind, rgb_color line);
    rgb_color LineColor() const { return lineColor; }

    /// Returns the number of the point that the keyboard moves.
    std::size_t ChosenPoint() const { return chosen; }
    /// Moves a point to that time (seconds from the begin of its part) and value, as near as its
    /// neighbours and the bounds allow; heard at once.
    void MovePoint(std::size_t index, float t, float value);
    /// Returns time and value for a person, as in "0.25 s, 0.8", for a release point "+0.25 s,
    /// 0.8".
    std::string Label(std::size_t index) const;
    kits::AccessibleThing Describe() const override;
    std::size_t CountParts() const override { return Points().size(); }
    kits::AccessibleThing DescribePart(std::size_t index) const override;
    void Activate(std::optional<std::size_t> part) override;
    void SetNumber(std::optional<std::size_t> part, double value) override;

    /// The field for numbers; null while there is none.
    BTextControl* Entry() const { return entry; }

    void Draw(BRect update) override;
    void MouseDown(BPoint where) override;
    void MouseUp(BPoint where) override;
    void MouseMoved(BPoint where, uint32 transit, const BMessage* dragged) override;
    bool KeyDown(const kits::KeyPress& press) override;
    void FocusChanged() override { Invalidate(); }
    void MessageReceived(BMessage* message) override;
    void FrameResized(float width, float height) override;

  private:
    /// A point that is being dragged, and the times between which it can be dragged.
    struct Drag {
        std::size_t point;
        float minT;
        float maxT;
    };

    float PixelsPerSecond() const;
    /// Returns where the release part starts, in pixels from the left.
    float ReleaseX() const;
    Drag DragOf(std::size_t index) const;
    /// The part of the view that moving the point can change.
    BRect Band(const Drag& drag) const;
    void Publish();
    std::optional<std::size_t> PointAt(BPoint where) const;
    void Hover(std::optional<std::size_t> point);
    bool Nudge(const kits::KeyPress& press);
    void AddBehind(std::size_t index);
    void Remove(std::size_t index);
    void AskForNumbers(std::size_t index);
    void TakeNumbers();
    void CloseEntry();
    std::vector<BPoint> Curve2View() const;
    void DrawHairlines();
    void DrawSmooth();
    void DrawHandles();
    void DrawLabel(std::size_t index);
    void DrawKeyMarker();

    std::optional<Drag> selected;
    std::optional<std::size_t> hovered;
    std::size_t chosen = 0;
    /// A second press on a point becomes a double click where it is let go without moving.
    bool asking = false;
    BTextControl* entry = nullptr;
    std::size_t entryPoint = 0;
    rgb_color lineColor;
};

} // namespace vexa
