// What media data look like.
#pragma once

#include "kits/support/SupportDefs.h"

#include <cstddef>

enum media_type : int32 {
    B_MEDIA_NO_TYPE = -1,
    B_MEDIA_UNKNOWN_TYPE = 0,
    B_MEDIA_RAW_AUDIO = 1,
};

enum : uint32 {
    B_AUDIO_SHORT = 0x2,
    B_AUDIO_FLOAT = 0x24,
    B_MEDIA_BIG_ENDIAN = 1,
    B_MEDIA_LITTLE_ENDIAN = 2,
};

/// Samples as they are. A field that is 0 is left open.
struct media_raw_audio_format {
    /// Frames per second.
    float frame_rate = 0;
    uint32 channel_count = 0;
    /// Type of a sample: B_AUDIO_...
    uint32 format = 0;
    uint32 byte_order = 0;
    /// Bytes.
    std::size_t buffer_size = 0;

    bool operator==(const media_raw_audio_format&) const = default;
    /// All fields open.
    static const media_raw_audio_format wildcard;
};
inline constexpr media_raw_audio_format media_raw_audio_format::wildcard{};

struct media_format {
    media_type type = B_MEDIA_NO_TYPE;
    struct {
        media_raw_audio_format raw_audio;
    } u;
};
