// SPDX-License-Identifier: GPL-3.0-or-later
// A place on the plane that can be taken hold of.
#pragma once

#include "kits/interface/View.h"
#include "views/plane/OrbitNumbers.h"

#include <optional>
#include <span>

namespace vexa {

class PlaneOverlay;

/// A handle and the numbers that it moves, to the right and up.
struct PlaneHandleRow {
    const char* name;
    /// The numbers that the handle moves; it has one of them at least.
    std::optional<OrbitNumber> x, y;
    const char* tip;

    OrbitNumber First() const { return x ? *x : *y; }
};
/// Returns the handles in the order in which the Tab key reaches them.
std::span<const PlaneHandleRow> PlaneHandles();

/// A handle moves its numbers: by the mouse, or, while it has the focus, by the arrow keys, with
/// Shift finer and with Ctrl coarser. It is seen when the overlay says so. Window thread.
class PlaneHandle : public BView {
  public:
    /// The pixels from its centre to its edges.
    static constexpr float kReach = 10;

    PlaneHandle(PlaneOverlay& overlay, const PlaneHandleRow& row);

    const PlaneHandleRow& Row() const { return row; }
    /// Moves the handle; true where that is another place.
    bool CenterAt(BPoint point);
    BPoint Center() const { return {Frame().left + kReach, Frame().top + kReach}; }
    /// True where it is under the pointer, in the hand, or has the focus.
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
    /// True where what was pressed here is the overlay's affair.
    bool passed = false;
    /// The place where it was taken hold of, and its numbers there.
    BPoint grip;
    double gripX = 0, gripY = 0;
};

} // namespace vexa
