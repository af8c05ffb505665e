// SPDX-License-Identifier: GPL-3.0-or-later
// The plug-in's user interface for LV2 hosts on X: a window in which the program vexa shows itself.
#include "plugin/frame/WindowFrame.h"
#include "plugin/lv2/Features.h"
#include "plugin/lv2/WindowInterface.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>

#include <lv2/data-access/data-access.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/ui/ui.h>

namespace vexa::lv2 {

namespace {

class Ui {
  public:
    Ui(const char* bundle, const LV2_Feature* const* features)
        : resize(Find<LV2UI_Resize>(features, LV2_UI__resize)),
          instance(Find<void>(features, LV2_INSTANCE_ACCESS_URI)),
          plugin(PluginOf(features)),
          frame(static_cast<std::uint32_t>(
                    reinterpret_cast<std::uintptr_t>(Find<void>(features, LV2_UI__parent))),
                bundle, {this, Open, TakeSize, Say}) {
        frame.FollowParent();
    }

    std::uint32_t Window() const { return frame.Window(); }
    void Idle() { frame.Idle(); }

  private:
    static const WindowInterface* PluginOf(const LV2_Feature* const* features) {
        const auto* access = Find<LV2_Extension_Data_Feature>(features, LV2_DATA_ACCESS_URI);
        return access ? static_cast<const WindowInterface*>(access->data_access(kWindowInterface))
                      : nullptr;
    }

    static Ui& Of(void* owner) { return *static_cast<Ui*>(owner); }
    static int Open(void* owner, char* fault, std::size_t room) {
        if (const Ui& ui = Of(owner); ui.plugin)
            return ui.plugin->open(ui.instance, fault, room);
        std::snprintf(fault, room, "This host keeps its windows apart from its plug-ins.");
        return -1;
    }
    static void TakeSize(void* owner, std::uint32_t width, std::uint32_t height) {
        if (const Ui& ui = Of(owner); ui.resize)
            ui.resize->ui_resize(ui.resize->handle, static_cast<int>(width),
                                 static_cast<int>(height));
    }
    static void Say(void*, const char* message) { std::fprintf(stderr, "vexa: %s\n", message); }

    LV2UI_Resize* const resize;
    const LV2_Handle instance;
    const WindowInterface* const plugin;
    WindowFrame frame;
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
