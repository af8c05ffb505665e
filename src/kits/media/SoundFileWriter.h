// SPDX-License-Identifier: GPL-3.0-or-later
// Writing sound files that are the same, byte for byte, whenever the same sound is written.
#pragma once

#include "kits/support/Result.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>

namespace kits {

enum class SoundFileFormat {
    /// WAV with values of 32-bit float, so that nothing is clipped or rounded. What is longer than
    /// the 4 GiB that a WAV file can count is written as RF64, its form for such lengths, where the
    /// length was announced or said to be unknown.
    wav,
    /// 24 bit; values beyond -1..1 are clipped.
    flac,
    /// Ogg Vorbis of variable bit rate.
    ogg,
};

/// The format that a file's name asks for: .wav, .flac or .ogg, in any case. The error names these.
Result<SoundFileFormat> SoundFileFormatOf(const std::filesystem::path& path);

/// Writes one sound file. A value that is not finite is written as 0. It is for one thread at a
/// time, which may wait for the disk.
class SoundFileWriter {
  public:
    /// The length for Create of a sound that goes on until somebody ends it.
    static constexpr std::uint64_t kUnknownLength = UINT64_MAX;

    /// Writes to an open descriptor of an empty file, which stays the caller's and is open for
    /// reading too. `name` is the file's name in errors; `frameRate` in frames per second; `frames`
    /// is at least how many there will be.
    static Result<SoundFileWriter> Create(int descriptor, SoundFileFormat format,
                                          const std::filesystem::path& name, int frameRate,
                                          std::uint64_t frames, int channels = 1);

    SoundFileWriter(SoundFileWriter&&) noexcept;
    SoundFileWriter& operator=(SoundFileWriter&&) = delete;
    /// Closes the file, which is of no use where Finish was not called.
    ~SoundFileWriter();

    /// Appends `count` frames, one value per channel each.
    Result<void> Write(const float* frames, std::size_t count);

    /// Completes the file: the last call.
    Result<void> Finish();

  private:
    struct State;
    explicit SoundFileWriter(std::unique_ptr<State> state);

    std::unique_ptr<State> state;
};

} // namespace kits
