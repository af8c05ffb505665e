// SPDX-License-Identifier: GPL-3.0-or-later
// The ports and names of the LV2 plug-in, shared by the plug-in and the generator of its
// description.
#pragma once

#include "plugin/HostedInstrument.h"

#include <cstdint>
#include <iterator>

namespace vexa::lv2 {

#define VEXA_LV2_URI "urn:vexa:instrument"

constexpr const char* kUri = VEXA_LV2_URI;
constexpr const char* kUiUri = VEXA_LV2_URI "#ui";
/// The keys of the state besides the tuning's parameters: the sound document, and where the host
/// has put its sample or picture. The second key dates from when there were only samples.
constexpr const char* kSoundState = VEXA_LV2_URI "#document";
constexpr const char* kFileState = VEXA_LV2_URI "#samplefile";

struct Property {
    const char* uri;
    const char* label;
    bool isPath;
};
/// The properties that a host writes, in the order of Request, followed by one that it only reads:
/// the message about its last request.
constexpr Property kProperties[] = {
    {VEXA_LV2_URI "#formula", "Formula", false},
    {VEXA_LV2_URI "#sample", "Sample", true},
    {VEXA_LV2_URI "#picture", "Picture", true},
    {VEXA_LV2_URI "#sound", "Sound", true},
    {VEXA_LV2_URI "#tuning", "Scale (Scala)", true},
    {VEXA_LV2_URI "#keymap", "Keyboard map (Scala)", true},
    {VEXA_LV2_URI "#message", "Message", false},
};
constexpr std::size_t kMessage = kRequests;
static_assert(std::size(kProperties) == kRequests + 1);

/// The controls follow the last port.
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

/// The size of the event ports in bytes: room for the longest text and some notes.
constexpr std::size_t kEventBytes = 2 * HostedInstrument::kMostText;

} // namespace vexa::lv2
