// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/backends/Embedding.h"

#include <QGuiApplication>
#include <QWindow>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string_view>

#include <xcb/xcb.h>

namespace kits {

namespace {

/// Returns the connection to the X server, or null if there is none.
xcb_connection_t* Server() {
    const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

/// Returns the window manager's atom for the state of a window, which it sets for those that it
/// manages.
xcb_atom_t StateAtom(xcb_connection_t* server) {
    constexpr std::string_view name = "WM_STATE";
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
        ::xcb_intern_atom_reply(
            server, ::xcb_intern_atom(server, 0, std::uint16_t(name.size()), name.data()), nullptr),
        &std::free);
    return atom ? atom->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// Returns the nearest ancestor of the window, or itself, that the window manager manages; 0 if
/// there is none.
xcb_window_t ManagedAbove(xcb_window_t window) {
    xcb_connection_t* const server = Server();
    const xcb_atom_t state = StateAtom(server);
    while (window != 0) {
        const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> found(
            ::xcb_get_property_reply(
                server, ::xcb_get_property(server, 0, window, state, XCB_ATOM_ANY, 0, 0), nullptr),
            &std::free);
        if (found && found->type != XCB_ATOM_NONE)
            return window;
        const std::unique_ptr<xcb_query_tree_reply_t, decltype(&std::free)> tree(
            ::xcb_query_tree_reply(server, ::xcb_query_tree(server, window), nullptr), &std::free);
        window = tree ? tree->parent : 0;
    }
    return 0;
}

} // namespace

Embedding::Embedding(QWidget& widget, uint32 host) : widget(widget), host(host) {
    xcb_connection_t* const server = Server();
    if (!server)
        return;
    widget.winId();
    widget.windowHandle()->setParent(QWindow::fromWinId(host));
    qApp->installEventFilter(this);
    widget.move(0, 0);
    TellLimits();
    const double scale = widget.devicePixelRatio();
    const std::uint32_t size[] = {static_cast<std::uint32_t>(widget.width() * scale),
                                  static_cast<std::uint32_t>(widget.height() * scale)};
    ::xcb_configure_window(server, host, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size);
    ::xcb_flush(server);
}

/// Sets the property of the window system's convention that has the limits of a window's size.
void Embedding::TellLimits() {
    told = {widget.minimumSize(), widget.maximumSize()};
    const double scale = widget.devicePixelRatio();
    const auto pixels = [scale](int length) {
        return static_cast<std::uint32_t>(std::ceil(length * scale));
    };
    constexpr std::uint32_t hasLeast = 1U << 4, hasMost = 1U << 5;
    const std::uint32_t hints[18] = {hasLeast | hasMost,
                                     0,
                                     0,
                                     0,
                                     0,
                                     pixels(told.first.width()),
                                     pixels(told.first.height()),
                                     pixels(told.second.width()),
                                     pixels(told.second.height())};
    ::xcb_change_property(Server(), XCB_PROP_MODE_REPLACE, host, XCB_ATOM_WM_NORMAL_HINTS,
                          XCB_ATOM_WM_SIZE_HINTS, 32, std::size(hints), hints);
    ::xcb_flush(Server());
}

bool Embedding::eventFilter(QObject* receiver, QEvent* event) {
    if (event->type() == QEvent::Show && receiver->isWindowType())
        PutAboveHost(static_cast<QWindow&>(*receiver));
    if (event->type() == QEvent::MouseButtonPress && receiver == widget.windowHandle()) {
        ::xcb_set_input_focus(Server(), XCB_INPUT_FOCUS_PARENT,
                              static_cast<xcb_window_t>(widget.winId()), XCB_CURRENT_TIME);
        ::xcb_flush(Server());
    }
    return false;
}

/// Has the window manager keep a dialog above the host's window. It does not know the widget, which
/// is inside that window.
void Embedding::PutAboveHost(QWindow& dialog) {
    if (dialog.type() != Qt::Dialog || dialog.transientParent())
        return;
    const xcb_window_t below = ManagedAbove(host);
    if (below == 0)
        return;
    if (!hostTop || hostTop->winId() != below)
        hostTop.reset(QWindow::fromWinId(below));
    dialog.setTransientParent(hostTop.get());
}

void Embedding::Follow() {
    xcb_connection_t* const server = Server();
    if (!server)
        return;
    if (told != std::pair(widget.minimumSize(), widget.maximumSize()))
        TellLimits();
    const std::unique_ptr<xcb_get_geometry_reply_t, decltype(&std::free)> place(
        ::xcb_get_geometry_reply(server, ::xcb_get_geometry(server, host), nullptr), &std::free);
    if (!place)
        return;
    const double scale = widget.devicePixelRatio();
    const QSize size(static_cast<int>(place->width / scale),
                     static_cast<int>(place->height / scale));
    const QSize next = size.expandedTo(widget.minimumSize()).boundedTo(widget.maximumSize());
    if (next != widget.size())
        widget.resize(next);
}

} // namespace kits
