// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/clap/Gui.h"

#include "plugin/clap/HostExtension.h"

#include <cstdio>
#include <cstring>
#include <utility>

#include <dlfcn.h>

namespace vexa::clap {

namespace {

/// The milliseconds between two looks at the window and its program.
constexpr uint32_t kPeriod = 33;

const clap_host_timer_support* Timers(const clap_host& host) {
    return Find<clap_host_timer_support>(host, CLAP_EXT_TIMER_SUPPORT);
}

} // namespace

Gui::Gui(const clap_host& host, Windows& windows, std::filesystem::path folder, Windows::Tell tell)
    : host(host),
      windows(windows),
      folder(std::move(folder)),
      tell(std::move(tell)),
      object(nullptr, ::dlclose) {}

Gui::~Gui() {
    Destroy();
}

/// A build without a window has no library, and says nothing of it.
void Gui::Load() {
    const std::filesystem::path file = folder / kWindowLibrary;
    std::error_code ignored;
    if (library || !std::filesystem::exists(file, ignored))
        return;
    object.reset(::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (object)
        library = static_cast<const WindowLibrary*>(::dlsym(object.get(), kWindowTable));
    if (!library)
        tell(::dlerror());
}

bool Gui::IsSupported(const char* api, bool isFloating) noexcept try {
    if (isFloating || !api || std::strcmp(api, CLAP_WINDOW_API_X11) != 0)
        return false;
    Load();
    return library;
} catch (const std::exception& fault) {
    tell(fault.what());
    return false;
}

bool Gui::Create(const char* api, bool isFloating) noexcept {
    const clap_host_timer_support* const timers = Timers(host);
    if (exists || !timers || !IsSupported(api, isFloating))
        return false;
    exists = timers->register_timer(&host, kPeriod, &timer);
    width = library->width;
    height = library->height;
    chosen = false;
    return exists;
}

void Gui::Destroy() noexcept {
    EndFrame();
    if (std::exchange(exists, false))
        Timers(host)->unregister_timer(&host, timer);
}

void Gui::EndFrame() noexcept {
    if (WindowFrame* const old = std::exchange(frame, nullptr))
        library->end(old);
}

bool Gui::GetSize(uint32_t& toWidth, uint32_t& toHeight) const noexcept {
    toWidth = width;
    toHeight = height;
    return exists;
}

bool Gui::Adjust(uint32_t& toWidth, uint32_t& toHeight) const noexcept {
    if (frame)
        library->adjust(frame, toWidth, toHeight);
    return exists;
}

bool Gui::SetSize(uint32_t nextWidth, uint32_t nextHeight) noexcept {
    uint32_t possibleWidth = nextWidth, possibleHeight = nextHeight;
    Adjust(possibleWidth, possibleHeight);
    Choose(possibleWidth, possibleHeight);
    return exists && possibleWidth == nextWidth && possibleHeight == nextHeight;
}

void Gui::Choose(uint32_t nextWidth, uint32_t nextHeight) noexcept {
    chosen = true;
    width = nextWidth;
    height = nextHeight;
    if (frame)
        library->setSize(frame, width, height);
}

bool Gui::SetParent(const clap_window& parent) noexcept {
    if (!exists || std::strcmp(parent.api, CLAP_WINDOW_API_X11) != 0)
        return false;
    EndFrame();
    const FrameOwner owner{this, OpenConnection, TakeSize, Say};
    frame = library->make(static_cast<std::uint32_t>(parent.x11), folder.c_str(), &owner);
    if (frame && chosen)
        library->setSize(frame, width, height);
    return frame;
}

bool Gui::Show(bool visible) noexcept {
    if (frame)
        library->show(frame, visible);
    return frame;
}

void Gui::OnTimer(clap_id id) noexcept {
    if (frame && id == timer)
        library->idle(frame);
}

int Gui::OpenConnection(void* gui, char* fault, std::size_t room) {
    const kits::Result<int> socket = static_cast<Gui*>(gui)->windows.Open();
    if (!socket)
        std::snprintf(fault, room, "%s", socket.Fault().text.c_str());
    return socket ? *socket : -1;
}

/// A host that does not take the size keeps its own, which the program then follows.
void Gui::TakeSize(void* owner, std::uint32_t width, std::uint32_t height) {
    auto& gui = *static_cast<Gui*>(owner);
    const uint32_t oldWidth = std::exchange(gui.width, width);
    const uint32_t oldHeight = std::exchange(gui.height, height);
    const auto* hosts = Find<clap_host_gui>(gui.host, CLAP_EXT_GUI);
    if (!hosts || !hosts->request_resize(&gui.host, width, height))
        gui.Choose(oldWidth, oldHeight);
}

void Gui::Say(void* gui, const char* message) {
    static_cast<Gui*>(gui)->tell(message);
}

} // namespace vexa::clap
