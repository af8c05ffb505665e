// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/MixerInput.h"

#include <algorithm>
#include <cmath>

namespace kits {

namespace {

/// The rate converter's filter extends this many frames to each side. At 44100 Hz, 20 kHz is
/// attenuated by 4 dB, 19 kHz by a quarter of a dB, and images by 80 dB and more.
constexpr unsigned kFilterHalf = 32;

/// Frames in the ring: more than any producer is ahead.
constexpr std::size_t kRoom = 1U << 16;
constexpr std::size_t kStretches = 1U << 12;
/// The number of frames taken out of the ring at a time.
constexpr std::size_t kPiece = 4096;

/// The largest lateness, in frames, that a producer is told: it cannot be ahead by more than the
/// ring holds.
constexpr int64 kMostLate = kRoom / 2;

/// Microseconds of sound that must have arrived too early before the producer is asked to come
/// later.
constexpr double kPatience = 2e6;

} // namespace

MixerInput::MixerInput(const DeviceClock& clock, double rate, std::size_t longest,
                       unsigned channels)
    : clock(clock),
      rate(rate),
      channels(channels),
      finite(longest * channels),
      converted((static_cast<std::size_t>(double(longest) * clock.Rate() / rate) + 2) * channels),
      samples(kRoom * channels),
      stretches(kStretches),
      piece(kPiece * channels) {
    if (clock.Rate() == rate)
        return;
    converter = std::make_unique<RateConverter>(rate, clock.Rate(), kFilterHalf, channels);
    lookahead = static_cast<bigtime_t>(std::ceil(double(converter->Lookahead()) * 1e6 / rate));
}

bigtime_t MixerInput::Write(std::span<const float> frames, bigtime_t start) noexcept {
    const auto count = static_cast<int64>(frames.size() / channels);
    const double duration = static_cast<double>(count) * 1e6 / rate;
    const double expected =
        static_cast<double>(rowStart) + static_cast<double>(rowFrames) * 1e6 / rate;
    // A buffer that does not follow the one before is placed by its start time.
    if (rowStart < 0 || std::abs(static_cast<double>(start) - expected) > duration / 2) {
        if (converter)
            converter->Reset();
        nextFrame = clock.FrameAt(start);
        rowStart = start;
        rowFrames = 0;
    }
    rowFrames += count;

    const std::span<const float> output = Convert(frames);
    const Stretch next{nextFrame, static_cast<uint32>(output.size() / channels)};
    nextFrame += next.count;
    if (samples.Writable() >= output.size() && stretches.Writable() > 0 && !output.empty()) {
        samples.Write(output.data(), output.size());
        stretches.Write(&next, 1);
        // Set only now: while the first frames are still on their way, nothing is missing.
        playing = true;
    }
    written = nextFrame;
    return LatencyChange(clock.TimeOf(next.frame) - clock.TimeOf(fetched), duration);
}

/// Returns the result of Write for a buffer of `duration` microseconds that arrived `slack`
/// microseconds before the device fetched it.
bigtime_t MixerInput::LatencyChange(bigtime_t slack, double duration) noexcept {
    if (slack < 0) {
        inTime = 0;
        const bigtime_t before = reported;
        reported = std::max(reported, std::min(-slack, clock.TimeOf(kMostLate)));
        return reported - before;
    }
    reported = 0;
    leastSlack = inTime > 0 ? std::min(leastSlack, slack) : slack;
    inTime += duration;
    if (inTime < kPatience)
        return 0;
    inTime = 0;
    return std::min<bigtime_t>(kMargin - leastSlack, 0);
}

std::span<const float> MixerInput::Convert(std::span<const float> frames) noexcept {
    std::transform(frames.begin(), frames.end(), finite.begin(),
                   [](float sample) { return std::isfinite(sample) ? sample : 0.0F; });
    if (!converter)
        return {finite.data(), frames.size()};
    return {converted.data(), converter->Process({finite.data(), frames.size()}, converted)};
}

void MixerInput::AddTo(std::span<float> left, float* right, int64 frame) noexcept {
    const int64 end = frame + static_cast<int64>(left.size());
    int64 at = frame;
    while (at < end && NextStretch(at) && stretch.frame < end) {
        at = stretch.frame;
        const auto wanted = static_cast<std::size_t>(
            std::min<int64>({end - at, stretch.count, static_cast<int64>(kPiece)}));
        const std::size_t n = samples.Read(piece.data(), wanted * channels) / channels;
        const auto offset = static_cast<std::size_t>(at - frame);
        for (std::size_t i = 0; i < n; i++)
            left[offset + i] += piece[i * channels];
        for (std::size_t i = 0; channels > 1 && i < n; i++)
            right[offset + i] += piece[i * channels + 1];
        Pass(n);
        at += static_cast<int64>(n);
    }
    fetched = end;
    // A stretch that comes later means that the silence is intended: the stream begins there or has
    // left a part out.
    if (at < end && playing && !NextStretch(at))
        missing++;
}

/// Returns true if there is a stretch to play from; it then begins at `frame` or later. Frames
/// before `frame` are skipped, whatever arrives meanwhile. A stream that goes back in time may
/// repeat frames that have just been played.
bool MixerInput::NextStretch(int64 frame) noexcept {
    while (true) {
        if (stretch.count == 0) {
            lateCounted = false;
            if (stretches.Read(&stretch, 1) == 0)
                return false;
        }
        if (stretch.frame >= frame && stretch.count > 0)
            return true;
        const auto over =
            static_cast<std::size_t>(std::min<int64>(frame - stretch.frame, stretch.count));
        Pass(samples.Skip(over * channels) / channels);
        if (!lateCounted)
            late++;
        lateCounted = true;
    }
}

/// Advances `stretch` past frames that have been taken out of the ring.
void MixerInput::Pass(std::size_t frames) noexcept {
    stretch.frame += static_cast<int64>(frames);
    stretch.count -= static_cast<uint32>(frames);
}

} // namespace kits
