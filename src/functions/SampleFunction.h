// SPDX-License-Identifier: GPL-3.0-or-later
// A sound file wound onto the plane as a spiral.
//
// One turn of the Archimedean spiral round the origin holds one period of the sample's tone, and
// the whole sample fills the disc of radius 5: an orbit round the origin plays one period per turn,
// and its radius selects the place in the sample.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"
#include "synth/PlaneFunction.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vexa {

/// The frames of a sample, mixed to one channel and normalised to a peak of 1, or silent. There is
/// one at least. Spirals of the same sample share them.
using SampleFrames = std::shared_ptr<const std::vector<float>>;

/// Says how a sample is wound into a spiral.
struct Winding {
    /// Each turn of the spiral has so many frames.
    float T = 100.0F;
    /// Neighbouring turns are so far apart in the plane.
    float alphap = 0.1F;
    bool operator==(const Winding&) const = default;
};

/// Returns the winding in which one turn is one period of `frequency` (Hz), for so many frames at
/// `frameRate` (Hz). Nothing if the frequency is not positive or out of all proportion. Any thread.
std::optional<Winding> WindingFor(std::size_t frames, float frameRate, double frequency);

/// The plane function of a sample.
class VEXA_REALTIME SampleSpiral final : public PlaneSource {
  public:
    SampleSpiral(SampleFrames sample, const Winding& winding);

    float At(float x, float y, const float*) const noexcept override;
    /// Computes what At computes, over arrays; SpiralLoops tells how far the two agree.
    void Evaluate(const float* x, const float* y, const float* const*, float* values,
                  std::size_t count) const noexcept override;

  private:
    const SampleFrames sample;
    const Winding winding;
};

/// A sample that was loaded.
struct LoadedSample {
    SampleFrames frames;
    /// The file's rate in Hz, by which the sample frequency is measured.
    float frameRate = 0;
    /// The absolute path of the file.
    std::string path;
};

/// The words of the alert about a file that cannot be loaded.
constexpr const char* kSampleAlert = "Could not load sample";
/// The longest sample, in frames: 50 minutes at 44.1 kHz.
constexpr std::size_t kLongestSample = std::size_t{1} << 27;

/// Returns how many frames a sound file says that it has, below 0 where it does not. The errors and
/// the threads are those of LoadSample.
kits::Result<int64> SampleLength(const std::filesystem::path& path);

/// Decodes a sound file. The error has the alert kSampleAlert, and its text names the file and the
/// fault. It waits for the disk, so neither the media nor the MIDI thread may call it.
kits::Result<LoadedSample> LoadSample(const std::filesystem::path& path);

} // namespace vexa
