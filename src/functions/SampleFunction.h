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

/// The frames of a sample, at least one, mixed to one channel and normalised to a peak of 1, or
/// silent. Spirals of the same sample share them.
using SampleFrames = std::shared_ptr<const std::vector<float>>;

/// The measures of the spiral into which a sample is wound.
struct Winding {
    /// The frames per turn of the spiral.
    float T = 100.0F;
    /// The distance of neighbouring turns in the plane.
    float alphap = 0.1F;
    bool operator==(const Winding&) const = default;
};

/// Returns the winding in which one turn is one period of `frequency` (Hz), for a sample of
/// `frames` frames at `frameRate` (Hz). Returns nothing if there are no frames, if the frequency is
/// not positive, or if a measure is not a normal float. Any thread.
std::optional<Winding> WindingFor(std::size_t frames, float frameRate, double frequency);

/// The plane function of a sample.
class VEXA_REALTIME SampleSpiral final : public PlaneSource {
  public:
    SampleSpiral(SampleFrames sample, const Winding& winding);

    float At(float x, float y, const float*) const noexcept override;
    /// Computes the same bits as At, over arrays, by SpiralLoops.
    void Evaluate(const float* x, const float* y, const float* const*, float* values,
                  std::size_t count) const noexcept override;

  private:
    const SampleFrames sample;
    const Winding winding;
};

/// A loaded sample.
struct LoadedSample {
    SampleFrames frames;
    /// The frame rate of the file in Hz, to which the sample frequency refers.
    float frameRate = 0;
    /// The absolute path of the file.
    std::string path;
    /// What is wrong with the file although it plays; empty if nothing is. It names the file.
    std::string remark{};
};

/// The text of the alert for a file that cannot be loaded.
constexpr const char* kSampleAlert = "Could not load sample";
/// The longest sample, in frames: 50 minutes at 44.1 kHz.
constexpr std::size_t kLongestSample = std::size_t{1} << 27;

/// Returns the number of frames that a sound file states, negative if it states none. Errors and
/// threads as for LoadSample.
kits::Result<int64> SampleLength(const std::filesystem::path& path);

/// Decodes a sound file. The error has the alert kSampleAlert; its text names the file and the
/// fault. Waits for the disk, so it must not run in the media or the MIDI thread.
kits::Result<LoadedSample> LoadSample(const std::filesystem::path& path);

} // namespace vexa
