// SPDX-License-Identifier: GPL-3.0-or-later
// The entry point that LV2 hosts look for, and its extensions.
#include "plugin/lv2/Features.h"
#include "plugin/lv2/Plugin.h"
#include "plugin/lv2/WindowInterface.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>

#include <lv2/core/lv2.h>

namespace vexa::lv2 {

namespace {

/// The highest sample rate that is accepted, Hz.
constexpr double kMostRate = 1e6;

LV2_Handle Instantiate(const LV2_Descriptor*, double rate, const char* bundle,
                       const LV2_Feature* const* features) {
    auto* map = Find<LV2_URID_Map>(features, LV2_URID__map);
    try {
        if (map && rate >= 1 && rate <= kMostRate)
            return new Plugin(rate, bundle, *map, Find<LV2_Log_Log>(features, LV2_LOG__log),
                              Find<LV2_Worker_Schedule>(features, LV2_WORKER__schedule));
        if (map)
            std::fprintf(stderr, "vexa: a rate of %g Hz is not between 1 and %g\n", rate,
                         kMostRate);
        else
            std::fprintf(stderr, "vexa: the host has no urid:map\n");
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "vexa: %s\n", fault.what());
    }
    return nullptr;
}

Plugin& Of(LV2_Handle handle) {
    return *static_cast<Plugin*>(handle);
}

const void* Extension(const char* uri) {
    static const LV2_State_Interface state{
        [](LV2_Handle handle, LV2_State_Store_Function store, LV2_State_Handle to, uint32_t,
           const LV2_Feature* const* features) {
            return Of(handle).Save(store, to,
                                   Find<LV2_State_Map_Path>(features, LV2_STATE__mapPath),
                                   Find<LV2_State_Free_Path>(features, LV2_STATE__freePath));
        },
        [](LV2_Handle handle, LV2_State_Retrieve_Function retrieve, LV2_State_Handle from, uint32_t,
           const LV2_Feature* const* features) {
            return Of(handle).Restore(retrieve, from,
                                      Find<LV2_State_Map_Path>(features, LV2_STATE__mapPath),
                                      Find<LV2_State_Free_Path>(features, LV2_STATE__freePath));
        }};
    static const LV2_Worker_Interface worker{
        [](LV2_Handle handle, LV2_Worker_Respond_Function, LV2_Worker_Respond_Handle, uint32_t,
           const void*) {
            Of(handle).Work();
            return LV2_WORKER_SUCCESS;
        },
        [](LV2_Handle, uint32_t, const void*) { return LV2_WORKER_SUCCESS; }, nullptr};
    static const WindowInterface window{[](LV2_Handle handle, char* fault, std::size_t room) {
        return Of(handle).OpenWindow(fault, room);
    }};
    if (std::strcmp(uri, kWindowInterface) == 0)
        return &window;
    if (std::strcmp(uri, LV2_STATE__interface) == 0)
        return &state;
    return std::strcmp(uri, LV2_WORKER__interface) == 0 ? &worker : nullptr;
}

const LV2_Descriptor kDescriptor{
    kUri,
    Instantiate,
    [](LV2_Handle handle, uint32_t port, void* data) { Of(handle).Connect(port, data); },
    [](LV2_Handle handle) { Of(handle).Activate(); },
    [](LV2_Handle handle, uint32_t count) { Of(handle).Run(count); },
    nullptr,
    [](LV2_Handle handle) { delete static_cast<Plugin*>(handle); },
    Extension};

} // namespace

} // namespace vexa::lv2

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(uint32_t index) {
    return index == 0 ? &vexa::lv2::kDescriptor : nullptr;
}
