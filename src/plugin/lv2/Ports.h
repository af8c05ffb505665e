// SPDX-License-Identifier: GPL-3.0-or-later
// The ports of the LV2 plug-in and its names, for the plug-in and for what describes it.
#pragma once

#include "plugin/Controls.h"

#include <cstdint>

namespace vexa::lv2 {

#define VEXA_LV2_URI "urn:vexa:instrument"

constexpr const char* kUri = VEXA_LV2_URI;
/// What the state holds: the sound document, and where the host has put its sample.
constexpr const char* kSoundState = VEXA_LV2_URI "#document";
constexpr const char* kSampleState = VEXA_LV2_URI "#samplefile";

/// The parameters that a host writes, in the order of Request.
struct Writable {
    const char* uri;
    const char* label;
    bool isPath;
};
constexpr Writable kWritables[] = {
    {VEXA_LV2_URI "#formula", "Formula", false},
    {VEXA_LV2_URI "#sample", "Sample", true},
    {VEXA_LV2_URI "#sound", "Sound", true},
};

/// The controls follow the last one.
enum Port : std::uint32_t {
    kEvents,
    kNotifications,
    kLeft,
    kRight,
    kFreewheel,
    kLatency,
    kFirstControl
};
constexpr std::uint32_t kPorts = kFirstControl + kControls;

} // namespace vexa::lv2
