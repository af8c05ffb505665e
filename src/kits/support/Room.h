// SPDX-License-Identifier: GPL-3.0-or-later
// This asks whether the system grants a program what it cannot do without.
#pragma once

#include "kits/support/Result.h"

#include <cstddef>

namespace kits {

/// Takes so many file descriptors and so many bytes of address space at once, and gives them back.
/// The error says which of them cannot be had, and where its limit is shown. It is called before
/// libraries that, where they find too little, end the program without a word, wait for ever, or
/// leave half-made what other programs share. Any thread but real-time ones.
Result<void> CheckRoom(std::size_t descriptors, std::size_t bytes);

} // namespace kits
