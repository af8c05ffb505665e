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
/// positive, red where it is negative. After a change the picture is computed when it is next
/// shown, at first for a short time and then a part at each pulse until it is complete. Then each
/// pulse marks the coming orbits in the picture's green bytes and erases the previous marks. Window
/// thread.
class R2RFView : public BView {
  public:
    /// Makes a view of nullfunc. The plane's point `linkFunction` is shown at the view's point
    /// `linkScreen`, which is in fractions of the width from the left and of the height from the
    /// bottom. `scale` is in plane units per pixel.
    R2RFView(BRect frame, const char* name, BPoint linkFunction, BPoint linkScreen, float scale,
             uint32 resizingMode);
    ~R2RFView() override;

    // Each of these causes the picture to be computed again.

    void SetFunction(const PlaneFunction& next);
    void SetScale(float next);
    void SetLinkFunctionX(float x);
    void SetLinkFunctionY(float y);
    void SetLinkScreenX(float x);
    void SetLinkScreenY(float y);
    /// Causes the picture to be computed again for the present frame, without marks.
    void SetupBitmap();

    const PlaneFunction& Function() const { return function; }
    float Scale() const { return scale; }
    BPoint LinkFunction() const { return {linkFunctionX, linkFunctionY}; }
    BPoint LinkScreen() const { return {linkScreenX, linkScreenY}; }

    /// From now on pulses show the orbits of these records, which are shared and must outlive the
    /// view's last pulse.
    void SetSoundParam(const ControllerTable* ctlvalue, const sound_param* soundParam,
                       const VoiceTable* voices);

    /// Sets whether pulses mark orbits in the picture. It is turned off while another view shows
    /// them.
    void ShowMarks(bool on);

    /// Convert a point of the plane to pixels of the view, and back.
    BPoint ToView(float x, float y) const;
    BPoint ToPlane(BPoint point) const;

    /// Makes a new B_RGB32 picture of the size of `rect` around the same link, as DrawPlane
    /// computes it. It is invalid if `rect` is too large.
    std::unique_ptr<BBitmap> MakeBitmap(BRect rect, float scale) const;

    /// Completes the picture, however long that takes.
    const BBitmap& Picture() {
        Compute(std::chrono::steady_clock::duration::max());
        return *bitmap;
    }
    /// Returns the picture after computing it further for a short time; it may still be incomplete.
    const BBitmap& Shown();
    /// Return the number of changes of the function or of the shown part of the plane, and the
    /// number of times that the computation of the picture has been continued.
    uint64 Changes() const { return changes; }
    uint64 Computed() const { return computed; }
    /// Returns true if nothing is left to compute.
    bool IsComplete() const { return !stale && !drawing; }
    /// Returns true once the picture has been complete for three times as long as its computation
    /// took. Showing one picture after another only then takes at most a quarter of the machine's
    /// time.
    bool IsRested() const;

    /// Marks the next revolution of a voice's present orbit in the picture, in steps of `step`
    /// radians. The drift and the envelopes run 2 pi times faster along the marks than in the
    /// sound.
    void DrawSoundPath(int32 voice, float step);
    /// Strokes the orbit of one voice, with its present centre and radii, over the times from
    /// `from` to `to` in steps of `step` (seconds). To be called inside Draw.
    void DrawSoundPath(int32 voice, float from, float to, float step);
    /// Strokes a Lissajous figure. To be called inside Draw.
    void DrawLissajous(float startPhaseX, float startPhaseY, float centerX, float centerY,
                       float ratioX, float ratioY, float radiusX, float radiusY);

    /// Writes the picture that the export panel's message asks for: a square of the plane whose
    /// side is the larger side of the view, without orbits. A message that lacks a field is
    /// ignored.
    void SaveImage(const BMessage& message);
    void ShowSavePanel();
    R2RFVTranslatorSavePanel& SavePanel() { return *savePanel; }

    /// An example of a plane function.
    static float f(float x, float y);

    /// Returns the least area that the next pulse has to repaint, in view pixels. It is empty
    /// (right < left) if no orbit has been marked.
    BRect DirtyRect() const { return dirty; }

    void MessageReceived(BMessage* message) override;
    void Draw(BRect update) override;
    /// The secondary button, pressed alone, shows the export panel.
    void MouseDown(BPoint where) override;
    void Pulse() override;
    void FrameResized(float width, float height) override;

  private:
    /// The most marks in the picture: enough for 51 of each of kMostVoices voices.
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
    /// True if the function or the shown part of the plane has changed since `bitmap` was begun.
    bool stale = true;
    uint64 changes = 0;
    uint64 computed = 0;
    std::unique_ptr<BBitmap> bitmap;
    /// The part of `bitmap` that remains to be computed; null when it is complete.
    std::unique_ptr<PlaneDrawing> drawing;
    /// The time that the computation of `bitmap` has taken so far, and the moment when it last
    /// stopped.
    std::chrono::steady_clock::duration drawingTime{};
    std::chrono::steady_clock::time_point drawingEnd;

    bool hasSoundParam = false;
    bool showsMarks = true;
    const ControllerTable* ctlvalue = nullptr;
    const sound_param* soundParam = nullptr;
    const VoiceTable* voices = nullptr;

    /// The offsets of the green bytes that are set in the picture, at most kMostMarks.
    std::vector<std::size_t> marks;
    BRect dirty;
    BRect prevDirty;
    std::unique_ptr<R2RFVTranslatorSavePanel> savePanel;
};

} // namespace vexa
