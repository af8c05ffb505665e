// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/SoundFileWriter.h"

#include "kits/media/OggPages.h"
#include "kits/media/backends/OpenSoundFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kits {

namespace {

/// The quality of the variable bit rate, 0..1: about 190 kbit/s for two channels at 44.1 kHz.
constexpr double kOggQuality = 0.6;
constexpr int kOggSerial = 0x56657861;
/// The number of frames in each call to the library. It is constant because the Vorbis encoder
/// buffers a whole call, and its output depends on how the frames are divided into calls.
constexpr std::size_t kFramesPerWrite = 4096;
/// A WAV file counts its bytes, including the header's, in 32 bits.
constexpr std::uint64_t kMostWavBytes = 0xffffffff - 4096;

struct Format {
    std::string_view ending;
    SoundFileFormat format;
    int libraryFormat;
};

constexpr auto kFormats = std::to_array<Format>({
    {".wav", SoundFileFormat::wav, SF_FORMAT_WAV | SF_FORMAT_FLOAT},
    {".flac", SoundFileFormat::flac, SF_FORMAT_FLAC | SF_FORMAT_PCM_24},
    {".ogg", SoundFileFormat::ogg, SF_FORMAT_OGG | SF_FORMAT_VORBIS},
});

} // namespace

Result<SoundFileFormat> SoundFileFormatOf(const std::filesystem::path& path) {
    std::string ending = path.extension().string();
    for (char& character : ending) {
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    }
    std::string supported;
    for (const Format& row : kFormats) {
        if (row.ending == ending)
            return row.format;
        supported.append(supported.empty() ? "" : ", ").append(row.ending);
    }
    return Error{path.string() + ": the name of a sound file ends in one of " + supported};
}

struct SoundFileWriter::State {
    int descriptor;
    SoundFileFormat format;
    std::string name;
    /// The format, the rate and the number of channels, for a person.
    std::string form;
    std::size_t channels;
    /// The capacity of the file and the amount written, in bytes of floats.
    std::uint64_t room = UINT64_MAX;
    std::uint64_t written = 0;
    OpenSoundFile file;
    /// Values that do not fill a call to the library yet.
    std::vector<float> block;

    Result<void> Flush();
    Error Failure(const std::string& reason) const {
        return {"could not write " + name + ": " + reason};
    }
    /// Returns the error of a format that does not have the rate or the channels, which the
    /// library's own words do not name.
    Error Unfit(const std::string& reason) const {
        return {"could not write " + name + " as " + form + ": " + reason};
    }
};

SoundFileWriter::SoundFileWriter(std::unique_ptr<State> opened) : state(std::move(opened)) {}
SoundFileWriter::SoundFileWriter(SoundFileWriter&&) noexcept = default;
SoundFileWriter::~SoundFileWriter() = default;

Result<SoundFileWriter> SoundFileWriter::Create(int descriptor, SoundFileFormat format,
                                                const std::filesystem::path& name, int frameRate,
                                                std::uint64_t frames, int channels) {
    const auto row = std::find_if(kFormats.begin(), kFormats.end(),
                                  [format](const Format& each) { return each.format == format; });
    auto state = std::make_unique<State>();
    state->descriptor = descriptor;
    state->format = format;
    state->name = name.string();
    state->channels = static_cast<std::size_t>(channels);

    SF_INFO info{};
    info.samplerate = frameRate;
    info.channels = channels;
    info.format = row->libraryFormat;
    if (format == SoundFileFormat::wav) {
        const bool isLong = frames > kMostWavBytes / sizeof(float) / state->channels;
        if (isLong)
            info.format = SF_FORMAT_RF64 | SF_FORMAT_FLOAT;
        else
            state->room = kMostWavBytes;
    }
    state->file.reset(sf_open_fd(descriptor, SFM_WRITE, &info, SF_FALSE));
    SNDFILE* const file = state->file.get();
    state->form = std::string(row->ending) + " at " + std::to_string(frameRate) + " Hz with " +
                  std::to_string(channels) + (channels == 1 ? " channel" : " channels");
    if (!file)
        return state->Unfit(sf_strerror(nullptr));
    // The peak chunk contains the time of writing.
    sf_command(file, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    sf_command(file, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    // A file that turns out to fit into WAV becomes WAV, which more programs read.
    if (frames == kUnknownLength)
        sf_command(file, SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    double quality = kOggQuality;
    sf_command(file, SFC_SET_VBR_ENCODING_QUALITY, &quality, sizeof quality);
    return SoundFileWriter(std::move(state));
}

Result<void> SoundFileWriter::Write(const float* frames, std::size_t count) {
    State& s = *state;
    s.written += count * s.channels * sizeof(float);
    if (s.written > s.room)
        return s.Failure("it is longer than was announced, and than 4 GiB");
    while (count > 0) {
        const std::size_t room = kFramesPerWrite - s.block.size() / s.channels;
        const std::size_t now = std::min(count, room);
        const std::size_t held = s.block.size(), more = now * s.channels;
        s.block.resize(held + more);
        // The difference of a value that is not finite from itself is NaN.
        for (std::size_t i = 0; i < more; i++)
            s.block[held + i] = frames[i] - frames[i] == 0 ? frames[i] : 0.0F;
        frames += now * s.channels;
        count -= now;
        if (now < room)
            break;
        if (Result<void> flushed = s.Flush(); !flushed)
            return flushed;
    }
    return {};
}

Result<void> SoundFileWriter::State::Flush() {
    const auto frames = static_cast<sf_count_t>(block.size() / channels);
    if (sf_writef_float(file.get(), block.data(), frames) != frames) {
        // The Vorbis encoder looks at the rate only when it gets samples.
        const bool isUnfit = sf_error(file.get()) == SF_ERR_UNRECOGNISED_FORMAT;
        const char* const reason = sf_strerror(file.get());
        return isUnfit ? Unfit(reason) : Failure(reason);
    }
    block.clear();
    return {};
}

Result<void> SoundFileWriter::Finish() {
    if (Result<void> flushed = state->Flush(); !flushed)
        return flushed;
    if (const int error = sf_close(state->file.release()); error != SF_ERR_NO_ERROR)
        return state->Failure(sf_error_number(error));
    if (state->format == SoundFileFormat::ogg) {
        if (const Result<void> set = SetOggSerial(state->descriptor, kOggSerial); !set)
            return state->Failure(set.Fault().text);
    }
    return {};
}

} // namespace kits
