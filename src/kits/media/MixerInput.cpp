#include "kits/media/MixerInput.h"

#include <algorithm>
#include <cmath>

#include <samplerate.h>

namespace kits {

namespace {

/// libsamplerate's SRC_SINC_MEDIUM_QUALITY: 121 dB, nine tenths of the bandwidth. Its filter is
/// 2 x 46 input frames long (22438 coefficients at 491 a zero crossing), of which it needs the
/// second half before it can give out the middle.
constexpr int kQuality = SRC_SINC_MEDIUM_QUALITY;
constexpr double kFilterHalf = 46;

/// Frames in the ring: more than any producer is ahead.
constexpr std::size_t kRoom = 1U << 16;
constexpr std::size_t kStretches = 1U << 12;

} // namespace

struct MixerInput::Converter {
    explicit Converter(double ratio) : ratio(ratio) {
        int error = 0;
        state = src_new(kQuality, 1, &error);
    }
    ~Converter() { src_delete(state); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    SRC_STATE* state = nullptr;
    double ratio;
};

MixerInput::MixerInput(const DeviceClock& clock, double rate, std::size_t longest)
    : clock(clock),
      rate(rate),
      finite(longest),
      samples(kRoom),
      stretches(kStretches),
      piece(4096) {
    const double ratio = clock.Rate() / rate;
    if (ratio != 1) {
        converter = std::make_unique<Converter>(ratio);
        lookahead = static_cast<bigtime_t>(kFilterHalf / std::min(ratio, 1.0) * 1e6 / rate);
    }
    converted.resize(static_cast<std::size_t>(
        (static_cast<double>(longest) + 2 * kFilterHalf) * std::max(ratio, 1.0) + 16));
}

MixerInput::~MixerInput() = default;

bigtime_t MixerInput::Write(std::span<const float> frames, bigtime_t start) noexcept {
    // Where the buffer belongs if it does not follow on the one before.
    const double duration = static_cast<double>(frames.size()) * 1e6 / rate;
    if (expected < 0 || std::abs(static_cast<double>(start) - expected) > duration / 2) {
        if (converter)
            src_reset(converter->state);
        nextFrame = clock.FrameAt(start);
        expected = static_cast<double>(start);
    }
    expected += duration;

    const std::span<const float> output = Convert(frames);
    const Stretch written{nextFrame, static_cast<uint32>(output.size())};
    nextFrame += written.count;
    if (samples.Writable() >= output.size() && stretches.Writable() > 0 && !output.empty()) {
        samples.Write(output.data(), output.size());
        stretches.Write(&written, 1);
        // Only now: nothing is missing while the first frames are still on their way.
        playing = true;
    }
    return std::max<bigtime_t>(clock.TimeOf(fetched) - clock.TimeOf(written.frame), 0);
}

std::span<const float> MixerInput::Convert(std::span<const float> frames) noexcept {
    std::transform(frames.begin(), frames.end(), finite.begin(),
                   [](float sample) { return std::isfinite(sample) ? sample : 0.0F; });
    if (!converter)
        return {finite.data(), frames.size()};
    SRC_DATA data{};
    data.data_in = finite.data();
    data.input_frames = static_cast<long>(frames.size());
    data.data_out = converted.data();
    data.output_frames = static_cast<long>(converted.size());
    data.src_ratio = converter->ratio;
    if (src_process(converter->state, &data) != 0)
        return {};
    return {converted.data(), static_cast<std::size_t>(data.output_frames_gen)};
}

void MixerInput::AddTo(std::span<float> mix, int64 frame) noexcept {
    const int64 end = frame + static_cast<int64>(mix.size());
    int64 at = frame;
    DropBefore(at);
    while (at < end && NextStretch() && stretch.frame < end) {
        at = stretch.frame;
        const auto wanted = static_cast<std::size_t>(
            std::min<int64>({end - at, stretch.count, static_cast<int64>(piece.size())}));
        const std::size_t n = samples.Read(piece.data(), wanted);
        for (std::size_t i = 0; i < n; i++)
            mix[static_cast<std::size_t>(at - frame) + i] += piece[i];
        stretch.frame += static_cast<int64>(n);
        stretch.count -= static_cast<uint32>(n);
        at += static_cast<int64>(n);
        // A stream that goes back in time may bring what has just been played.
        DropBefore(at);
    }
    fetched = end;
    // With a stretch to come later the silence is meant: the stream begins there or left a part
    // out.
    if (at < end && playing && !NextStretch())
        missing++;
}

/// Whether there is a stretch to be played from.
bool MixerInput::NextStretch() noexcept {
    if (stretch.count == 0)
        lateCounted = false;
    return stretch.count > 0 || stretches.Read(&stretch, 1) == 1;
}

/// Passes over what should have been played already.
void MixerInput::DropBefore(int64 frame) noexcept {
    while (NextStretch() && stretch.frame < frame) {
        const auto past =
            static_cast<std::size_t>(std::min<int64>(frame - stretch.frame, stretch.count));
        samples.Skip(past);
        stretch.frame += static_cast<int64>(past);
        stretch.count -= static_cast<uint32>(past);
        if (!lateCounted)
            late++;
        lateCounted = true;
    }
}

} // namespace kits
