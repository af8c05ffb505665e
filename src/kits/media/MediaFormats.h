// SPDX-License-Identifier: GPL-3.0-or-later
// These types describe audio data.
#pragma once

#include "kits/support/SupportDefs.h"

#include <cstddef>

enum media_type : int32 {
    B_MEDIA_NO_TYPE = -1,
    B_MEDIA_UNKNOWN_TYPE = 0,
    B_MEDIA_RAW_AUDIO = 1,
};

/// The type of one value of one channel.
enum : uint32 {
    /// A 16-bit integer.
    B_AUDIO_SHORT = 0x2,
    /// A 32-bit float, with full scale from -1 to 1.
    B_AUDIO_FLOAT = 0x24,
};

enum : uint32 {
    B_MEDIA_BIG_ENDIAN = 1,
    B_MEDIA_LITTLE_ENDIAN = 2,
};

/// The format of uncompressed audio; a 0 leaves a field open.
struct media_raw_audio_format {
    /// The rate in frames per second; a frame is one value of each channel.
    float frame_rate = 0;
    uint32 channel_count = 0;
    uint32 format = 0;
    uint32 byte_order = 0;
    /// The size of a buffer in bytes.
    std::size_t buffer_size = 0;

    bool operator==(const media_raw_audio_format&) const = default;

    /// A format that leaves every field open.
    static const media_raw_audio_format wildcard;
};

struct media_format {
    media_type type = B_MEDIA_NO_TYPE;
    struct {
        media_raw_audio_format raw_audio;
    } u;
};
