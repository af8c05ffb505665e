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
/// button beside a point), drag them, and delete them (press another button on a point). A change
/// becomes audible when a button is released in the view or the pointer leaves it. The key-down
/// part, at the left, and the release part have the same scale of time.
///
/// A point under the pointer or being dragged shows its time and value; a double click on it opens
/// a field for them. With the keyboard focus, the arrow keys move the chosen point, finely with
/// Shift and coarsely with Ctrl. Alt with Left or Right chooses another point, Insert adds one
/// after it, Delete deletes it, and Enter opens the field for its numbers. Enter in that field
/// gives the keyboard back to the envelope. A text there that is no time and value is marked and
/// stays until it is mended, or given up with Escape or by a press in the envelope. Window thread.
class EnvView : public BView, public Envelope {
  public:
    EnvView(BRect frame, const char* name, float minimum, float maximum, float timeRange,
            uint32 resizingMode, rgb_color viewColor, rgb_color lineColor);

    /// Returns the position of a point in the view's pixels.
    BPoint EnvPoint2View(const EnvPoint& point) const;
    /// Returns the envelope point at a position in the view. Its value is within the bounds and its
    /// time at most the end of its part, but the time may be negative.
    EnvPoint View2EnvPoint(BPoint where) const;

    /// Replaces the points, which are heard and shown at once. A drag in progress ends.
    void SetPoints(const std::vector<EnvPoint>& next);
    void SetColors(rgb_color behind, rgb_color line);
    rgb_color LineColor() const { return lineColor; }

    /// Returns the index of the chosen point, which the keys move.
    std::size_t ChosenPoint() const { return chosen; }
    /// Moves a point to the time `t` (seconds from the start of its part) and `value`, or as near
    /// as its neighbours and the bounds allow. The change is heard at once.
    void MovePoint(std::size_t index, float t, float value);
    /// Returns the time and value of a point as a text for the user, for example "0.25 s, 0.8", or
    /// "+0.25 s, 0.8" for a point of the release part.
    std::string Label(std::size_t index) const;
    kits::AccessibleThing Describe() const override;
    std::size_t CountParts() const override { return Points().size(); }
    kits::AccessibleThing DescribePart(std::size_t index) const override;
    void Activate(std::optional<std::size_t> part) override;
    void SetNumber(std::optional<std::size_t> part, double value) override;

    /// Returns the text field for a point's numbers, or null while it is closed.
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
    /// A point that can be dragged, and the range of times that it can be dragged to.
    struct Drag {
        std::size_t point;
        float minT;
        float maxT;
    };

    float PixelsPerSecond() const;
    /// Returns the start of the release part in pixels from the left.
    float ReleaseX() const;
    Drag DragOf(std::size_t index) const;
    /// Returns the part of the view that dragging the point can change.
    BRect Band(const Drag& drag) const;
    void Publish();
    std::optional<std::size_t> PointAt(BPoint where) const;
    void Hover(std::optional<std::size_t> point);
    bool Nudge(const kits::KeyPress& press);
    void AddBehind(std::size_t index);
    void Remove(std::size_t index);
    std::string Numbers(std::size_t index) const;
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
    /// True after a second press on a point, which becomes a double click if the button is released
    /// without a movement.
    bool asking = false;
    BTextControl* entry = nullptr;
    std::size_t entryPoint = 0;
    /// The text in the field is not a time and a value: it stays when the keyboard goes elsewhere.
    bool entryWrong = false;
    rgb_color lineColor;
};

} // namespace vexa
