// SPDX-License-Identifier: GPL-3.0-or-later
// Sound files that tests write and read.
#pragma once

#include "kits/media/MediaFile.h"
#include "kits/media/SoundFileWriter.h"
#include "kits/storage/FileReplacement.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// Returns a number as `bytes` bytes, least significant first.
inline std::string LittleEndian(unsigned number, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; i++)
        text += static_cast<char>(number >> (8 * i) & 0xff);
    return text;
}

/// Returns a WAV file of 16-bit integers, interleaved.
inline std::string ShortWav(const std::vector<int>& values, unsigned frameRate, unsigned channels) {
    std::string data;
    for (const int value : values)
        data += LittleEndian(static_cast<unsigned>(value), 2);
    const std::string format = LittleEndian(1, 2) + LittleEndian(channels, 2) +
                               LittleEndian(frameRate, 4) +
                               LittleEndian(frameRate * channels * 2, 4) +
                               LittleEndian(channels * 2, 2) + LittleEndian(16, 2);
    const auto length = static_cast<unsigned>(data.size());
    return "RIFF" + LittleEndian(36 + length, 4) + "WAVEfmt " + LittleEndian(16, 4) + format +
           "data" + LittleEndian(length, 4) + data;
}

/// Writes interleaved frames into a sound file whose name gives the format, announcing the given
/// number of frames; returns the first error.
inline kits::Result<void> WriteSound(const std::filesystem::path& path,
                                     const std::vector<float>& values, int frameRate,
                                     int channels = 1, std::uint64_t announced = 0) {
    const auto format = kits::SoundFileFormatOf(path);
    if (!format)
        return format.Fault();
    auto file = kits::FileReplacement::Create(path);
    if (!file)
        return file.Fault();
    auto writer = kits::SoundFileWriter::Create(file->Descriptor(), *format, path, frameRate,
                                                announced, channels);
    if (!writer)
        return writer.Fault();
    if (auto written =
            writer->Write(values.data(), values.size() / static_cast<std::size_t>(channels));
        !written)
        return written;
    if (auto finished = writer->Finish(); !finished)
        return finished;
    return file->Commit();
}

/// The decoded content of a sound file; `channels` as requested from the track.
struct DecodedSound {
    float frameRate = 0;
    unsigned channels = 0;
    std::vector<float> values;
};

inline DecodedSound ReadSound(const std::filesystem::path& path, unsigned channels) {
    const entry_ref ref{path.parent_path().string(), path.filename().string()};
    BMediaFile file(&ref);
    BMediaTrack* const track = file.TrackAt(0);
    if (!track)
        return {};
    media_format format;
    format.u.raw_audio.channel_count = channels;
    track->DecodedFormat(&format);
    DecodedSound sound{format.u.raw_audio.frame_rate, format.u.raw_audio.channel_count, {}};
    std::vector<float> buffer(format.u.raw_audio.buffer_size / sizeof(float));
    int64 count = 0;
    while (track->ReadFrames(buffer.data(), &count) == B_OK)
        sound.values.insert(sound.values.end(), buffer.begin(),
                            buffer.begin() + count * sound.channels);
    return sound;
}

} // namespace test
