// SPDX-License-Identifier: GPL-3.0-or-later
// Add-ons: shared objects that are loaded and unloaded while the program runs.
#pragma once

#include "kits/support/SupportDefs.h"

#include <string>

/// Identifies a loaded add-on; always positive.
using image_id = int32;

/// The kind of symbol that a name in an add-on stands for.
enum : int32 {
    B_SYMBOL_TYPE_DATA = 1,
    B_SYMBOL_TYPE_TEXT = 2,
    B_SYMBOL_TYPE_ANY = 5,
};

/// Loads the shared object at `path` as the file is now, regardless of what was loaded from that
/// path before, and resolves all its undefined names at once. Returns a negative status on failure.
/// Like all functions below it may be called from any thread but the media thread.
image_id load_add_on(const char* path);

/// Finds the address of a function or variable that the add-on exports. Returns B_BAD_VALUE for an
/// image that is not loaded, B_NAME_NOT_FOUND for an unknown name.
status_t get_image_symbol(image_id image, const char* name, int32 type, void** address);

/// Removes an add-on's code and data from memory; nothing may execute or use them any more.
status_t unload_add_on(image_id image);

namespace kits {

/// Returns the loader's message about the failure of the calling thread's last load_add_on.
const std::string& AddOnFault();

} // namespace kits
