// SPDX-License-Identifier: GPL-3.0-or-later
// The scope shows what is heard as a curve.
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

/// The scope shows the function along the newest orbit, the output, or its spectrum; a click, Space
/// and the arrow keys change from one to the other. What is loud is drawn smaller and what is quiet
/// larger, by powers of two, and is marked so. Window thread.
class Scope : public BView {
  public:
    enum class Mode { Orbit, Output, Spectrum };

    /// Shows what the main view plays, which outlives it. The tap too; null where the output is
    /// somebody else's, whose orbits alone can be shown.
    Scope(VexaView& mainView, OutputTap* tap);

    /// Shows what there is now; draws nothing where that is what it shows already.
    void Refresh();
    /// Is told whether anybody sees the scope; while nobody does, it leaves the output alone.
    void Listen(bool on);

    Mode Shows() const { return mode; }
    void SetMode(Mode next);
    /// What is drawn: the heights of the curve's points from the middle, -1..1, or from the bottom,
    /// 0..1, and what is written above.
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
    /// The newest frames, and both channels' mean.
    std::vector<OutputFrame> frames;
    std::vector<float> mono;
    kits::Spectrum spectrum;

    /// The function that is followed, as the newest note hears it, and where.
    PlaneFunction function{nullfunc};
    PlaneFollower follower;
    PlaneFunction heard{nullfunc};
    OrbitPath path{};

    std::vector<float> curve;
    std::string caption;
};

} // namespace vexa
