// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/SampleFunction.h"

#include "functions/SpiralLoops.h"
#include "functions/loops/SpiralTurn.h"
#include "kits/media/MediaFile.h"
#include "kits/storage/Entry.h"
#include "kits/storage/Path.h"
#include "kits/support/RealtimeMark.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace vexa {

namespace {

/// What a person may have wanted to load who has chosen a file of another kind.
constexpr const char* kKinds = " (what can be loaded are sound files, and pictures as PNG or JPEG)";

/// The radius at which the sample ends.
constexpr float kRadius = 5.0F;

const SpiralLoops& spiralLoops = *RunnableSpiralLoops().back();

VEXA_REALTIME SpiralTurns Turns(const std::vector<float>& sample, const Winding& winding) {
    return {sample.data(), static_cast<int>(sample.size()) - 1, winding.T, winding.alphap};
}

/// Returns the sample at `index`, which is a whole number or NaN; an index outside of the sample
/// counts as its nearest end.
VEXA_REALTIME float At(const SpiralTurns& turns, float index) {
    if (!(index > 0))
        return turns.sample[0];
    return turns
        .sample[index < static_cast<float>(turns.last) ? static_cast<int32>(index) : turns.last];
}

VEXA_REALTIME float Interpolate(const SpiralTurns& turns, float p) {
    const float i = std::floor(p);
    const float f = p - i;
    return (1 - f) * At(turns, i) + f * At(turns, i + 1);
}

/// Returns the frames of the track, which delivers floats of one channel. A track that is too long
/// is read until slightly more than kLongestSample frames.
std::vector<float> ReadTrack(BMediaTrack& track, const media_format& format) {
    std::vector<float> frames;
    frames.reserve(static_cast<std::size_t>(std::max<int64>(track.CountFrames(), 0)));
    std::vector<float> buffer(format.u.raw_audio.buffer_size / sizeof(float));
    int64 count = 0;
    while (frames.size() <= kLongestSample && track.ReadFrames(buffer.data(), &count) == B_OK)
        frames.insert(frames.end(), buffer.begin(), buffer.begin() + count);
    return frames;
}

/// Scales the frames to a peak of 1; silence remains.
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
    return {"could not load sample " + path.string() + ": " + reason, {kSampleAlert}};
}

/// Opens the sound file and sets `fullPath`.
kits::Result<std::unique_ptr<BMediaFile>> Open(const std::filesystem::path& path, BPath& fullPath) {
    const BEntry entry(path.c_str(), false);
    entry_ref ref;
    if (entry.GetPath(&fullPath) != B_OK || entry.GetRef(&ref) != B_OK)
        return Failure(path, "there is no such folder");
    auto file = std::make_unique<BMediaFile>(&ref);
    if (file->InitCheck() != B_OK)
        return kits::Error{file->Fault() + (file->InitCheck() == B_MEDIA_NO_HANDLER ? kKinds : ""),
                           {kSampleAlert}};
    return file;
}

kits::Result<LoadedSample> Load(const std::filesystem::path& path) {
    BPath fullPath;
    const kits::Result<std::unique_ptr<BMediaFile>> file = Open(path, fullPath);
    if (!file)
        return file.Fault();
    BMediaTrack* const track = (*file)->TrackAt(0);

    media_format format;
    format.type = B_MEDIA_RAW_AUDIO;
    format.u.raw_audio = media_raw_audio_format::wildcard;
    format.u.raw_audio.channel_count = 1;
    format.u.raw_audio.format = B_AUDIO_FLOAT;
    format.u.raw_audio.byte_order = B_MEDIA_LITTLE_ENDIAN;
    track->DecodedFormat(&format);
    const auto tooLong = [&path] {
        return Failure(path, "it is longer than " + std::to_string(kLongestSample) + " frames");
    };
    if (track->CountFrames() > static_cast<int64>(kLongestSample))
        return tooLong();
    std::vector<float> frames = ReadTrack(*track, format);
    const std::string shortfall = track->Shortfall();
    (*file)->ReleaseAllTracks();
    if (frames.empty())
        return Failure(path, "it contains no sound");
    if (frames.size() > kLongestSample)
        return tooLong();

    Normalise(frames);
    return LoadedSample{std::make_shared<const std::vector<float>>(std::move(frames)),
                        format.u.raw_audio.frame_rate, fullPath.Path(),
                        shortfall.empty() ? "" : path.string() + ": " + shortfall};
}

} // namespace

float sampler2rfun(const SpiralTurns& turns, float x, float y) {
    const float phi = TurnOf(x, y);
    const float r = std::sqrt(x * x + y * y);
    const float u = r / turns.alphap - phi;
    const float n = std::floor(u);
    const float w = u - n;
    const float p0 = (n + phi) * turns.T;
    // So far out all turns have the last value, and `w` has lost its digits or is NaN.
    if (p0 >= static_cast<float>(turns.last))
        return turns.sample[turns.last];
    const float p1 = p0 + turns.T;
    return (1 - w) * Interpolate(turns, p0) + w * Interpolate(turns, p1);
}

SampleSpiral::SampleSpiral(SampleFrames frames, const Winding& winding)
    : sample(std::move(frames)), winding(winding) {}

float SampleSpiral::At(float x, float y, const float*) const noexcept {
    return sampler2rfun(Turns(*sample, winding), x, y);
}

void SampleSpiral::Evaluate(const float* x, const float* y, const float* const*, float* values,
                            std::size_t count) const noexcept {
    spiralLoops.Values(Turns(*sample, winding), x, y, values, count);
}

kits::Result<int64> SampleLength(const std::filesystem::path& path) {
    BPath fullPath;
    const kits::Result<std::unique_ptr<BMediaFile>> file = Open(path, fullPath);
    return file ? kits::Result<int64>((*file)->TrackAt(0)->CountFrames()) : file.Fault();
}

kits::Result<LoadedSample> LoadSample(const std::filesystem::path& path) {
    try {
        return Load(path);
    } catch (const std::bad_alloc&) {
        return Failure(path, "there is not enough memory");
    }
}

std::optional<Winding> WindingFor(std::size_t frames, float frameRate, double frequency) {
    if (!(frequency > 0) || frames == 0)
        return std::nullopt;
    Winding winding;
    winding.T = static_cast<float>(frameRate / frequency);
    winding.alphap = winding.T * kRadius / static_cast<float>(frames);
    if (!std::isnormal(winding.T) || !std::isnormal(winding.alphap) || winding.T < 0)
        return std::nullopt;
    return winding;
}

} // namespace vexa
