// SPDX-License-Identifier: GPL-3.0-or-later
// The window of an instance in hosts on X.
#pragma once

#include "plugin/clap/WindowLibrary.h"
#include "plugin/window/Windows.h"

#include <cstdint>
#include <filesystem>
#include <memory>

#include <clap/ext/gui.h>
#include <clap/ext/timer-support.h>

namespace vexa::clap {

/// What CLAP calls the gui: a frame (frame/WindowFrame.h) inside the host's window, which a timer
/// of the host keeps going. Main thread.
class Gui {
  public:
    /// `folder` has the library of the frame, and the program is found from there
    /// (frame/WindowProcess.h). The host, the windows and `tell` outlive it.
    Gui(const clap_host& host, Windows& windows, std::filesystem::path folder, Windows::Tell tell);
    ~Gui();
    Gui(const Gui&) = delete;
    Gui& operator=(const Gui&) = delete;

    /// Returns false also if the library is missing, so that the host shows controls of its own. A
    /// host may ask where it has no timers to lend, as in a scan of all plug-ins.
    bool IsSupported(const char* api, bool isFloating) noexcept;
    /// From here to Destroy the gui exists and has a size; it has a window once it has a parent.
    /// Returns false also if the host has no timers.
    bool Create(const char* api, bool isFloating) noexcept;
    void Destroy() noexcept;
    bool GetSize(uint32_t& toWidth, uint32_t& toHeight) const noexcept;
    /// Makes the size the nearest one that the window can have. As long as the program has not
    /// told its limits, which depend on the desktop's scale, that is any.
    bool Adjust(uint32_t& toWidth, uint32_t& toHeight) const noexcept;
    /// Sets the size that the host has chosen, or the nearest one, and returns true if it is the
    /// chosen one. If the limits of the program forbid it once it runs, the host is asked for the
    /// nearest one.
    bool SetSize(uint32_t nextWidth, uint32_t nextHeight) noexcept;
    bool SetParent(const clap_window& parent) noexcept;
    bool Show(bool visible) noexcept;
    void OnTimer(clap_id id) noexcept;

  private:
    static int OpenConnection(void* gui, char* fault, std::size_t room);
    static void TakeSize(void* gui, std::uint32_t width, std::uint32_t height);
    static void Say(void* gui, const char* message);
    void Load();
    void EndFrame() noexcept;
    void Choose(uint32_t nextWidth, uint32_t nextHeight) noexcept;

    const clap_host& host;
    Windows& windows;
    const std::filesystem::path folder;
    const Windows::Tell tell;
    /// The shared object of the library, which is closed when the instance ends.
    std::unique_ptr<void, int (*)(void*)> object;
    const WindowLibrary* library = nullptr;
    /// True from Create to Destroy; `timer` is registered meanwhile.
    bool exists = false;
    clap_id timer = CLAP_INVALID_ID;
    uint32_t width = 0, height = 0;
    /// True if the host has chosen this size.
    bool chosen = false;
    WindowFrame* frame = nullptr;
};

} // namespace vexa::clap
