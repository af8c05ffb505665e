// SPDX-License-Identifier: GPL-3.0-or-later
// The scope in the strip: the wave along an orbit, the output, or its spectrum.
#pragma once

#include "audio/OutputTap.h"
#include "instrument/OrbitCurve.h"
#include "instrument/PlaneFollower.h"
#include "kits/interface/View.h"
#include "kits/spectrum/Spectrum.h"

#include <optional>
#include <string>
#include <vector>

namespace vexa {

class VexaView;

/// The scope shows the function along the newest orbit, the output, or its spectrum; a click,
/// Enter, Space and the arrow keys switch between them. Loud curves are drawn smaller and quiet
/// ones larger, by powers of two, and the caption states the factor; the spectrum is not scaled.
/// Window thread.
class Scope : public BView {
  public:
    enum class Mode { Orbit, Output, Spectrum };

    /// Makes a scope of the main view and of `tap`, both of which outlive it. A null `tap` means
    /// that the output belongs to a plug-in's host: only orbits can be shown.
    Scope(VexaView& mainView, OutputTap* tap);

    /// Shows the present state. Redraws only if it differs from the last one.
    void Refresh();
    /// Sets whether the scope is visible. While it is not, it does not listen to the output.
    void Listen(bool on);

    Mode Shows() const { return mode; }
    void SetMode(Mode next);
    /// Returns the heights of the curve's points, -1..1 from the middle or, for a spectrum, 0..1
    /// from the bottom. Caption returns the text above.
    const std::vector<float>& Curve() const { return curve; }
    const std::string& Caption() const { return caption; }

    void Draw(BRect update) override;
    void MouseDown(BPoint where) override;
    bool KeyDown(const kits::KeyPress& press) override;
    void FocusChanged() override { Invalidate(); }
    kits::AccessibleThing Describe() const override;
    void Activate(std::optional<std::size_t> part) override;
    void FrameResized(float width, float height) override;

  private:
    void LookAtOrbit();
    void LookAtOutput();
    void LookAtSpectrum();
    bool Newest(std::size_t count);
    void Take(std::vector<float> next, const std::string& text);
    void TakeScaled(std::vector<float> next, const char* text);
    std::size_t Columns() const;

    VexaView& mainView;
    OutputTap* const tap;
    Mode mode = Mode::Orbit;
    bool listens = false;
    std::optional<OutputTap::Listener> listener;
    /// The newest frames, and the mean of their channels.
    std::vector<OutputFrame> frames;
    std::vector<float> mono;
    kits::Spectrum spectrum;

    /// The followed function; its follower; the function of x and y as the newest note hears it;
    /// and that note's path.
    PlaneFunction function{nullfunc};
    PlaneFollower follower;
    PlaneFunction heard{nullfunc};
    OrbitPath path{};

    std::vector<float> curve;
    std::string caption;
};

} // namespace vexa
