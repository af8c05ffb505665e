// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/MediaFile.h"

#include "kits/media/backends/OpenSoundFile.h"
#include "kits/storage/ReadFile.h"

#include <cmath>
#include <filesystem>
#include <vector>

namespace {

constexpr sf_count_t kFramesPerBuffer = 4096;

/// Returns the mean of one frame's values.
float Mix(const float* values, int channels) {
    double sum = 0;
    for (int i = 0; i < channels; i++)
        sum += values[i];
    return static_cast<float>(sum / channels);
}

} // namespace

struct BMediaTrack::Source {
    kits::OpenSoundFile file;
    SF_INFO info{};
    bool mixed = false;
    /// One buffer of the file's channels, used where they are mixed.
    std::vector<float> frames;
};

BMediaTrack::BMediaTrack(std::unique_ptr<Source> opened) : source(std::move(opened)) {}

BMediaTrack::~BMediaTrack() = default;

status_t BMediaTrack::DecodedFormat(media_format* format) {
    const int channels = source->info.channels;
    source->mixed = format->u.raw_audio.channel_count == 1 && channels > 1;
    const int delivered = source->mixed ? 1 : channels;
    if (source->mixed)
        source->frames.resize(static_cast<std::size_t>(kFramesPerBuffer * channels));
    format->type = B_MEDIA_RAW_AUDIO;
    format->u.raw_audio = {static_cast<float>(source->info.samplerate),
                           static_cast<uint32>(delivered), B_AUDIO_FLOAT, B_MEDIA_LITTLE_ENDIAN,
                           static_cast<std::size_t>(kFramesPerBuffer * delivered) * sizeof(float)};
    return B_OK;
}

int64 BMediaTrack::CountFrames() const {
    const sf_count_t frames = source->info.frames;
    return frames < 0 || frames == SF_COUNT_MAX ? kUnknownLength : frames;
}

status_t BMediaTrack::ReadFrames(void* buffer, int64* frameCount, media_header*) {
    const int channels = source->info.channels;
    auto* const delivered = static_cast<float*>(buffer);
    float* const frames = source->mixed ? source->frames.data() : delivered;
    const sf_count_t count = sf_readf_float(source->file.get(), frames, kFramesPerBuffer);
    *frameCount = count;
    if (count <= 0)
        return B_LAST_BUFFER_ERROR;
    for (sf_count_t i = 0; i < count * channels; i++) {
        if (!std::isfinite(frames[i]))
            frames[i] = 0;
    }
    for (sf_count_t i = 0; source->mixed && i < count; i++)
        delivered[i] = Mix(frames + i * channels, channels);
    return B_OK;
}

BMediaFile::BMediaFile(const entry_ref* ref) {
    const std::string path = BPath(ref->directory.c_str(), ref->name.c_str()).Path();
    auto source = std::make_unique<BMediaTrack::Source>();
    // Checked first, because the library reports a missing file vaguely and would wait for the
    // writer of a pipe. The library then opens the file by its name, as it knows some formats by
    // the name's ending only.
    if (const auto opened = kits::OpenRegularFile(path); !opened) {
        std::error_code ignored;
        status = std::filesystem::exists(path, ignored) ? B_BAD_TYPE : B_ENTRY_NOT_FOUND;
        fault = opened.Fault().text;
        return;
    }
    source->file.reset(sf_open(path.c_str(), SFM_READ, &source->info));
    if (source->file) {
        track.reset(new BMediaTrack(std::move(source)));
    } else {
        status = sf_error(nullptr) == SF_ERR_UNRECOGNISED_FORMAT ? B_MEDIA_NO_HANDLER : B_BAD_TYPE;
        fault = "could not read " + path + ": " + sf_strerror(nullptr);
    }
}

BMediaFile::~BMediaFile() = default;

BMediaTrack* BMediaFile::TrackAt(int32 index) {
    return index == 0 ? track.get() : nullptr;
}

status_t BMediaFile::ReleaseAllTracks() {
    track.reset();
    return B_OK;
}
