// SPDX-License-Identifier: GPL-3.0-or-later
// The library of the user interface asks the plug-in for this, in the same process.
#pragma once

#include "plugin/lv2/Ports.h"

#include <cstddef>

#include <lv2/core/lv2.h>

namespace vexa::lv2 {

constexpr const char* kWindowInterface = VEXA_LV2_URI "#windowinterface";

/// The plug-in's extension data of that name.
struct WindowInterface {
    /// Opens a connection as Windows::Open does. The answer is below 0 where there is none; then
    /// `fault`, which has room for so many bytes, says why.
    int (*open)(LV2_Handle plugin, char* fault, std::size_t room);
};

} // namespace vexa::lv2
