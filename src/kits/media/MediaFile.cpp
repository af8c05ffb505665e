// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/MediaFile.h"

#include "kits/media/backends/OpenSoundFile.h"
#include "kits/storage/ReadFile.h"
#include "kits/support/Trimmed.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr sf_count_t kFramesPerBuffer = 4096;
/// Programs that write into a pipe do not know the length, and state one from here on.
constexpr long long kUnknownBytes = 0x7fff0000;
/// The lengths of the sound as the library's log names them, in WAV, AIFF and AU.
constexpr std::string_view kSoundLengths[] = {"data", "SSND", "Data Size"};
/// What the log says of an Ogg file, once it is read, whose last page is not marked as the last. No
/// part of an Ogg file states its length.
constexpr std::string_view kWithoutEnd = "without an End-Of-Stream flag";

/// Returns the mean of one frame's values.
float Mix(const float* values, int channels) {
    double sum = 0;
    for (int i = 0; i < channels; i++)
        sum += values[i];
    return static_cast<float>(sum / channels);
}

/// Returns what the library has noted about the file.
std::string LogOf(SNDFILE* file) {
    std::array<char, 16384> log{};
    sf_command(file, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()));
    return log.data();
}

/// Returns the numbers of bytes of sound in the file and according to its header, if they differ by
/// more than the byte that makes an odd length even. Only the library's log tells this, in a line
/// such as "data : 88200 (should be 44078)".
std::optional<std::pair<long long, long long>> CutBytes(const std::string& log) {
    constexpr std::string_view kFound = " (should be ";
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t colon = line.find(':'), found = line.find(kFound);
        if (colon == line.npos || found == line.npos || found < colon)
            continue;
        const std::string_view name = kits::Trimmed(std::string_view(line).substr(0, colon));
        const long long stated = std::strtoll(line.c_str() + colon + 1, nullptr, 10);
        const long long there = std::strtoll(line.c_str() + found + kFound.size(), nullptr, 10);
        if (std::ranges::find(kSoundLengths, name) != std::end(kSoundLengths) &&
            stated > there + 1 && stated < kUnknownBytes)
            return std::pair(there, stated);
    }
    return std::nullopt;
}

std::string CutText(long long there, long long stated, const char* unit) {
    return "the file ends after " + std::to_string(there) + " of the " + std::to_string(stated) +
           ' ' + unit + " that its header states";
}

} // namespace

struct BMediaTrack::Source {
    kits::OpenSoundFile file;
    SF_INFO info{};
    bool mixed = false;
    /// One buffer of the file's channels, used where they are mixed.
    std::vector<float> frames;
    /// The frames that were read so far.
    sf_count_t read = 0;
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
    source->read += count;
    for (sf_count_t i = 0; i < count * channels; i++) {
        if (!std::isfinite(frames[i]))
            frames[i] = 0;
    }
    for (sf_count_t i = 0; source->mixed && i < count; i++)
        delivered[i] = Mix(frames + i * channels, channels);
    return B_OK;
}

std::string BMediaTrack::Shortfall() const {
    const std::string log = LogOf(source->file.get());
    if (const auto cut = CutBytes(log))
        return CutText(cut->first, cut->second, "bytes of sound");
    if (log.find(kWithoutEnd) != log.npos)
        return "the file ends after " + std::to_string(source->read) +
               " frames, before the end of its stream";
    // Of the formats whose frames the library counts by the header, FLAC alone states them exactly.
    const bool isFlac = (source->info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_FLAC;
    const int64 frames = CountFrames();
    return isFlac && source->read < frames ? CutText(source->read, frames, "frames") : "";
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
