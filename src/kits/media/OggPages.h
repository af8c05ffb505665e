// SPDX-License-Identifier: GPL-3.0-or-later
// The pages of an Ogg file.
#pragma once

#include "kits/support/Result.h"

#include <cstdint>

namespace kits {

/// Gives all pages of a file that holds one Ogg stream the serial number `serial` and matching
/// checksums. Encoders choose the number at random, so files of the same sound would differ.
/// `descriptor` is open for reading and writing. Returns the number of frames in the stream; the
/// error is the reason only, without the file's name.
Result<std::uint64_t> SetOggSerial(int descriptor, int serial);

} // namespace kits
