#include "functions/SampleFunction.h"

#include "functions/SpiralLoops.h"
#include "kits/media/MediaFile.h"
#include "kits/storage/Entry.h"
#include "kits/storage/Path.h"
#include "kits/support/Published.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace vexa {

namespace {

/// The radius at which the sample ends.
constexpr float kRadius = 5.0F;

/// Never destroyed: a thread that plays may outlive every static object.
kits::Published<SampleSpiral>& Spiral() {
    static auto* spiral = new kits::Published<SampleSpiral>({});
    return *spiral;
}

const SpiralLoops& loops = *RunnableSpiralLoops().back();

SpiralTurns Turns(const SampleSpiral& spiral) {
    return {spiral.sample->data(), spiral.samplelength - 1, spiral.T, spiral.alphap};
}

/// The sample at `index`, a whole number or NaN, limited to the sample.
float At(const SpiralTurns& turns, float index) {
    if (!(index > 0))
        return turns.sample[0];
    return turns
        .sample[index < static_cast<float>(turns.last) ? static_cast<int32>(index) : turns.last];
}

float Interpolate(const SpiralTurns& turns, float p) {
    const float i = std::floor(p);
    const float f = p - i;
    return (1 - f) * At(turns, i) + f * At(turns, i + 1);
}

void SampleBlock(const float* x, const float* y, float* values, std::size_t count) {
    const SampleSpiral& spiral = CurrentSpiral();
    if (spiral.samplelength < 1)
        std::fill_n(values, count, 0.0F);
    else
        loops.Values(Turns(spiral), x, y, values, count);
}

/// The frames of the track, which delivers floats of one channel; kLongestSample and some more
/// where there are too many.
std::vector<float> ReadTrack(BMediaTrack& track, const media_format& format) {
    std::vector<float> frames;
    frames.reserve(static_cast<std::size_t>(std::max<int64>(track.CountFrames(), 0)));
    std::vector<float> buffer(format.u.raw_audio.buffer_size / sizeof(float));
    int64 count = 0;
    while (frames.size() <= kLongestSample && track.ReadFrames(buffer.data(), &count) == B_OK)
        frames.insert(frames.end(), buffer.begin(), buffer.begin() + count);
    return frames;
}

/// Scales to a peak of 1; silence stays.
void Normalise(std::vector<float>& frames) {
    float peak = 0;
    for (const float value : frames)
        peak = std::max(peak, std::abs(value));
    if (peak == 0)
        return;
    for (float& value : frames)
        value /= peak;
}

kits::Error Failure(const std::filesystem::path& path, const std::string& reason) {
    return {"could not load sample " + path.string() + ": " + reason};
}

kits::Result<LoadedSample> Load(const std::filesystem::path& path) {
    const BEntry entry(path.c_str(), false);
    BPath fullPath;
    entry_ref ref;
    if (entry.GetPath(&fullPath) != B_OK || entry.GetRef(&ref) != B_OK)
        return Failure(path, "there is no such folder");
    BMediaFile file(&ref);
    if (file.InitCheck() != B_OK)
        return kits::Error{file.Fault()};
    BMediaTrack* const track = file.TrackAt(0);

    LoadedSample loaded{{}, fullPath.Path()};
    loaded.format.type = B_MEDIA_RAW_AUDIO;
    loaded.format.u.raw_audio = media_raw_audio_format::wildcard;
    loaded.format.u.raw_audio.channel_count = 1;
    loaded.format.u.raw_audio.format = B_AUDIO_FLOAT;
    loaded.format.u.raw_audio.byte_order = B_MEDIA_LITTLE_ENDIAN;
    track->DecodedFormat(&loaded.format);
    const auto tooLong = [&path] {
        return Failure(path, "it is longer than " + std::to_string(kLongestSample) + " frames");
    };
    if (track->CountFrames() > static_cast<int64>(kLongestSample))
        return tooLong();
    std::vector<float> frames = ReadTrack(*track, loaded.format);
    file.ReleaseAllTracks();
    if (frames.empty())
        return Failure(path, "it contains no sound");
    if (frames.size() > kLongestSample)
        return tooLong();

    Normalise(frames);
    SampleSpiral next = CurrentSpiral();
    next.samplelength = static_cast<int32>(frames.size());
    next.sample = std::make_shared<const std::vector<float>>(std::move(frames));
    Spiral().Publish(std::move(next));
    return loaded;
}

} // namespace

const SampleSpiral& CurrentSpiral() {
    return Spiral().Get();
}

float sampler2rfun(float x, float y) {
    const SampleSpiral& spiral = CurrentSpiral();
    if (spiral.samplelength < 1)
        return 0;
    const SpiralTurns turns = Turns(spiral);
    // Rounded from double precision, which the block form can do alike; atan2f is not always
    // rounded to the nearest.
    const auto angle = static_cast<float>(std::atan2(double(-y), double(-x)));
    const auto phi = static_cast<float>(angle / 6.28318530718 + 0.5);
    const float r = std::sqrt(x * x + y * y);
    const float u = r / turns.alphap - phi;
    const float n = std::floor(u);
    const float w = u - n;
    const float p0 = (n + phi) * turns.T;
    // So far out the turns are all the same, and w has lost its digits or is not a number.
    if (p0 >= static_cast<float>(turns.last))
        return turns.sample[turns.last];
    const float p1 = p0 + turns.T;
    return (1 - w) * Interpolate(turns, p0) + w * Interpolate(turns, p1);
}

PlaneFunction SampleFunction() {
    return {sampler2rfun, SampleBlock};
}

kits::Result<LoadedSample> LoadSample(const std::filesystem::path& path) {
    try {
        return Load(path);
    } catch (const std::bad_alloc&) {
        return Failure(path, "there is not enough memory");
    }
}

bool SetSampleFrequency(float frameRate, double frequency) {
    SampleSpiral next = CurrentSpiral();
    if (!(frequency > 0) || next.samplelength < 1)
        return false;
    next.T = static_cast<float>(frameRate / frequency);
    next.alphap = next.T * kRadius / static_cast<float>(next.samplelength);
    if (!std::isnormal(next.T) || !std::isnormal(next.alphap) || next.T < 0)
        return false;
    Spiral().Publish(std::move(next));
    return true;
}

std::string SampleFileName(const std::string& path, const kits::ProgramFolders& folders) {
    BPath file;
    BPath folder;
    if (BEntry(path.c_str()).GetPath(&file) != B_OK || file.GetParent(&folder) != B_OK)
        return path;
    const std::filesystem::path found = folders.Find("samples", file.Leaf());
    BPath samplesFolder;
    if (BEntry(found.parent_path().c_str(), true).GetPath(&samplesFolder) == B_OK &&
        folder == samplesFolder)
        return file.Leaf();
    return file.Path();
}

} // namespace vexa
