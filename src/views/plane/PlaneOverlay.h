// SPDX-License-Identifier: GPL-3.0-or-later
// The overlay on the plane's picture: it shows the orbits, and handles the gestures that the
// picture does not.
#pragma once

#include "kits/interface/View.h"
#include "synth/Orbit.h"
#include "views/plane/Brightness.h"
#include "views/plane/OrbitNumbers.h"
#include "views/plane/PlaneField.h"
#include "views/plane/PlaneHandle.h"
#include "views/plane/PlaneHost.h"
#include "views/plane/Relief.h"
#include "views/plane/Trace.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class BBitmap;
class BMenu;
class BMenuField;

namespace vexa {

class R2RFView;

/// A press of a mouse button on the plane.
struct PlanePress {
    BPoint where;
    /// The sum of all pressed buttons.
    uint32 buttons;
    uint32 modifiers;
    int32 clicks;
};

/// Covers an R2RFView, as its child, and shows the same picture, or the plane with another
/// brightness or as a landscape, at the screen's own resolution. On it the overlay draws the orbits
/// of all sounding notes about sixty times a second, in one colour per voice, with a fading trace
/// of their past. If the sound is stereo, a dot and a ring on each orbit mark the points that the
/// left and the right ear read when a period begins.
///
/// Wheel: zooms about the pointer. Middle button, or Space and the first button: moves the plane.
/// Double click: fits the view to all that the orbit reaches. Ctrl+Shift+click: plays a note whose
/// centre starts there. Second button: the picture's export panel. Handles for the orbit's numbers
/// are visible while the pointer is over the plane or one of them has the focus. With the keyboard
/// focus, the arrow keys move the plane (less with Shift, more with Ctrl), + and - zoom, and Home
/// fits the view. On the landscape the first button and the arrow keys turn it.
///
/// All changes of the sound go through the host. Window thread.
class PlaneOverlay : public BView {
  public:
    /// Makes an overlay that becomes a child of `plane`. The host must outlive it.
    PlaneOverlay(R2RFView& plane, PlaneHost& host);
    ~PlaneOverlay() override;

    // How the plane is shown.

    void SetBrightness(Brightness next);
    Brightness Curve() const { return brightness; }
    void SetRelief(bool on);
    bool IsRelief() const { return relief; }
    /// Sets a function that is called when the brightness or the landscape mode has changed.
    void WatchLook(std::function<void()> next) { lookChanged = std::move(next); }
    /// Adds the brightness curves and the landscape to a menu, with marks on the present choice.
    void AddLooks(BMenu& into) const;
    /// Handles F6, which chooses the next brightness, and F7, which switches between landscape and
    /// picture. Returns true if the key was one of them.
    bool TakeShortcut(const kits::KeyPress& press);

    // The numbers that the handles change.

    /// Returns a number of the orbit of the note in hand.
    double Number(OrbitNumber id) const;
    /// Sets a number to the nearest multiple of `tidy`. If that moves the start of the centre, a
    /// sounding preview is restarted.
    void MoveNumber(OrbitNumber id, double value, double tidy);
    /// Changes a number by one step of an arrow key, up if `way` is 1 and down if it is -1, finely
    /// with Shift and coarsely with Ctrl. A preview sounds meanwhile.
    void StepNumber(OrbitNumber id, int way, uint32 modifiers);

    // The handles call these.

    bool ShowsHandles() const { return !relief && (inside || focused || moving); }
    /// Returns true if a press on a handle is meant for the overlay.
    bool IsForOverlay(const PlanePress& press) const;
    void Press(const PlanePress& press);
    void Move(BPoint where);
    void Release(BPoint where);
    /// Notes the position of the pointer, and whether it is over the plane.
    void Hover(BPoint where, bool over);
    /// Start and end the dragging of a number. If no note sounds, a preview does meanwhile.
    void Grip();
    void LetGo();
    /// Converts a distance in pixels of the view to plane units, with y upwards.
    BPoint ByPixels(BPoint pixels) const;
    /// Returns a handle's numbers as a text for the user, for example "0.5, -1".
    std::string TextOf(const PlaneHandleRow& row) const;
    /// Returns the step to whose multiples a dragged number is rounded.
    double PixelStep() const;
    /// Sets the handle whose numbers are shown at the edge of the plane; null for none.
    void Notice(const PlaneHandle* handle);
    void HandleFocus(const PlaneHandle* handle);
    const std::vector<PlaneHandle*>& Handles() const { return handles; }

    /// Fits the view to all that the orbit reaches, with a margin.
    void Fit();

    /// Its parts for screen readers are the orbit's numbers, in the order of OrbitNumbers().
    kits::AccessibleThing Describe() const override;
    std::size_t CountParts() const override { return OrbitNumbers().size(); }
    kits::AccessibleThing DescribePart(std::size_t index) const override;
    void SetNumber(std::optional<std::size_t> part, double value) override;

    void MessageReceived(BMessage* message) override;
    void Draw(BRect update) override;
    void MouseDown(BPoint where) override;
    void MouseUp(BPoint where) override;
    void MouseMoved(BPoint where, uint32 transit, const BMessage* dragged) override;
    bool WheelMoved(BPoint where, BPoint steps) override;
    bool KeyDown(const kits::KeyPress& press) override;
    void FocusChanged() override;
    void Pulse() override;
    bool Animate(float seconds) override;
    void AnimationStopped() override { EndPreview(); }

  private:
    enum class Gesture { None, Move, Turn, Audition };

    /// The part of the plane that the picture shows, and how it is placed.
    struct View {
        float scale = 0;
        BPoint link, place;
        bool operator==(const View&) const = default;
    };

    // The picture.
    void AddMenu();
    void ChangeLook();
    bool IsOwn() const;
    PlaneArea AreaOf(std::size_t columns, std::size_t rows) const;
    void Refresh();
    void Allocate(int columns, int rows);
    void Paint();
    void Tell(const std::string& text);
    std::string Legend() const;
    BRect LegendFrame() const;
    void InvalidateLegend();
    void DrawLegend();

    // The orbits.
    bool DrawOrbits();
    void DrawOrbit(const Orbit& orbit, double spread, rgb_color color, int sharers, int rank);
    void MarkEars(const Orbit& orbit, double spread, rgb_color color);
    std::optional<Relief::Place> PlaceOf(double x, double y) const;

    // Gestures.
    void Zoom(BPoint where, float steps);
    void ShiftBy(const View& from, BPoint pixels);
    void TurnBy(float right, float up);
    void SetView(double width, double linkX, double linkY);
    void ShowFocus(bool show);
    void PlaceHandles();
    void ShowHandles();
    void Audition(BPoint where);
    void Strike();
    void EndPreview();
    void AnimatePreview(float seconds);

    R2RFView& plane;
    PlaneHost& host;
    Brightness brightness = Brightness::Linear;
    bool relief = false;
    ReliefLook look;
    std::function<void()> lookChanged;

    /// The pictures without and with orbits, in the screen's pixels.
    std::unique_ptr<BBitmap> base;
    std::unique_ptr<BBitmap> shown;
    std::optional<Trace> trace;
    float density = 1;
    /// The values of the plane, at the needed resolution, for pictures other than that of `plane`.
    PlaneField field;
    Relief land;
    /// The part of `plane` that was shown last, and the marks of other changes since then.
    View view;
    uint64 seenChanges = 0, seenComputed = 0;
    bool stale = true;
    bool repaint = true;

    bool inside = false;
    /// True if a handle has the focus, and if the plane's own focus is visible.
    bool focused = false;
    bool focusShown = false;
    /// True while a number is being dragged.
    bool moving = false;
    BPoint pointer;
    const PlaneHandle* noticed = nullptr;
    /// The message that was shown last, and the number of pulses for which it still stays.
    std::string shownText;
    int shownFor = 0;
    std::vector<PlaneHandle*> handles;
    bool handlesShown = false;
    BMenuField* menuField = nullptr;

    Gesture gesture = Gesture::None;
    /// The pointer at the last step of the gesture, and the pointer and the view at its start.
    BPoint last;
    BPoint pressed;
    View pressedView;

    /// True while a preview sounds; the start of its centre if it is not that of other notes; true
    /// if it must be restarted.
    bool previewing = false;
    std::optional<BPoint> auditioned;
    bool anew = false;
    float sinceStrike = 0;
    /// The seconds until a preview started by a key ends; 0 for other previews.
    float keyPreview = 0;
};

} // namespace vexa
