// SPDX-License-Identifier: GPL-3.0-or-later
// The types that translators and their users share.
#pragma once

#include "kits/support/SupportDefs.h"

/// The id of a translator, valid as long as the program runs.
using translator_id = uint32;

/// The group of all picture formats, and the type of the neutral format among them: pixels in
/// memory.
constexpr uint32 B_TRANSLATOR_BITMAP = FourCC("bits");

/// The translator has nothing to configure.
constexpr status_t B_NO_CONFIGURATION = -EOPNOTSUPP;
/// There is no such translator, or it does not write that format.
constexpr status_t B_NO_TRANSLATOR = -ENOENT;

/// A format that a translator writes.
struct translation_format {
    uint32 type;
    uint32 group;
    /// How well the format keeps the picture, 0 to 1.
    float quality;
    const char* MIME;
    /// The name of the format for the user.
    const char* name;
};
