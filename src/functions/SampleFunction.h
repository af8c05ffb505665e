// A sound file wound onto the plane as a spiral.
//
// One turn of the Archimedean spiral round the origin holds one period of the sample's tone, and
// the whole sample fills the disc of radius 5: an orbit round the origin plays one period per turn,
// and its radius selects the place in the sample.
#pragma once

#include "kits/media/MediaFormats.h"
#include "kits/storage/ProgramFolder.h"
#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"
#include "synth/PlaneFunction.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace vexa {

/// What sampler2rfun computes with; published as a whole and never changed.
struct SampleSpiral {
    /// The sample, normalised to a peak of 1, or silent. Spirals of the same sample share it.
    std::shared_ptr<const std::vector<float>> sample;
    int32 samplelength = 0;
    /// Frames per turn.
    float T = 100.0F;
    /// Distance of neighbouring turns.
    float alphap = 0.1F;
};

/// The spiral at present. Inside a kits::Reader::Section, or on the window thread.
const SampleSpiral& CurrentSpiral();

/// The value of the spiral at a point; 0 before a sample is loaded. Inside a kits::Reader::Section,
/// or on the window thread.
float sampler2rfun(float x, float y);

/// sampler2rfun in both its forms; SpiralLoops tells how far they agree.
PlaneFunction SampleFunction();

/// A sample that was loaded.
struct LoadedSample {
    /// Of the decoded sound; the sample frequency is measured by its frame rate.
    media_format format;
    /// Absolute path of the file.
    std::string path;
};

/// What the user is told about a file that cannot be loaded.
constexpr const char* kSampleAlert = "Could not load sample";
/// Longest sample in frames: 50 minutes at 44.1 kHz.
constexpr std::size_t kLongestSample = std::size_t{1} << 27;

/// Decodes a sound file, mixed to one channel, and publishes it as the sample; T and alphap stay.
/// The error, for standard error, names the file and the fault; the sample is then as it was. The
/// window thread.
kits::Result<LoadedSample> LoadSample(const std::filesystem::path& path);

/// Winds the spiral so that one turn is one period of `frequency` (Hz) at `frameRate`. Returns
/// false and changes nothing if the frequency is not positive or out of all proportion. The window
/// thread.
bool SetSampleFrequency(float frameRate, double frequency);

/// How a function document names the sample file: by its leaf if it is what is found by that name
/// directly in a folder "samples" of the program's, else by its full path.
std::string SampleFileName(const std::string& path, const kits::ProgramFolders& folders);

} // namespace vexa
