// SPDX-License-Identifier: GPL-3.0-or-later
// A host's window with the window of a plug-in in it, as a user sees it.
#pragma once

#include "window/Desktop.h"

#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include <xcb/xcb.h>

namespace test {

/// The title of the host's window.
constexpr const char* kHostTitle = "Host";
/// The position of the expression's field in the program's window with the default font.
constexpr int kExpressionX = 150, kExpressionY = 367;

/// Returns the id of the process of a plug-in's window in this process; 0 if there is none.
inline pid_t WindowProgram() {
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(task.path() / "children");
        for (pid_t child = 0; file >> child;) {
            std::ifstream name("/proc/" + std::to_string(child) + "/comm");
            if (std::string text; name >> text && text == "vexa")
                return child;
        }
    }
    return 0;
}

/// Calls `idle`, as a host does regularly, until the condition holds; returns false if it does not
/// within `seconds`.
inline bool AwaitInHost(const std::function<void()>& idle, const std::function<bool()>& what,
                        double seconds = 20) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!what()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        idle();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

/// Types an expression into the program's field until it plays. The program takes time to appear.
inline bool TypeInHost(const Desktop& desktop, const char* expression,
                       const std::function<void()>& idle, const std::function<bool()>& plays) {
    return AwaitInHost(idle, [&] {
        desktop.Click(kExpressionX, kExpressionY);
        desktop.Key("ctrl+a");
        desktop.Type(expression);
        desktop.Key("Return");
        return AwaitInHost(idle, plays, 0.5);
    });
}

using Size = std::pair<std::uint32_t, std::uint32_t>;

/// A host's empty window.
class HostWindow {
  public:
    HostWindow() : server(::xcb_connect(nullptr, nullptr)), window(::xcb_generate_id(server)) {
        const xcb_screen_t& screen = *::xcb_setup_roots_iterator(::xcb_get_setup(server)).data;
        ::xcb_create_window(server, XCB_COPY_FROM_PARENT, window, screen.root, 0, 0, 1000, 560, 0,
                            XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        ::xcb_change_property(server, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME,
                              XCB_ATOM_STRING, 8, std::uint32_t(std::strlen(kHostTitle)),
                              kHostTitle);
        ::xcb_map_window(server, window);
        ::xcb_flush(server);
    }
    ~HostWindow() { ::xcb_disconnect(server); }
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    std::uint32_t Id() const { return window; }
    void SetSize(std::uint32_t width, std::uint32_t height) const {
        const std::uint32_t size[] = {width, height};
        ::xcb_configure_window(server, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                               size);
        ::xcb_flush(server);
    }
    /// Returns true if a window manager keeps the dialog `id` above this window.
    bool IsBelow(std::uint32_t id) const {
        const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> below(
            ::xcb_get_property_reply(
                server,
                ::xcb_get_property(server, 0, id, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, 0, 1),
                nullptr),
            &std::free);
        return below && ::xcb_get_property_value_length(below.get()) == sizeof(std::uint32_t) &&
               *static_cast<const std::uint32_t*>(::xcb_get_property_value(below.get())) == window;
    }
    /// Returns the size of the program's window, which is inside the frame, which is inside this
    /// one; 0 if it is not to be seen.
    Size Seen() const {
        const auto program = At(At(At(window).child).child);
        return program.isSeen ? program.size : Size();
    }

  private:
    /// What is known of a window: its first child, 0 if there is none; its size; whether it can be
    /// seen.
    struct Look {
        std::uint32_t child = 0;
        Size size;
        bool isSeen = false;
    };
    Look At(std::uint32_t id) const {
        Look look;
        const std::unique_ptr<xcb_query_tree_reply_t, decltype(&std::free)> tree(
            ::xcb_query_tree_reply(server, ::xcb_query_tree(server, id), nullptr), &std::free);
        if (tree && ::xcb_query_tree_children_length(tree.get()) > 0)
            look.child = *::xcb_query_tree_children(tree.get());
        const std::unique_ptr<xcb_get_geometry_reply_t, decltype(&std::free)> place(
            ::xcb_get_geometry_reply(server, ::xcb_get_geometry(server, id), nullptr), &std::free);
        if (place)
            look.size = {place->width, place->height};
        const std::unique_ptr<xcb_get_window_attributes_reply_t, decltype(&std::free)> state(
            ::xcb_get_window_attributes_reply(server, ::xcb_get_window_attributes(server, id),
                                              nullptr),
            &std::free);
        look.isSeen = state && state->map_state == XCB_MAP_STATE_VIEWABLE;
        return look;
    }

    xcb_connection_t* server;
    std::uint32_t window;
};

} // namespace test
