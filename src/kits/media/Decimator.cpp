#include "kits/media/Decimator.h"

#include <algorithm>
#include <array>
#include <new>

#include <samplerate.h>

namespace kits {

struct Decimator::State {
    ~State() { src_delete(converter); }

    std::size_t factor = 1;
    SRC_STATE* converter = nullptr;
    std::size_t taken = 0;
    std::size_t given = 0;

    /// Feeds the converter; appends up to `most` of the frames that it gives. How many it gave.
    std::size_t Convert(const float* frames, std::size_t count, bool last, std::size_t most,
                        std::vector<float>& out);
};

Decimator::Decimator(int factor) : state(std::make_unique<State>()) {
    state->factor = static_cast<std::size_t>(factor);
    if (factor == 1)
        return;
    int error = 0;
    state->converter = src_new(SRC_SINC_BEST_QUALITY, 1, &error);
    if (!state->converter)
        throw std::bad_alloc();
}

Decimator::~Decimator() = default;

std::size_t Decimator::State::Convert(const float* frames, std::size_t count, bool last,
                                      std::size_t most, std::vector<float>& out) {
    std::array<float, 4096> converted;
    SRC_DATA data{};
    data.src_ratio = 1.0 / static_cast<double>(factor);
    data.end_of_input = last;
    std::size_t total = 0;
    do {
        data.data_in = frames;
        data.input_frames = static_cast<long>(count);
        data.data_out = converted.data();
        data.output_frames = static_cast<long>(converted.size());
        src_process(converter, &data);
        frames += data.input_frames_used;
        count -= static_cast<std::size_t>(data.input_frames_used);
        const std::size_t kept =
            std::min(static_cast<std::size_t>(data.output_frames_gen), most - total);
        out.insert(out.end(), converted.begin(), converted.begin() + static_cast<long>(kept));
        total += kept;
    } while (data.input_frames_used > 0 || data.output_frames_gen > 0);
    return total;
}

void Decimator::Process(const float* frames, std::size_t count, std::vector<float>& out) {
    if (!state->converter) {
        out.insert(out.end(), frames, frames + count);
        return;
    }
    state->taken += count;
    state->given += state->Convert(frames, count, false, state->taken, out);
}

void Decimator::Finish(std::vector<float>& out) {
    if (!state->converter)
        return;
    const std::size_t wanted = (state->taken + state->factor - 1) / state->factor;
    // Silence behind the end pushes the last frames out; how many the converter gives of its own
    // accord depends on rounding.
    const std::vector<float> silence(4096);
    while (state->given < wanted)
        state->given +=
            state->Convert(silence.data(), silence.size(), false, wanted - state->given, out);
}

} // namespace kits
