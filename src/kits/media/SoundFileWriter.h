// SPDX-License-Identifier: GPL-3.0-or-later
// Writes sound files; the same sound gives the same file, byte for byte.
#pragma once

#include "kits/support/Result.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>

namespace kits {

enum class SoundFileFormat {
    /// WAV with 32-bit float values, so that nothing is clipped or rounded. A sound longer than the
    /// 4 GiB that a WAV file can count is written as RF64, WAV's form for such lengths, if the
    /// length was announced or declared unknown.
    wav,
    /// 24 bit; values beyond -1..1 are clipped.
    flac,
    /// Ogg Vorbis of variable bit rate.
    ogg,
};

/// Returns the format for a file's name: .wav, .flac or .ogg, in any case. The error names these.
Result<SoundFileFormat> SoundFileFormatOf(const std::filesystem::path& path);

/// Writes one sound file. Values that are not finite are written as 0. For one thread at a time,
/// which may wait for the disk.
class SoundFileWriter {
  public:
    /// The length to pass to Create for a sound whose end is not known.
    static constexpr std::uint64_t kUnknownLength = UINT64_MAX;

    /// Writes to an open descriptor of an empty file, which stays the caller's and is open for
    /// reading too. `name` is the file's name in errors; `frameRate` is in frames per second;
    /// `frames` is an upper bound of the number of frames. The error names what the format does not
    /// have.
    static Result<SoundFileWriter> Create(int descriptor, SoundFileFormat format,
                                          const std::filesystem::path& name, int frameRate,
                                          std::uint64_t frames, int channels = 1);

    SoundFileWriter(SoundFileWriter&&) noexcept;
    SoundFileWriter& operator=(SoundFileWriter&&) = delete;
    /// Closes the file, which is of no use unless Finish was called.
    ~SoundFileWriter();

    /// Appends `count` frames of interleaved channels.
    Result<void> Write(const float* frames, std::size_t count);

    /// Writes into the file how long it is so far, so that it can be read if the program ends here.
    /// Up to 4096 frames that wait to be written, and of FLAC and Ogg Vorbis what their encoders
    /// hold back, are not in it.
    Result<void> KeepReadable();

    /// Completes the file, which fails without a frame. It must be the last call, but for Salvage.
    Result<void> Finish();

    /// Makes a valid file of what was written before Write, KeepReadable or Finish failed. It must
    /// be the last call. Returns the number of frames in the file; 0 if there is none.
    std::uint64_t Salvage();

    /// Returns the number of frames that were given to Write without a fault.
    std::uint64_t Frames() const;
    /// Returns the number of values, of any channel, that were beyond -1..1. FLAC and most players
    /// of Ogg Vorbis clip them.
    std::uint64_t Loud() const;

  private:
    struct State;
    explicit SoundFileWriter(std::unique_ptr<State> state);

    std::unique_ptr<State> state;
};

} // namespace kits
