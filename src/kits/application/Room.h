// Whether the system grants a program what it cannot do without.
#pragma once

#include "kits/support/Result.h"

#include <cstddef>

namespace kits {

/// Takes so many file descriptors and so many bytes of address space at once, and gives them back.
/// The error says which of them cannot be had, and where its limit is shown. For a program's start:
/// libraries that find too little end it without a word, wait for ever, or leave half-made what
/// other programs share.
Result<void> CheckRoom(std::size_t descriptors, std::size_t bytes);

} // namespace kits
