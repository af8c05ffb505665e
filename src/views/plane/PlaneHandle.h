// SPDX-License-Identifier: GPL-3.0-or-later
// A handle on the plane that the user can drag.
#pragma once

#include "kits/interface/View.h"
#include "views/plane/OrbitNumbers.h"

#include <optional>
#include <span>

namespace vexa {

class PlaneOverlay;

/// A handle and the numbers that it changes by movements to the right and up.
struct PlaneHandleRow {
    const char* name;
    /// The numbers that the handle changes; at least one is set.
    std::optional<OrbitNumber> x, y;
    const char* tip;

    OrbitNumber First() const { return x ? *x : *y; }
};
/// Returns the handles in the order in which the Tab key reaches them.
std::span<const PlaneHandleRow> PlaneHandles();

/// A handle changes its numbers by the mouse or, while it has the focus, by the arrow keys, finely
/// with Shift and coarsely with Ctrl. It is visible while PlaneOverlay::ShowsHandles() is true.
/// Window thread.
class PlaneHandle : public BView {
  public:
    /// The distance from its centre to its edges in pixels.
    static constexpr float kReach = 10;

    PlaneHandle(PlaneOverlay& overlay, const PlaneHandleRow& row);

    const PlaneHandleRow& Row() const { return row; }
    /// Moves the handle's centre to the point. Returns true if that changes its place.
    bool CenterAt(BPoint point);
    BPoint Center() const { return {Frame().left + kReach, Frame().top + kReach}; }
    /// Returns true if it is under the pointer, being dragged, or has the focus.
    bool IsNoticed() const { return hovered || held || IsFocus(); }

    kits::AccessibleThing Describe() const override;
    void Draw(BRect update) override;
    void MouseDown(BPoint where) override;
    void MouseUp(BPoint where) override;
    void MouseMoved(BPoint where, uint32 transit, const BMessage* dragged) override;
    bool WheelMoved(BPoint where, BPoint steps) override;
    bool KeyDown(const kits::KeyPress& press) override;
    void FocusChanged() override;

  private:
    BPoint InOverlay(BPoint point) const { return {point.x + Frame().left, point.y + Frame().top}; }

    PlaneOverlay& overlay;
    const PlaneHandleRow& row;
    bool hovered = false;
    bool held = false;
    /// True while a press that belongs to the overlay, not to the handle, is held.
    bool passed = false;
    /// The point where the drag started, in the overlay's coordinates, and the handle's numbers at
    /// that time.
    BPoint grip;
    double gripX = 0, gripY = 0;
};

} // namespace vexa
