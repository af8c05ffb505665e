// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/clap/WindowLibrary.h"

#include "plugin/frame/WindowFrame.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <tuple>

namespace vexa::clap {

namespace {

WindowFrame* Make(std::uint32_t parent, const char* folder, const FrameOwner* owner) try {
    return new WindowFrame(parent, folder, *owner);
} catch (const std::exception& fault) {
    owner->say(owner->owner, fault.what());
    return nullptr;
}

/// Returns a length that X has.
std::uint16_t Length(std::uint32_t pixels) {
    constexpr std::uint32_t most = std::numeric_limits<std::int16_t>::max();
    return static_cast<std::uint16_t>(std::clamp<std::uint32_t>(pixels, 1, most));
}

} // namespace

} // namespace vexa::clap

extern "C" __attribute__((visibility("default"))) const vexa::clap::WindowLibrary vexa_window_2{
    vexa::WindowFrame::kWidth,
    vexa::WindowFrame::kHeight,
    vexa::clap::Make,
    [](vexa::WindowFrame* frame) { delete frame; },
    [](vexa::WindowFrame* frame) { frame->Idle(); },
    [](vexa::WindowFrame* frame, std::uint32_t width, std::uint32_t height) {
        frame->SetSize(vexa::clap::Length(width), vexa::clap::Length(height));
    },
    [](const vexa::WindowFrame* frame, std::uint32_t& width, std::uint32_t& height) {
        std::tie(width, height) =
            frame->NearestSize(vexa::clap::Length(width), vexa::clap::Length(height));
    },
    [](vexa::WindowFrame* frame, bool visible) { frame->Show(visible); }};
