// SPDX-License-Identifier: GPL-3.0-or-later
// The integer types and status codes that all kits share.
#pragma once

#include <cerrno>
#include <cstdint>

using int8 = std::int8_t;
using uint8 = std::uint8_t;
using int16 = std::int16_t;
using uint16 = std::uint16_t;
using int32 = std::int32_t;
using uint32 = std::uint32_t;
using int64 = std::int64_t;
using uint64 = std::uint64_t;
using uchar = unsigned char;

/// A status is the outcome of an operation: B_OK (0), or a negative code. Codes that name a fault
/// of the operating system are its errno negated, so that strerror(-status) describes them.
using status_t = int32;

/// A moment or a duration in microseconds.
using bigtime_t = int64;

/// The type of a datum in a message or attribute, four characters.
using type_code = uint32;

constexpr status_t B_OK = 0;
constexpr status_t B_ERROR = -1;
constexpr status_t B_ENTRY_NOT_FOUND = -ENOENT;
constexpr status_t B_WOULD_BLOCK = -EWOULDBLOCK;
constexpr status_t B_IO_ERROR = -EIO;
constexpr status_t B_NO_MEMORY = -ENOMEM;
constexpr status_t B_BAD_VALUE = -EINVAL;
constexpr status_t B_PERMISSION_DENIED = -EACCES;
constexpr status_t B_BAD_INDEX = -ERANGE;
constexpr status_t B_NAME_NOT_FOUND = -ENOKEY;
constexpr status_t B_BAD_TYPE = -EBADMSG;
constexpr status_t B_NO_INIT = -ENXIO;

/// Returns the 32-bit code of four characters, which the platform writes as 'abcd', most
/// significant first.
constexpr uint32 FourCC(const char (&text)[5]) {
    return uint32(uchar(text[0])) << 24 | uint32(uchar(text[1])) << 16 |
           uint32(uchar(text[2])) << 8 | uint32(uchar(text[3]));
}
