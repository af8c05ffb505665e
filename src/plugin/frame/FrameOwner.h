// SPDX-License-Identifier: GPL-3.0-or-later
// What a frame asks of the plug-in that it belongs to.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexa {

/// The functions get `owner` and are called during calls of the frame, in the same thread. They are
/// those of C, because a frame may be in another library than its owner.
struct FrameOwner {
    void* owner;
    /// Opens a connection as Windows::Open does and returns its descriptor, or a negative value on
    /// failure. Then `fault`, which has `room` bytes, holds the reason.
    int (*open)(void* owner, char* fault, std::size_t room);
    /// Tells that the program has given the frame another size, in pixels.
    void (*takeSize)(void* owner, std::uint32_t width, std::uint32_t height);
    /// Tells what the frame shows instead of the program, which does not run.
    void (*say)(void* owner, const char* message);
};

} // namespace vexa
