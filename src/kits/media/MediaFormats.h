// SPDX-License-Identifier: GPL-3.0-or-later
// How audio data is described.
#pragma once

#include "kits/support/SupportDefs.h"

#include <cstddef>

enum media_type : int32 {
    B_MEDIA_NO_TYPE = -1,
    B_MEDIA_UNKNOWN_TYPE = 0,
    B_MEDIA_RAW_AUDIO = 1,
};

/// Type of one value of one channel.
enum : uint32 {
    /// 16-bit integer.
    B_AUDIO_SHORT = 0x2,
    /// 32-bit float, full scale -1..1.
    B_AUDIO_FLOAT = 0x24,
};

enum : uint32 {
    B_MEDIA_BIG_ENDIAN = 1,
    B_MEDIA_LITTLE_ENDIAN = 2,
};

/// Uncompressed audio; a 0 leaves the field open.
struct media_raw_audio_format {
    /// The rate in frames per second; a frame is one value of each channel.
    float frame_rate = 0;
    uint32 channel_count = 0;
    uint32 format = 0;
    uint32 byte_order = 0;
    /// Bytes.
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
