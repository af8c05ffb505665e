// SPDX-License-Identifier: GPL-3.0-or-later
// The interface of the plug-in for the user interface's library, which runs in the same process.
#pragma once

#include "plugin/lv2/Ports.h"

#include <cstddef>

#include <lv2/core/lv2.h>

namespace vexa::lv2 {

constexpr const char* kWindowInterface = VEXA_LV2_URI "#windowinterface";

/// The plug-in's extension data for that URI.
struct WindowInterface {
    /// Opens a connection as Windows::Open does and returns its descriptor, or a negative value on
    /// failure. Then `fault`, which has `room` bytes, holds the reason.
    int (*open)(LV2_Handle plugin, char* fault, std::size_t room);
};

} // namespace vexa::lv2
