// SPDX-License-Identifier: GPL-3.0-or-later
// The interface of the library vexa-window.so, which the plug-in opens when its host asks for a
// window: the plug-in itself needs no X.
#pragma once

#include "plugin/frame/FrameOwner.h"

#include <cstdint>

namespace vexa {
class WindowFrame;
}

namespace vexa::clap {

/// The functions of the library. They do what the members of WindowFrame do.
struct WindowLibrary {
    /// The size of a new frame in pixels.
    std::uint32_t width, height;
    /// Returns null on failure, whose reason the owner is told.
    WindowFrame* (*make)(std::uint32_t parent, const char* folder, const FrameOwner* owner);
    void (*end)(WindowFrame* frame);
    void (*idle)(WindowFrame* frame);
    void (*setSize)(WindowFrame* frame, std::uint32_t width, std::uint32_t height);
    /// Makes the size the nearest one.
    void (*adjust)(const WindowFrame* frame, std::uint32_t& width, std::uint32_t& height);
    void (*show)(WindowFrame* frame, bool visible);
};

constexpr const char* kWindowLibrary = "vexa-window.so";
/// The name of the table that the library exports. It ends with the version of this interface, so a
/// library of another version has no such table.
constexpr const char* kWindowTable = "vexa_window_2";

} // namespace vexa::clap
