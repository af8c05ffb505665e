// SPDX-License-Identifier: GPL-3.0-or-later
// The overlay lies on the plane's picture: it has the orbits, and the gestures that the picture
// does not take.
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

/// A press of a button on the plane.
struct PlanePress {
    BPoint where;
    /// The sum of all buttons that are down.
    uint32 buttons;
    uint32 modifiers;
    int32 clicks;
};

/// Covers an R2RFView, whose child it is, and shows the same picture, or the plane in another
/// brightness or as a landscape, in the screen's own pixels; on it the orbits of all notes that
/// sound, some sixty times a second, one colour a voice, with what they were a moment ago fading.
/// Where a sound is stereo a dot and a ring on each orbit are what the left ear and the right one
/// read when a period begins.
///
/// Wheel: zooms about the pointer. Middle button, or Space and the first button: moves the plane.
/// Double click: shows all that the orbit reaches. Ctrl+Shift+click: a note whose centre starts
/// there. Handles for the orbit's numbers are seen while the pointer is over the plane or one of
/// them has the focus. The second button is the picture's. While it has the focus, the arrow keys
/// move the plane (Shift less, Ctrl more), + and - zoom, Home shows all. On the landscape the first
/// button and the arrow keys turn it.
///
/// What it does to the sound it does through its host. Window thread.
class PlaneOverlay : public BView {
  public:
    /// Makes an overlay that becomes a child of `plane`. The host outlives it.
    PlaneOverlay(R2RFView& plane, PlaneHost& host);
    ~PlaneOverlay() override;

    // The following set how the plane is shown.

    void SetBrightness(Brightness next);
    Brightness Curve() const { return brightness; }
    void SetRelief(bool on);
    bool IsRelief() const { return relief; }
    /// Has `next` called when the brightness or the landscape has changed.
    void WatchLook(std::function<void()> next) { lookChanged = std::move(next); }
    /// Adds what can be chosen of them, with marks for what is so at present.
    void AddLooks(BMenu& into) const;
    /// Takes F6, which chooses the next brightness, and F7, which shows the landscape or the
    /// picture again; true if the key was one of them.
    bool TakeShortcut(const kits::KeyPress& press);

    // The numbers that the handles move.

    /// Returns a number of the orbit of the note in hand.
    double Number(OrbitNumber id) const;
    /// Sets a number to the nearest multiple of `tidy`. A preview that is sounding begins anew
    /// where its start has moved.
    void MoveNumber(OrbitNumber id, double value, double tidy);
    /// Moves a number by one step of an arrow key, up where `way` is 1 and down where it is -1;
    /// with Shift finer, with Ctrl coarser. A preview sounds meanwhile.
    void StepNumber(OrbitNumber id, int way, uint32 modifiers);

    // The handles call these.

    bool ShowsHandles() const { return !relief && (inside || focused || moving); }
    /// True for a press that is none of a handle's although it is on one.
    bool IsForOverlay(const PlanePress& press) const;
    void Press(const PlanePress& press);
    void Move(BPoint where);
    void Release(BPoint where);
    /// The pointer is there, over the plane or no longer.
    void Hover(BPoint where, bool over);
    /// Tell that a number is being moved, and no longer: where nothing sounds, a preview does
    /// meanwhile.
    void Grip();
    void LetGo();
    /// Plane units, y upwards, that so many pixels of the view are.
    BPoint ByPixels(BPoint pixels) const;
    /// A handle's numbers as a person reads them: "0.5, -1".
    std::string TextOf(const PlaneHandleRow& row) const;
    /// Returns the step to whose multiples numbers are rounded that are moved by pixels.
    double PixelStep() const;
    /// Sets the handle whose numbers are told at the edge of the plane; null for none.
    void Notice(const PlaneHandle* handle);
    void HandleFocus(const PlaneHandle* handle);
    const std::vector<PlaneHandle*>& Handles() const { return handles; }

    /// Shows all that the orbit reaches, with room round it.
    void Fit();

    /// The orbit's numbers are its parts, in the order of OrbitNumbers().
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

  private:
    enum class Gesture { None, Move, Turn, Audition };

    /// The part of the plane that the picture is of, and how it is shown.
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

    /// The pictures without orbits, and with them, in the screen's pixels.
    std::unique_ptr<BBitmap> base;
    std::unique_ptr<BBitmap> shown;
    std::optional<Trace> trace;
    float density = 1;
    /// The values, over as many points as it takes, where the picture is not that of `plane`.
    PlaneField field;
    Relief land;
    /// The part of `plane` that is shown, and whether something else has changed.
    View view;
    uint64 seenChanges = 0, seenComputed = 0;
    bool stale = true;
    bool repaint = true;

    bool inside = false;
    /// A handle has the focus; that the plane itself has it is to be seen.
    bool focused = false;
    bool focusShown = false;
    /// A number is in the hand.
    bool moving = false;
    BPoint pointer;
    const PlaneHandle* noticed = nullptr;
    /// The text that was told last, and for how many pulses it is still to be read.
    std::string told;
    int toldFor = 0;
    std::vector<PlaneHandle*> handles;
    bool handlesShown = false;
    BMenuField* menuField = nullptr;

    Gesture gesture = Gesture::None;
    /// The place of the pointer at the gesture's last step, and what was shown at its begin.
    BPoint last;
    BPoint pressed;
    View pressedView;

    /// The preview sounds; where it starts, if not where notes do; it is to start anew.
    bool previewing = false;
    std::optional<BPoint> auditioned;
    bool anew = false;
    float sinceStrike = 0;
    /// The seconds until a preview that was begun by a key is let go; 0 for the others.
    float keyPreview = 0;
};

} // namespace vexa
