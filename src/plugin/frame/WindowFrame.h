// SPDX-License-Identifier: GPL-3.0-or-later
// The window of a plug-in in a host on X, in which the program vexa shows itself.
#pragma once

#include "plugin/frame/FrameOwner.h"
#include "plugin/frame/WindowProcess.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include <xcb/xcb.h>

namespace vexa {

/// A window inside a host's window. It runs the program, passes the host's keys on to it, and,
/// while the program does not run, shows a text and starts the program again at a click. It uses
/// xcb: Xlib would end the host when a window is gone, whereas errors of this connection are
/// events. One thread.
class WindowFrame {
  public:
    /// The size of the window in pixels until the program has reported its own: its size with the
    /// default font.
    static constexpr std::uint16_t kWidth = 1216, kHeight = 650;

    /// Makes the window inside `parent` and starts the program, which it looks for in `folder`.
    /// Throws if there is no X server.
    WindowFrame(std::uint32_t parent, std::string folder, const FrameOwner& owner);
    /// Ends the program.
    ~WindowFrame();
    WindowFrame(const WindowFrame&) = delete;
    WindowFrame& operator=(const WindowFrame&) = delete;

    /// Returns the X server's id of the window.
    std::uint32_t Window() const { return window; }
    /// Lets the window follow the size of its parent, for hosts that do not tell sizes.
    void FollowParent();
    /// Handles what has happened. The host is to call it about thirty times a second.
    void Idle();
    /// Sets the size that the host has chosen, which is not reported to the owner. It takes
    /// precedence over the sizes with which programs start.
    void SetSize(std::uint16_t nextWidth, std::uint16_t nextHeight);
    /// Returns the nearest size that the program can fill; the given one if no program has told
    /// its limits yet.
    std::pair<std::uint16_t, std::uint16_t> NearestSize(std::uint16_t nextWidth,
                                                        std::uint16_t nextHeight) const;
    void Show(bool visible);

  private:
    void MakeWindow();
    void Begin();
    void Take(const xcb_generic_event_t& event);
    void PassOn(const xcb_generic_event_t& event, std::uint32_t mask);
    void TakeOwnSize();
    void FollowTo(std::uint16_t nextWidth, std::uint16_t nextHeight);
    void Configure(std::uint32_t nextWidth, std::uint32_t nextHeight);
    void Say(const std::string& said);
    void Draw();

    const std::uint32_t parent;
    const std::string folder;
    const FrameOwner owner;
    xcb_connection_t* server = nullptr;
    std::uint32_t window = 0;
    std::uint16_t width = kWidth, height = kHeight;
    /// True from the first SetSize.
    bool chosen = false;
    /// The size that the server has reported and that is still to be compared with these.
    std::optional<std::pair<std::uint16_t, std::uint16_t>> placed;
    /// The text that is shown while the program does not run.
    std::string text;
    WindowProcess process;
};

} // namespace vexa
