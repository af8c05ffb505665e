// SPDX-License-Identifier: GPL-3.0-or-later
// The plug-in's user interface for LV2 hosts on X: a window in which the program vexa shows itself.
#include "plugin/lv2/Features.h"
#include "plugin/lv2/WindowInterface.h"
#include "plugin/lv2/ui/WindowProcess.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include <lv2/data-access/data-access.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/log/log.h>
#include <lv2/ui/ui.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace vexa::lv2 {

namespace {

/// The size of the window in pixels until the program has reported its own: its size with the
/// default font.
constexpr std::uint16_t kWidth = 968, kHeight = 541;
/// The program's background colour, for the area of the window that it leaves free.
constexpr std::uint32_t kGrey = 0xCCCCCC;
/// The approximate size, in pixels, of the letters that this library draws itself.
constexpr std::size_t kLetter = 6, kLine = 18, kMargin = 20;
constexpr const char* kAgain = " Click here to open it again.";

/// Uses xcb: Xlib would end the host when a window is gone, whereas errors of this connection are
/// events.
class Ui {
  public:
    Ui(const char* bundle, const LV2_Feature* const* features)
        : bundle(bundle),
          resize(Find<LV2UI_Resize>(features, LV2_UI__resize)),
          log(Find<LV2_Log_Log>(features, LV2_LOG__log)),
          instance(Find<void>(features, LV2_INSTANCE_ACCESS_URI)),
          parent(static_cast<std::uint32_t>(
              reinterpret_cast<std::uintptr_t>(Find<void>(features, LV2_UI__parent)))) {
        if (const auto* access = Find<LV2_Extension_Data_Feature>(features, LV2_DATA_ACCESS_URI))
            plugin = static_cast<const WindowInterface*>(access->data_access(kWindowInterface));
        server = ::xcb_connect(nullptr, nullptr);
        if (::xcb_connection_has_error(server) != 0) {
            ::xcb_disconnect(server);
            throw std::runtime_error("there is no X server to show the instrument on");
        }
        MakeWindow();
        Begin();
    }
    ~Ui() {
        // Ends the process first, as it draws in the window.
        process.End();
        ::xcb_destroy_window(server, window);
        ::xcb_disconnect(server);
    }
    Ui(const Ui&) = delete;
    Ui& operator=(const Ui&) = delete;

    std::uint32_t Window() const { return window; }

    void Idle() {
        while (const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event{
            ::xcb_poll_for_event(server), &std::free})
            Take(*event);
        if (const auto said = process.Ended())
            Say(*said + kAgain);
    }

  private:
    void MakeWindow() {
        window = ::xcb_generate_id(server);
        const std::uint32_t values[] = {kGrey,
                                        XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_BUTTON_PRESS |
                                            XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                                            XCB_EVENT_MASK_STRUCTURE_NOTIFY};
        ::xcb_create_window(server, XCB_COPY_FROM_PARENT, window, parent, 0, 0, kWidth, kHeight, 0,
                            XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                            XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
        const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        ::xcb_change_window_attributes(server, parent, XCB_CW_EVENT_MASK, &mask);
        ::xcb_map_window(server, window);
        ::xcb_flush(server);
    }

    void Begin() {
        char fault[200] = "This host keeps its windows apart from its plug-ins.";
        const int socket = plugin ? plugin->open(instance, fault, sizeof fault) : -1;
        if (socket < 0)
            return Say(fault);
        text = "";
        if (const std::string said = process.Start(bundle, socket, window); !said.empty())
            Say(said);
        ::close(socket);
    }

    void Take(const xcb_generic_event_t& event) {
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
            place.window == window ? TakeOwnSize(place) : TakeHostsSize(place);
            return;
        }
        default:
            return;
        }
    }

    /// If the host's toolkit has the keyboard focus, the host sends key events to this window.
    void PassOn(const xcb_generic_event_t& event, std::uint32_t mask) {
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

    /// Handles a size that either the program has asked for or the host has set.
    void TakeOwnSize(const xcb_configure_notify_event_t& place) {
        if (place.width == width && place.height == height)
            return;
        width = place.width;
        height = place.height;
        if (resize)
            resize->ui_resize(resize->handle, width, height);
    }

    void TakeHostsSize(const xcb_configure_notify_event_t& place) {
        const std::uint32_t size[] = {place.width, place.height};
        ::xcb_configure_window(server, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                               size);
        ::xcb_flush(server);
    }

    void Say(const std::string& said) {
        text = said;
        if (log)
            std::fprintf(stderr, "vexa: %s\n", said.c_str());
        Draw();
    }

    /// Draws the text, broken between words.
    void Draw() {
        ::xcb_clear_area(server, 0, window, 0, 0, 0, 0);
        const std::uint32_t font = ::xcb_generate_id(server), context = ::xcb_generate_id(server);
        ::xcb_open_font(server, font, 5, "fixed");
        const std::uint32_t values[] = {0, kGrey, font};
        ::xcb_create_gc(server, context, window,
                        XCB_GC_FOREGROUND | XCB_GC_BACKGROUND | XCB_GC_FONT, values);
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

    const std::string bundle;
    LV2UI_Resize* const resize;
    LV2_Log_Log* const log;
    const LV2_Handle instance;
    const WindowInterface* plugin = nullptr;
    const std::uint32_t parent;
    xcb_connection_t* server = nullptr;
    std::uint32_t window = 0;
    std::uint16_t width = kWidth, height = kHeight;
    /// The text that is shown while the program does not run.
    std::string text;
    WindowProcess process;
};

LV2UI_Handle Instantiate(const LV2UI_Descriptor*, const char*, const char* bundle,
                         LV2UI_Write_Function, LV2UI_Controller, LV2UI_Widget* widget,
                         const LV2_Feature* const* features) {
    try {
        if (!Find<void>(features, LV2_UI__parent)) {
            std::fprintf(stderr, "vexa: the host has no ui:parent to show the instrument in\n");
            return nullptr;
        }
        auto ui = std::make_unique<Ui>(bundle, features);
        *widget = reinterpret_cast<LV2UI_Widget>(static_cast<std::uintptr_t>(ui->Window()));
        return ui.release();
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "vexa: %s\n", fault.what());
        return nullptr;
    }
}

const void* Extension(const char* uri) {
    static const LV2UI_Idle_Interface idle{[](LV2UI_Handle handle) {
        static_cast<Ui*>(handle)->Idle();
        return 0;
    }};
    return std::strcmp(uri, LV2_UI__idleInterface) == 0 ? &idle : nullptr;
}

const LV2UI_Descriptor kDescriptor{
    kUiUri, Instantiate, [](LV2UI_Handle handle) { delete static_cast<Ui*>(handle); },
    [](LV2UI_Handle, uint32_t, uint32_t, uint32_t, const void*) {}, Extension};

} // namespace

} // namespace vexa::lv2

LV2_SYMBOL_EXPORT const LV2UI_Descriptor* lv2ui_descriptor(uint32_t index) {
    return index == 0 ? &vexa::lv2::kDescriptor : nullptr;
}
