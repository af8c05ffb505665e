// SPDX-License-Identifier: GPL-3.0-or-later
// The interface of anything that bytes can be written to.
#pragma once

#include <cstddef>

#include <sys/types.h>

/// Something that bytes can be written to.
class BDataIO {
  public:
    virtual ~BDataIO() = default;
    /// Writes all bytes and returns `size`, or a negative status.
    virtual ssize_t Write(const void* data, std::size_t size) = 0;
};
