// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Decimator.h"

#include "kits/maths/Functions.h"

#include <numbers>

namespace vexa {

DecimationFilter::DecimationFilter(std::size_t factor, std::size_t half)
    : factor(factor), reach(half * factor), taps((2 * reach + kSlack) / kSlack * kSlack) {
    // The edge, where the response is one half, lies below the lower rate's Nyquist frequency by
    // this margin.
    const double edge = (1 - 2.6 / static_cast<double>(half)) / static_cast<double>(factor);
    for (std::size_t i = 0; i <= 2 * reach; i++) {
        const double place = static_cast<double>(i) - static_cast<double>(reach);
        const double part = std::numbers::pi * place / static_cast<double>(reach);
        const double angle = std::numbers::pi * edge * place;
        const double sinc = i == reach ? 1 : kits::maths::Wave<false>(angle) / angle;
        const double window =
            0.384 + 0.5 * kits::maths::Wave<true>(part) + 0.116 * kits::maths::Wave<true>(2 * part);
        taps[i] = static_cast<float>(edge * sinc * window);
    }
}

Decimator::Decimator(int step)
    : factor(static_cast<std::size_t>(step)), filter(factor, DecimationFilter::kWhole) {
    // Silence precedes the first frame, which lies in the middle of the first output's filter.
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
    if (held.size() < filter.Length())
        return;
    const std::size_t more = (held.size() - filter.Length()) / factor + 1;
    out.resize(out.size() + more);
    filter.Run(held.data(), &*out.end() - more, more);
    given += more;
    held.erase(held.begin(), held.begin() + static_cast<std::ptrdiff_t>(more * factor));
}

void Decimator::Finish(std::vector<float>& out) {
    if (factor == 1)
        return;
    const std::size_t whole = out.size() + (taken + factor - 1) / factor - given;
    // Silence after the end pushes the last frames out, and some more.
    const std::vector<float> silence(filter.Length());
    Process(silence.data(), silence.size(), out);
    out.resize(whole);
}

} // namespace vexa
