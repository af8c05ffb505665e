// SPDX-License-Identifier: GPL-3.0-or-later
// The picture of the plane function, with the coming orbits of the sounding notes over it.
#pragma once

#include "kits/interface/View.h"
#include "synth/PlaneFunction.h"
#include "synth/PlanePicture.h"
#include "synth/SoundParam.h"
#include "synth/Voice.h"

#include <chrono>
#include <memory>
#include <vector>

namespace vexa {

class R2RFVTranslatorSavePanel;

/// Shows a function from R^2 to R as a picture of a rectangle of the plane: blue where it is
/// positive, red where it is negative. The picture is computed when it is shown after a change, for
/// a short time at once and, where that does not suffice, on at each pulse until it is complete;
/// then orbits are poked into its green bytes at each pulse and taken out at the next. Window
/// thread.
class R2RFView : public BView {
  public:
    /// Makes a view of nullfunc. The plane's point `linkFunction` is shown at the point
    /// `linkScreen` of the view, which is in fractions of its width from the left and of its height
    /// from the bottom. `scale` is plane units per pixel.
    R2RFView(BRect frame, const char* name, BPoint linkFunction, BPoint linkScreen, float scale,
             uint32 resizingMode);
    ~R2RFView() override;

    // Each has the picture computed anew.

    void SetFunction(const PlaneFunction& next);
    void SetScale(float next);
    void SetLinkFunctionX(float x);
    void SetLinkFunctionY(float y);
    void SetLinkScreenX(float x);
    void SetLinkScreenY(float y);
    /// Has the picture computed anew for the present frame, without marks.
    void SetupBitmap();

    const PlaneFunction& Function() const { return function; }
    float Scale() const { return scale; }
    BPoint LinkFunction() const { return {linkFunctionX, linkFunctionY}; }
    BPoint LinkScreen() const { return {linkScreenX, linkScreenY}; }

    /// Has pulses show orbits from now on. The records are shared and outlive the view's last
    /// pulse.
    void SetSoundParam(const ControllerTable* ctlvalue, const sound_param* soundParam,
                       const VoiceTable* voices);

    /// Sets whether pulses show orbits; where something else shows them, pulses leave the picture
    /// alone.
    void ShowMarks(bool on);

    /// Return where a point of the plane is shown, and which point is shown somewhere, in pixels of
    /// the view.
    BPoint ToView(float x, float y) const;
    BPoint ToPlane(BPoint point) const;

    /// Makes a new B_RGB32 picture of the size of `rect`, round the same link, as DrawPlane
    /// computes it. It is not valid where `rect` is too large.
    std::unique_ptr<BBitmap> MakeBitmap(BRect rect, float scale) const;

    /// Completes the picture, however long it takes.
    const BBitmap& Picture() {
        Compute(std::chrono::steady_clock::duration::max());
        return *bitmap;
    }
    /// The picture as far as it is complete after a short while.
    const BBitmap& Shown();
    /// Count how often the function or the view of it have changed, and how often the picture has
    /// been computed on.
    uint64 Changes() const { return changes; }
    uint64 Computed() const { return computed; }
    /// True where there is nothing left to compute.
    bool IsComplete() const { return !stale && !drawing; }
    /// True where the picture has been complete for three times as long as it took to compute: who
    /// shows one picture after the other then takes a quarter of the machine's time at most.
    bool IsRested() const;

    /// Marks the next revolution of a voice's orbit, as it is heard now, in the picture, in steps
    /// of `step` radians. The drift and the envelopes run 2 pi times faster along the path than in
    /// the sound.
    void DrawSoundPath(int32 voice, float step);
    /// Strokes an orbit of one voice, with centre and radii as they are now, over the times from
    /// `from` to `to` (seconds). It is called inside Draw.
    void DrawSoundPath(int32 voice, float from, float to, float step);
    /// Strokes a closed figure. It is called inside Draw.
    void DrawLissajous(float startPhaseX, float startPhaseY, float centerX, float centerY,
                       float ratioX, float ratioY, float radiusX, float radiusY);

    /// Writes what the export panel's message asks for: the picture of what the larger side of the
    /// view shows, without orbits, as a square. A message that lacks a field does nothing.
    void SaveImage(const BMessage& message);
    void ShowSavePanel();
    R2RFVTranslatorSavePanel& SavePanel() { return *savePanel; }

    /// This is a surface to try the view with.
    static float f(float x, float y);

    /// Returns what the coming pulse has to repaint at least, in view pixels; empty (right < left)
    /// when no orbit has been computed.
    BRect DirtyRect() const { return dirty; }

    void MessageReceived(BMessage* message) override;
    void Draw(BRect update) override;
    /// The secondary button alone shows the export panel.
    void MouseDown(BPoint where) override;
    void Pulse() override;
    void FrameResized(float width, float height) override;

  private:
    /// 51 for each voice that a pulse can show.
    static constexpr std::size_t kMostMarks = 1050;

    void Change();
    void Compute(std::chrono::steady_clock::duration time);
    PlaneArea Area(const BBitmap& picture, float s) const;
    BRect EmptyRect() const;
    void EraseMarks();
    void MarkPixel(BPoint point);

    PlaneFunction function{nullfunc};
    float linkFunctionX, linkFunctionY;
    float linkScreenX, linkScreenY;
    float scale;
    /// True where what is shown of the plane has changed since `bitmap` was begun.
    bool stale = true;
    uint64 changes = 0;
    uint64 computed = 0;
    std::unique_ptr<BBitmap> bitmap;
    /// The part of `bitmap` that remains to be computed; null when it is complete.
    std::unique_ptr<PlaneDrawing> drawing;
    /// The time for which `bitmap` has been computed, and the moment when that ended.
    std::chrono::steady_clock::duration drawingTime{};
    std::chrono::steady_clock::time_point drawingEnd;

    bool hasSoundParam = false;
    bool showsMarks = true;
    const ControllerTable* ctlvalue = nullptr;
    const sound_param* soundParam = nullptr;
    const VoiceTable* voices = nullptr;

    /// The offsets in the picture of the green bytes that are set, never more than kMostMarks.
    std::vector<std::size_t> marks;
    BRect dirty;
    BRect prevDirty;
    std::unique_ptr<R2RFVTranslatorSavePanel> savePanel;
};

} // namespace vexa
