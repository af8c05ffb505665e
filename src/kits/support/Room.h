// SPDX-License-Identifier: GPL-3.0-or-later
// Checks whether the system grants resources that a program cannot do without.
#pragma once

#include "kits/support/Result.h"

#include <cstddef>

namespace kits {

/// Takes `descriptors` file descriptors and `bytes` bytes of address space at once, and gives them
/// back. The error says which of them is not available, and where its limit is shown. It is called
/// before libraries that, if they find too little, end the program without a message, wait for
/// ever, or leave half-made what other programs share. Any thread but real-time ones.
Result<void> CheckRoom(std::size_t descriptors, std::size_t bytes);

} // namespace kits
