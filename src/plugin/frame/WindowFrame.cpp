// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/frame/WindowFrame.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <tuple>
#include <utility>

#include <unistd.h>

namespace vexa {

namespace {

/// The program's background colour, for the area of the window that it leaves free.
constexpr std::uint32_t kGrey = 0xCCCCCC;
/// The approximate size, in pixels, of the letters that this library draws itself.
constexpr std::size_t kLetter = 6, kLine = 18, kMargin = 20;
constexpr const char* kAgain = " Click here to open it again.";

} // namespace

WindowFrame::WindowFrame(std::uint32_t parent, std::string folder, const FrameOwner& owner)
    : parent(parent), folder(std::move(folder)), owner(owner) {
    server = ::xcb_connect(nullptr, nullptr);
    if (::xcb_connection_has_error(server) != 0) {
        ::xcb_disconnect(server);
        throw std::runtime_error("there is no X server to show the instrument on");
    }
    MakeWindow();
    Begin();
}

WindowFrame::~WindowFrame() {
    // Ends the process first, as it draws in the window.
    process.End();
    ::xcb_destroy_window(server, window);
    ::xcb_disconnect(server);
}

void WindowFrame::MakeWindow() {
    window = ::xcb_generate_id(server);
    const std::uint32_t values[] = {
        kGrey, XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_KEY_PRESS |
                   XCB_EVENT_MASK_KEY_RELEASE | XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    ::xcb_create_window(server, XCB_COPY_FROM_PARENT, window, parent, 0, 0, kWidth, kHeight, 0,
                        XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                        XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
    Show(true);
}

void WindowFrame::FollowParent() {
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    ::xcb_change_window_attributes(server, parent, XCB_CW_EVENT_MASK, &mask);
    ::xcb_flush(server);
}

void WindowFrame::Begin() {
    char fault[200] = "";
    const int socket = owner.open(owner.owner, fault, sizeof fault);
    if (socket < 0)
        return Say(fault);
    text = "";
    if (const std::string said = process.Start(folder, socket, window); !said.empty())
        Say(said);
    ::close(socket);
}

void WindowFrame::Idle() {
    while (const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event{
        ::xcb_poll_for_event(server), &std::free})
        Take(*event);
    TakeOwnSize();
    if (const auto said = process.Ended())
        Say(*said + kAgain);
}

void WindowFrame::Take(const xcb_generic_event_t& event) {
    switch (event.response_type & ~0x80) {
    case XCB_EXPOSE:
        return Draw();
    case XCB_BUTTON_PRESS:
        if (!process.Runs())
            Begin();
        return;
    case XCB_KEY_PRESS:
        return PassOn(event, XCB_EVENT_MASK_KEY_PRESS);
    case XCB_KEY_RELEASE:
        return PassOn(event, XCB_EVENT_MASK_KEY_RELEASE);
    case XCB_CONFIGURE_NOTIFY: {
        const auto& place = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        if (place.window != window)
            return FollowTo(place.width, place.height);
        placed = {place.width, place.height};
        return;
    }
    default:
        return;
    }
}

/// If the host's toolkit has the keyboard focus, the host sends key events to this window.
void WindowFrame::PassOn(const xcb_generic_event_t& event, std::uint32_t mask) {
    const std::unique_ptr<xcb_query_tree_reply_t, decltype(&std::free)> tree(
        ::xcb_query_tree_reply(server, ::xcb_query_tree(server, window), nullptr), &std::free);
    if (!tree || ::xcb_query_tree_children_length(tree.get()) == 0)
        return;
    auto key = reinterpret_cast<const xcb_key_press_event_t&>(event);
    key.event = *::xcb_query_tree_children(tree.get());
    key.child = XCB_NONE;
    ::xcb_send_event(server, 0, key.event, mask, reinterpret_cast<const char*>(&key));
    ::xcb_flush(server);
}

/// Handles the newest size that either the program has asked for or the host has set. Older ones
/// are not reported: a host that sets what is reported would bring them back. The size that the
/// host has chosen is restored, and changed only as far as the program's limits demand it.
void WindowFrame::TakeOwnSize() {
    const auto size = std::exchange(placed, std::nullopt);
    if (!size || *size == std::pair(width, height))
        return;
    const auto next = chosen ? NearestSize(width, height) : *size;
    if (next != *size)
        Configure(next.first, next.second);
    if (next == std::pair(width, height))
        return;
    std::tie(width, height) = next;
    owner.takeSize(owner.owner, width, height);
}

/// The program tells its limits by the size hints of the window.
std::pair<std::uint16_t, std::uint16_t> WindowFrame::NearestSize(std::uint16_t nextWidth,
                                                                 std::uint16_t nextHeight) const {
    constexpr std::uint32_t count = 18;
    const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> hints(
        ::xcb_get_property_reply(server,
                                 ::xcb_get_property(server, 0, window, XCB_ATOM_WM_NORMAL_HINTS,
                                                    XCB_ATOM_WM_SIZE_HINTS, 0, count),
                                 nullptr),
        &std::free);
    if (!hints || ::xcb_get_property_value_length(hints.get()) != count * sizeof(std::uint32_t))
        return {nextWidth, nextHeight};
    const auto* values = static_cast<const std::uint32_t*>(::xcb_get_property_value(hints.get()));
    const auto within = [](std::uint16_t length, std::uint32_t least, std::uint32_t most) {
        return static_cast<std::uint16_t>(std::max(std::min<std::uint32_t>(length, most), least));
    };
    return {within(nextWidth, values[5], values[7]), within(nextHeight, values[6], values[8])};
}

void WindowFrame::Configure(std::uint32_t nextWidth, std::uint32_t nextHeight) {
    const std::uint32_t size[] = {nextWidth, nextHeight};
    ::xcb_configure_window(server, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                           size);
    ::xcb_flush(server);
}

/// Takes over a size that the host has set. It is not reported: a host would take a report for a
/// wish of the program, and for the least size from then on.
void WindowFrame::FollowTo(std::uint16_t nextWidth, std::uint16_t nextHeight) {
    width = nextWidth;
    height = nextHeight;
    Configure(width, height);
}

void WindowFrame::SetSize(std::uint16_t nextWidth, std::uint16_t nextHeight) {
    chosen = true;
    FollowTo(nextWidth, nextHeight);
}

void WindowFrame::Show(bool visible) {
    if (visible)
        ::xcb_map_window(server, window);
    else
        ::xcb_unmap_window(server, window);
    ::xcb_flush(server);
}

void WindowFrame::Say(const std::string& said) {
    text = said;
    owner.say(owner.owner, text.c_str());
    Draw();
}

/// Draws the text, broken between words.
void WindowFrame::Draw() {
    ::xcb_clear_area(server, 0, window, 0, 0, 0, 0);
    const std::uint32_t font = ::xcb_generate_id(server), context = ::xcb_generate_id(server);
    ::xcb_open_font(server, font, 5, "fixed");
    const std::uint32_t values[] = {0, kGrey, font};
    ::xcb_create_gc(server, context, window, XCB_GC_FOREGROUND | XCB_GC_BACKGROUND | XCB_GC_FONT,
                    values);
    const std::size_t columns = (std::max<std::size_t>(width, 200) - 2 * kMargin) / kLetter;
    std::size_t y = kMargin;
    for (std::string rest = text; !rest.empty(); y += kLine) {
        std::size_t end = rest.size() <= columns ? rest.size() : rest.rfind(' ', columns);
        end = std::min({end, rest.size(), std::size_t{255}});
        ::xcb_image_text_8(server, static_cast<std::uint8_t>(end), window, context, kMargin,
                           static_cast<std::int16_t>(y), rest.data());
        rest.erase(0, std::min(end + 1, rest.size()));
    }
    ::xcb_free_gc(server, context);
    ::xcb_close_font(server, font);
    ::xcb_flush(server);
}

} // namespace vexa
