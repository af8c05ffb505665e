#include "kits/media/Decimator.h"

namespace kits {

namespace {

/// Frames of the lower rate that the filter has to each side: the longest that there is.
constexpr unsigned kFilterHalf = 96;

} // namespace

Decimator::Decimator(int factor) : factor(static_cast<std::size_t>(factor)) {
    if (factor > 1)
        converter.emplace(factor, 1, kFilterHalf);
}

void Decimator::Process(const float* frames, std::size_t count, std::vector<float>& out) {
    if (!converter) {
        out.insert(out.end(), frames, frames + count);
        return;
    }
    const std::size_t before = out.size();
    out.resize(before + count / factor + 2);
    const std::size_t made = converter->Process({frames, count}, std::span(out).subspan(before));
    out.resize(before + made);
    taken += count;
    given += made;
}

void Decimator::Finish(std::vector<float>& out) {
    if (!converter)
        return;
    const std::size_t whole = out.size() + (taken + factor - 1) / factor - given;
    // Silence behind the end pushes the last frames out, and more.
    const std::vector<float> silence(converter->Lookahead() + factor);
    Process(silence.data(), silence.size(), out);
    out.resize(whole);
}

} // namespace kits
