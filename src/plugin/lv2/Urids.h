// SPDX-License-Identifier: GPL-3.0-or-later
// The numbers (URIDs) to which the host maps the names that the plug-in uses.
#pragma once

#include "plugin/lv2/Ports.h"

#include <array>
#include <iterator>

#include <lv2/atom/atom.h>
#include <lv2/log/log.h>
#include <lv2/midi/midi.h>
#include <lv2/patch/patch.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

namespace vexa::lv2 {

struct Urids {
    explicit Urids(LV2_URID_Map& map) : map(map) {
        for (std::size_t i = 0; i < properties.size(); i++)
            properties[i] = Of(kProperties[i].uri);
    }
    LV2_URID Of(const char* uri) const { return map.map(map.handle, uri); }

    LV2_URID_Map& map;
    LV2_URID midiEvent = Of(LV2_MIDI__MidiEvent);
    LV2_URID object = Of(LV2_ATOM__Object);
    LV2_URID sequence = Of(LV2_ATOM__Sequence);
    LV2_URID urid = Of(LV2_ATOM__URID);
    LV2_URID path = Of(LV2_ATOM__Path);
    LV2_URID string = Of(LV2_ATOM__String);
    LV2_URID get = Of(LV2_PATCH__Get);
    LV2_URID set = Of(LV2_PATCH__Set);
    LV2_URID property = Of(LV2_PATCH__property);
    LV2_URID value = Of(LV2_PATCH__value);
    LV2_URID error = Of(LV2_LOG__Error);
    LV2_URID stateChanged = Of(LV2_STATE__StateChanged);
    LV2_URID soundState = Of(kSoundState);
    LV2_URID fileState = Of(kFileState);
    /// The URIDs of the properties, in the order of kProperties.
    std::array<LV2_URID, std::size(kProperties)> properties;
};

} // namespace vexa::lv2
