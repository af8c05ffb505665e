// SPDX-License-Identifier: GPL-3.0-or-later
// A rectangle of a window that draws itself and reacts to the mouse.
#pragma once

#include "kits/application/Handler.h"
#include "kits/interface/Accessible.h"
#include "kits/interface/Font.h"
#include "kits/interface/InterfaceDefs.h"
#include "kits/support/Bitmap.h"

#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

class BWindow;

namespace kits {
class ViewWidget;
}

/// Coordinates are pixels (of a screen of usual density; a denser one has several per pixel), x to
/// the right and y down, (0, 0) at the view's own left-top corner; a frame is in the parent's
/// coordinates and its edges belong to it. A view owns its children. Window thread.
class BView : public BHandler {
  public:
    BView(BRect frame, const char* name, uint32 resizingMode, uint32 flags);
    /// Deletes the children, and leaves the parent.
    ~BView() override;

    // Hooks.

    /// The view has become part of a window.
    virtual void AttachedToWindow() {}
    /// Paints what is inside `update`, or more: the system clips it. Drawing operations have an
    /// effect only while it runs.
    virtual void Draw(BRect update);
    virtual void MouseDown(BPoint where);
    /// A button was released inside the view.
    virtual void MouseUp(BPoint where);
    /// The pointer has moved inside the view, into it or out of it. `transit` says which; there is
    /// never a `dragged` message.
    virtual void MouseMoved(BPoint where, uint32 transit, const BMessage* dragged);
    /// The wheel was turned by so many steps, away from the person where positive, and where there
    /// is a second wheel to the right. Fractions come from touch pads. False where the view has no
    /// use for it: the parent is asked next.
    virtual bool WheelMoved(BPoint where, BPoint steps);
    /// Called for a key while the view has the focus. It answers false where the view has no use
    /// for it: the key is the window's then, as B_KEY_DOWN or TakeShortcut.
    virtual bool KeyDown(const kits::KeyPress& press);
    /// The view, not a control inside of it, has got the focus or lost it.
    virtual void FocusChanged() {}
    /// The set of colours is another one. A view takes its colours anew and draws itself.
    virtual void ColorsChanged() {}
    /// Called at the pulse rate of the window while that is shown, if the view has B_PULSE_NEEDED.
    virtual void Pulse() {}
    /// Called for the next picture of what moves, some sixty times a second after StartAnimation
    /// while the view can be seen; `seconds` have passed since the last one. It answers false where
    /// nothing moves any more.
    virtual bool Animate(float /*seconds*/) { return false; }
    /// Called with the new size in pixels, if the view has B_FRAME_EVENTS.
    virtual void FrameResized(float width, float height);

    // The tree of views.

    /// Takes the view over. In the order of the Tab key it comes after the present children.
    void AddChild(BView* child);
    /// Gives the child back to the caller; false if it is none.
    bool RemoveChild(BView* child);
    const std::vector<BView*>& Children() const { return children; }
    BView* ChildAt(std::size_t index) const;
    BView* Parent() const { return parent; }
    /// The view of that name here or below, null if there is none.
    BView* FindView(std::string_view name);
    /// Returns the window that the view is in, null before it is attached.
    BWindow* Window() const { return window; }

    // Place.

    BRect Frame() const { return frame; }
    BRect Bounds() const { return frame.OffsetToCopy(0, 0); }
    BRect ConvertFromParent(BRect rect) const;
    virtual void ResizeTo(float width, float height);
    void ResizeBy(float x, float y);
    void MoveTo(float x, float y);
    void MoveBy(float x, float y);
    uint32 ResizingMode() const { return resizingMode; }
    uint32 Flags() const { return flags; }
    void Hide();
    void Show();
    bool IsHidden() const { return hidden; }

    // The following draws. Text and lines are in the high colour unless a pattern says otherwise.

    /// Sets the colour that is behind all that the view draws.
    void SetViewColor(rgb_color color);
    rgb_color ViewColor() const { return viewColor; }
    void SetHighColor(rgb_color color) { highColor = color; }
    rgb_color HighColor() const { return highColor; }
    void SetLowColor(rgb_color color) { lowColor = color; }
    rgb_color LowColor() const { return lowColor; }
    void SetFont(const BFont* font, uint32 mask = B_FONT_ALL);
    void GetFont(BFont* result) const { *result = font; }
    void GetFontHeight(font_height* height) const { font.GetHeight(height); }
    float StringWidth(std::string_view text) const { return font.StringWidth(text); }
    /// The text, cut at its end where it is wider than so many pixels, with dots in place of the
    /// rest.
    std::string CutToFit(std::string text, float room) const;
    void MovePenTo(BPoint point) { pen = point; }
    BPoint PenLocation() const { return pen; }

    // Drawing operations.

    /// Starts at the pen, the baseline's left end, and leaves the pen where a next one would start.
    void DrawString(std::string_view text);
    void DrawString(std::string_view text, BPoint baseline);
    /// Draws a line, to which both end pixels belong, and leaves the pen at its end.
    void StrokeLine(BPoint from, BPoint to, pattern which = B_SOLID_HIGH);
    /// Draws a line from where the pen is, and leaves the pen at its end.
    void StrokeLine(BPoint to, pattern which = B_SOLID_HIGH);
    void FillRect(BRect rect, pattern which = B_SOLID_HIGH);

    // The following draw with smooth edges in the high colour, whose alpha counts. Coordinates are
    // those of pixels' centres, widths are pixels, and angles are degrees, counter-clockwise from
    // the right.

    void StrokePath(std::span<const BPoint> points, float width = 1.5F, bool closed = false);
    void FillPolygon(std::span<const BPoint> points);
    void FillRoundRect(BRect rect, float radius);
    void StrokeRoundRect(BRect rect, float radius, float width = 1);
    void FillEllipse(BPoint center, float radiusX, float radiusY);
    void StrokeEllipse(BPoint center, float radiusX, float radiusY, float width = 1.5F);
    void StrokeArc(BPoint center, float radius, float from, float sweep, float width = 1.5F);

    /// Draws the bitmap, scaled to the rectangle. Where it has as many pixels as that has on the
    /// screen, they are the screen's. `inBlocks` makes a block of each where the screen is denser
    /// than the view.
    void DrawBitmap(const BBitmap* bitmap, BRect destination, bool inBlocks = false);
    /// Returns how many of the screen's pixels there are in a row per pixel of the coordinates.
    float Density() const;

    /// Has Animate called again and again until it answers false. Where the view cannot be seen, as
    /// it or its window is hidden or minimized, nothing starts, and an animation under way ends.
    void StartAnimation();

    void Invalidate();
    /// Has that part drawn soon.
    void Invalidate(BRect rect);

    // Input.

    /// Tells where the pointer was and which buttons were down at the event that is being handled,
    /// or at the last one. `checkQueue` has no effect; it is there as callers pass it.
    void GetMouse(BPoint* where, uint32* buttons, bool checkQueue = true) const;
    /// The keys that were held at that event, B_SHIFT_KEY and so on, added up.
    uint32 Modifiers() const;
    /// True while a key is held that writes this character; a letter is given as a capital.
    static bool IsHeld(char32_t character);
    /// Returns how many presses have followed each other at the same place: 2 for a double click.
    int32 Clicks() const;
    virtual void MakeFocus(bool focused = true);
    virtual bool IsFocus() const;
    /// True where the view has got the focus otherwise than by a press of the mouse. When a window
    /// comes back the answer is what it was before.
    bool IsFocusByKeys() const;
    /// Sets a text that is shown when the pointer rests on the view and read out to those who
    /// cannot see it. Empty or null takes it away.
    virtual void SetToolTip(const char* text);
    const char* ToolTip() const { return toolTip.c_str(); }
    /// Sets what the view is called where it is read out, in words that a person understands. A
    /// control is called by its label unless told otherwise.
    void SetAccessibleName(std::string_view words);

    // The following tell of the view to those who cannot see it. A control answers all that by
    // itself.

    /// Describes the view as a whole.
    virtual kits::AccessibleThing Describe() const { return {}; }
    /// The parts that the view draws by itself, by index.
    virtual std::size_t CountParts() const { return 0; }
    virtual kits::AccessibleThing DescribePart(std::size_t /*index*/) const { return {}; }
    /// Does what the action of a part says, or of the view where there is no index.
    virtual void Activate(std::optional<std::size_t> /*part*/) {}
    /// Sets the number that a part has, or the view where no part is given.
    virtual void SetNumber(std::optional<std::size_t> /*part*/, double /*value*/) {}
    /// The view calls it when its description has changed while somebody may be listening.
    void DescriptionChanged();

  private:
    friend class BWindow;
    friend class kits::ViewWidget;

    void SetWindow(BWindow* next);
    void Place(BRect next);
    void FollowParent(float dx, float dy);
    rgb_color Color(pattern which) const { return which == B_SOLID_LOW ? lowColor : highColor; }

    BRect frame;
    uint32 resizingMode;
    uint32 flags;
    bool hidden = false;
    BView* parent = nullptr;
    BWindow* window = nullptr;
    std::vector<BView*> children;

    rgb_color viewColor = {255, 255, 255};
    rgb_color highColor = {0, 0, 0};
    rgb_color lowColor = {255, 255, 255};
    BFont font = *be_plain_font();
    BPoint pen;
    std::string toolTip;

    std::unique_ptr<kits::ViewWidget> widget;

  public:
    /// The toolkit's widget of the view, in which the kits put others. Only they call it.
    kits::ViewWidget& Widget() const { return *widget; }
};
