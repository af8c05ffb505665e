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

/// A view has its own coordinates: logical pixels (a dense screen has several pixels per logical
/// one), x to the right and y down, with (0, 0) at the view's left-top corner. Its frame is in the
/// parent's coordinates, edges included. A view owns its children. Window thread.
class BView : public BHandler {
  public:
    BView(BRect frame, const char* name, uint32 resizingMode, uint32 flags);
    /// Deletes the children and removes the view from its parent.
    ~BView() override;

    // Hooks.

    /// Called when the view has become part of a window.
    virtual void AttachedToWindow() {}
    /// Paints at least the rectangle `update`; the system clips the rest. The drawing operations
    /// below have an effect only while this hook runs.
    virtual void Draw(BRect update);
    /// Called for each button that is pressed, even while others are held.
    virtual void MouseDown(BPoint where);
    /// Called when all buttons have been released, the last one inside the view. If that happened
    /// unnoticed, it is called before the next MouseMoved or MouseDown.
    virtual void MouseUp(BPoint where);
    /// Called when the pointer moves inside the view (`transit` is B_INSIDE_VIEW), into it
    /// (B_ENTERED_VIEW) or out of it (B_EXITED_VIEW). `dragged` is always null.
    virtual void MouseMoved(BPoint where, uint32 transit, const BMessage* dragged);
    /// Called when the wheel is turned. `steps.y` counts the steps, positive away from the user;
    /// `steps.x` is the turn of a horizontal wheel, positive to the right. Touch pads send
    /// fractions of a step. Returns false if the view ignores the wheel; then the parent is asked.
    virtual bool WheelMoved(BPoint where, BPoint steps);
    /// Called for a key while the view has the focus. Returns false if the view ignores the key;
    /// then the window gets it, by B_KEY_DOWN or TakeShortcut.
    virtual bool KeyDown(const kits::KeyPress& press);
    /// Called when the view itself, not a control inside it, has got or lost the focus.
    virtual void FocusChanged() {}
    /// Called when another set of colours has been chosen. A view looks its colours up again and
    /// redraws itself.
    virtual void ColorsChanged() {}
    /// Called at the window's pulse rate while the window is shown, if the view has B_PULSE_NEEDED.
    virtual void Pulse() {}
    /// Called for each frame of an animation, about sixty times a second after StartAnimation while
    /// the view is visible. `seconds` is the time since the last frame. Returns false to end the
    /// animation.
    virtual bool Animate(float /*seconds*/) { return false; }
    /// Called in place of Animate if the animation ends because the view is no longer visible.
    virtual void AnimationStopped() {}
    /// Called with the new size in pixels, if the view has B_FRAME_EVENTS.
    virtual void FrameResized(float width, float height);

    // The tree of views.

    /// Takes ownership of the view, which follows the present children in the order of the Tab key.
    void AddChild(BView* child);
    /// Gives the child back to the caller. Returns false if the view has no such child.
    bool RemoveChild(BView* child);
    const std::vector<BView*>& Children() const { return children; }
    BView* ChildAt(std::size_t index) const;
    /// Returns the view with that name among this view and its descendants, or null.
    BView* FindView(std::string_view name);
    /// Returns the window that contains the view, or null before the view is attached.
    BWindow* Window() const { return window; }

    // Place.

    BRect Frame() const { return frame; }
    BRect Bounds() const { return frame.OffsetToCopy(0, 0); }
    BRect ConvertFromParent(BRect rect) const;
    virtual void ResizeTo(float width, float height);
    void ResizeBy(float x, float y);
    void MoveTo(float x, float y);
    void MoveBy(float x, float y);
    uint32 Flags() const { return flags; }
    void Hide();
    void Show();
    bool IsHidden() const { return hidden; }

    // State of the drawing operations. Text and lines take the high colour unless a pattern says
    // otherwise.

    /// Sets the background colour.
    void SetViewColor(rgb_color color);
    rgb_color ViewColor() const { return viewColor; }
    void SetHighColor(rgb_color color) { highColor = color; }
    void SetLowColor(rgb_color color) { lowColor = color; }
    void SetFont(const BFont* font, uint32 mask = B_FONT_ALL);
    void GetFontHeight(font_height* height) const { font.GetHeight(height); }
    float StringWidth(std::string_view text) const { return font.StringWidth(text); }
    /// Returns the text. If it is wider than `room` pixels, its end is cut off and replaced by
    /// dots.
    std::string CutToFit(std::string text, float room) const;
    void MovePenTo(BPoint point) { pen = point; }

    // Drawing operations.

    /// Draws the text with its baseline starting at the pen, and moves the pen to the end of the
    /// text.
    void DrawString(std::string_view text);
    void DrawString(std::string_view text, BPoint baseline);
    /// Draws a line that includes both end pixels, and moves the pen to its end.
    void StrokeLine(BPoint from, BPoint to, pattern which = B_SOLID_HIGH);
    /// Draws a line from the pen, and moves the pen to its end.
    void StrokeLine(BPoint to, pattern which = B_SOLID_HIGH);
    void FillRect(BRect rect, pattern which = B_SOLID_HIGH);

    // The following operations are antialiased and draw in the high colour with its alpha. Whole
    // coordinates are the centres of pixels, widths are pixels, and angles are degrees,
    // counter-clockwise from the right.

    void StrokePath(std::span<const BPoint> points, float width = 1.5F, bool closed = false);
    void FillPolygon(std::span<const BPoint> points);
    void FillRoundRect(BRect rect, float radius);
    void StrokeRoundRect(BRect rect, float radius, float width = 1);
    void FillEllipse(BPoint center, float radiusX, float radiusY);
    void StrokeEllipse(BPoint center, float radiusX, float radiusY, float width = 1.5F);
    void StrokeArc(BPoint center, float radius, float from, float sweep, float width = 1.5F);

    /// Draws the bitmap scaled to `destination`. A bitmap with as many pixels as `destination` has
    /// physical pixels on the screen is copied pixel by pixel. With `inBlocks`, a bitmap with one
    /// pixel per logical pixel is enlarged into sharp blocks on a denser screen, without smoothing.
    void DrawBitmap(const BBitmap* bitmap, BRect destination, bool inBlocks = false);
    /// Returns the number of screen pixels per logical pixel, in one direction.
    float Density() const;

    /// Starts calling Animate until it returns false. Does nothing while the view cannot be seen
    /// because it or its window is hidden or minimized; a running animation ends then.
    void StartAnimation();

    void Invalidate();
    /// Marks the rectangle to be redrawn soon.
    void Invalidate(BRect rect);

    // Input.

    /// Returns the position of the pointer and the pressed buttons at the event that is being
    /// handled, or at the last one. `checkQueue` has no effect; it exists because callers pass it.
    void GetMouse(BPoint* where, uint32* buttons, bool checkQueue = true) const;
    /// Returns the modifiers that were held at that event: the sum of B_SHIFT_KEY and the like.
    uint32 Modifiers() const;
    /// Returns true while the key of this character is held; a letter is given as a capital.
    static bool IsHeld(char32_t character);
    /// Returns the number of consecutive presses at the same place: 2 for a double click.
    int32 Clicks() const;
    virtual void MakeFocus(bool focused = true);
    virtual bool IsFocus() const;
    /// Returns true if the view has the focus and got it by other means than a press of the mouse.
    /// Leaving the window and returning to it does not change the answer.
    bool IsFocusByKeys() const;
    /// Sets a text that is shown when the pointer rests on the view and that screen readers read
    /// out. Empty or null removes it.
    virtual void SetToolTip(const char* text);
    const char* ToolTip() const { return toolTip.c_str(); }
    /// Sets the text that is shown as long as there is no tool tip: what the view is for.
    void SetHelp(std::string_view text);
    const std::string& Help() const { return help; }
    /// Sets the view's name for screen readers, in words that the user understands. Without it a
    /// control has its label as its name.
    void SetAccessibleName(std::string_view words);

    // The following describe the view to screen readers. A control does all of this by itself.

    /// Describes the view as a whole.
    virtual kits::AccessibleThing Describe() const { return {}; }
    /// The parts that the view draws by itself, such as rows or points, by index.
    virtual std::size_t CountParts() const { return 0; }
    virtual kits::AccessibleThing DescribePart(std::size_t /*index*/) const { return {}; }
    /// Performs the action of a part, or of the view if `part` is empty.
    virtual void Activate(std::optional<std::size_t> /*part*/) {}
    /// Sets the number of a part, or of the view if `part` is empty.
    virtual void SetNumber(std::optional<std::size_t> /*part*/, double /*value*/) {}
    /// To be called by the view when what it describes may have changed: itself, which part is the
    /// chosen one, or that part. Screen readers are told the differences.
    void DescriptionChanged();

  private:
    friend class BWindow;
    friend class kits::ViewWidget;

    void SetWindow(BWindow* next);
    void ShowTip();
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
    std::string toolTip, help;

    std::unique_ptr<kits::ViewWidget> widget;

  public:
    /// Returns the toolkit's widget of the view, into which the kits put other widgets. Only the
    /// kits call it.
    kits::ViewWidget& Widget() const { return *widget; }
};
