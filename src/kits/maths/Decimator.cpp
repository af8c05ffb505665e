#include "kits/maths/Decimator.h"

#include "kits/maths/Functions.h"

#include <cstring>
#include <numbers>

namespace kits {

namespace {

/// Sixteen sums side by side: the order of additions is a part of the result.
using Lanes = float __attribute__((vector_size(64)));
constexpr std::size_t kLanes = 16;

/// Frames of the lower rate that the filter of a whole render has to each side.
constexpr std::size_t kHalf = 96;

float SumOfProducts(const float* a, const float* b, std::size_t count) {
    Lanes sums{};
    for (std::size_t i = 0; i < count; i += kLanes) {
        Lanes x, y;
        std::memcpy(&x, a + i, sizeof x);
        std::memcpy(&y, b + i, sizeof y);
        sums += x * y;
    }
    float sum = 0;
    for (std::size_t k = 0; k < kLanes; k++)
        sum += sums[k];
    return sum;
}

} // namespace

DecimationFilter::DecimationFilter(std::size_t factor, std::size_t half)
    : reach(half * factor), taps((2 * reach + kLanes) / kLanes * kLanes) {
    // The edge, where a half is left, lies so much below that of the lower rate's band.
    const double edge = (1 - 2.6 / static_cast<double>(half)) / static_cast<double>(factor);
    for (std::size_t i = 0; i <= 2 * reach; i++) {
        const double place = static_cast<double>(i) - static_cast<double>(reach);
        const double part = std::numbers::pi * place / static_cast<double>(reach);
        const double angle = std::numbers::pi * edge * place;
        const double sinc = i == reach ? 1 : maths::Wave<false>(angle) / angle;
        const double window =
            0.384 + 0.5 * maths::Wave<true>(part) + 0.116 * maths::Wave<true>(2 * part);
        taps[i] = static_cast<float>(edge * sinc * window);
    }
}

float DecimationFilter::At(const float* frames) const noexcept {
    return SumOfProducts(taps.data(), frames, taps.size());
}

Decimator::Decimator(int step) : factor(static_cast<std::size_t>(step)), filter(factor, kHalf) {
    // Silence before the first frame, which is in the middle of the first output's filter.
    if (factor > 1)
        held.resize(filter.Reach());
}

void Decimator::Process(const float* frames, std::size_t count, std::vector<float>& out) {
    if (factor == 1) {
        out.insert(out.end(), frames, frames + count);
        return;
    }
    held.insert(held.end(), frames, frames + count);
    taken += count;
    std::size_t first = 0;
    for (; first + filter.Length() <= held.size(); first += factor) {
        out.push_back(filter.At(&held[first]));
        given++;
    }
    held.erase(held.begin(), held.begin() + static_cast<std::ptrdiff_t>(first));
}

void Decimator::Finish(std::vector<float>& out) {
    if (factor == 1)
        return;
    const std::size_t whole = out.size() + (taken + factor - 1) / factor - given;
    // Silence behind the end pushes the last frames out, and more.
    const std::vector<float> silence(filter.Length());
    Process(silence.data(), silence.size(), out);
    out.resize(whole);
}

} // namespace kits
