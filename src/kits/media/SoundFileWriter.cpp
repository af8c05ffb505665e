// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/SoundFileWriter.h"

#include "kits/media/OggPages.h"
#include "kits/media/backends/OpenSoundFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <unistd.h>

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
    /// The highest frame rate, and the highest that need not be a multiple of 10 (Hz).
    int mostRate, mostOddRate;
};

constexpr int kAny = INT_MAX;

constexpr auto kFormats = std::to_array<Format>({
    {".wav", SoundFileFormat::wav, SF_FORMAT_WAV | SF_FORMAT_FLOAT, kAny, kAny},
    {".flac", SoundFileFormat::flac, SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 655350, 65535},
    {".ogg", SoundFileFormat::ogg, SF_FORMAT_OGG | SF_FORMAT_VORBIS, 200000, 200000},
});

/// Returns why the format does not have the rate; nothing if it has it. The encoders look at the
/// rate only when they get samples, and their own words do not name it.
std::string RateFault(const Format& row, int rate) {
    if (rate <= row.mostOddRate || (rate <= row.mostRate && rate % 10 == 0))
        return "";
    std::string text = "the highest rate is " + std::to_string(row.mostRate) + " Hz";
    if (row.mostOddRate < row.mostRate)
        text += ", and above " + std::to_string(row.mostOddRate) + " Hz it is a multiple of 10";
    return text;
}

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
    std::size_t channels;
    /// The capacity of the file and the amount written, in bytes of floats.
    std::uint64_t room = UINT64_MAX;
    std::uint64_t written = 0;
    std::uint64_t loud = 0;
    /// The number of frames in the calls to the library that succeeded, and the file's length in
    /// bytes after the last of them.
    std::uint64_t passed = 0;
    off_t length = 0;
    OpenSoundFile file;
    /// Values that do not fill a call to the library yet.
    std::vector<float> block;

    Result<void> Flush();
    Result<std::uint64_t> AnnounceFlacFrames() const;
    Error Failure(const std::string& reason) const {
        return {"could not write " + name + ": " + reason};
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
    std::string unfit = RateFault(*row, frameRate);
    if (unfit.empty()) {
        state->file.reset(sf_open_fd(descriptor, SFM_WRITE, &info, SF_FALSE));
        unfit = state->file ? "" : sf_strerror(nullptr);
    }
    if (!unfit.empty())
        return Error{"could not write " + state->name + " as " + std::string(row->ending) + " at " +
                     std::to_string(frameRate) + " Hz with " + std::to_string(channels) +
                     (channels == 1 ? " channel: " : " channels: ") + unfit};
    SNDFILE* const file = state->file.get();
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
    const std::uint64_t written = s.written + count * s.channels * sizeof(float);
    if (written > s.room)
        return s.Failure("it is longer than was announced, and than 4 GiB");
    while (count > 0) {
        const std::size_t room = kFramesPerWrite - s.block.size() / s.channels;
        const std::size_t now = std::min(count, room);
        const std::size_t held = s.block.size(), more = now * s.channels;
        s.block.resize(held + more);
        // The difference of a value that is not finite from itself is NaN.
        std::uint64_t loud = 0;
        for (std::size_t i = 0; i < more; i++) {
            const float value = frames[i] - frames[i] == 0 ? frames[i] : 0.0F;
            s.block[held + i] = value;
            loud += std::abs(value) > 1 ? 1 : 0;
        }
        s.loud += loud;
        frames += now * s.channels;
        count -= now;
        if (now < room)
            break;
        if (Result<void> flushed = s.Flush(); !flushed)
            return flushed;
    }
    s.written = written;
    return {};
}

Result<void> SoundFileWriter::State::Flush() {
    const auto frames = static_cast<sf_count_t>(block.size() / channels);
    // The Vorbis encoder reports a page that could not be written only as an error.
    if (sf_writef_float(file.get(), block.data(), frames) != frames ||
        sf_error(file.get()) != SF_ERR_NO_ERROR)
        return Failure(sf_strerror(file.get()));
    block.clear();
    passed += static_cast<std::uint64_t>(frames);
    length = ::lseek(descriptor, 0, SEEK_CUR);
    return {};
}

/// Writes the number of frames in the file into its first block (RFC 9639, section 8.2), which the
/// encoder does only when it completes the file. Returns that number.
Result<std::uint64_t> SoundFileWriter::State::AnnounceFlacFrames() const {
    // Numbers begin with the highest byte; that of the frames has 36 bits.
    constexpr off_t kBlockSize = 8;
    constexpr off_t kTotal = 21;
    std::array<unsigned char, 2> size{};
    std::array<unsigned char, 5> total{};
    if (::pread(descriptor, size.data(), size.size(), kBlockSize) != ssize_t(size.size()) ||
        ::pread(descriptor, total.data(), total.size(), kTotal) != ssize_t(total.size()))
        return Failure("its first block is missing");
    const std::uint64_t block = size[0] * 256U + size[1];
    // The encoder writes a block when it has the first frame of the next.
    const std::uint64_t frames = passed == 0 || block == 0 ? 0 : (passed - 1) / block * block;
    total[0] = static_cast<unsigned char>((total[0] & 0xf0U) | (frames >> 32 & 0xfU));
    for (std::size_t i = 1; i < total.size(); i++)
        total[i] = static_cast<unsigned char>(frames >> (8 * (total.size() - 1 - i)));
    if (::pwrite(descriptor, total.data(), total.size(), kTotal) != ssize_t(total.size()))
        return Failure(std::strerror(errno));
    return frames;
}

Result<void> SoundFileWriter::KeepReadable() {
    if (state->passed == 0)
        return {};
    switch (state->format) {
    case SoundFileFormat::wav:
        sf_command(state->file.get(), SFC_UPDATE_HEADER_NOW, nullptr, 0);
        if (sf_error(state->file.get()) != SF_ERR_NO_ERROR)
            return state->Failure(sf_strerror(state->file.get()));
        break;
    case SoundFileFormat::flac:
        if (const auto announced = state->AnnounceFlacFrames(); !announced)
            return announced.Fault();
        break;
    case SoundFileFormat::ogg:
        // Each page says how far it reaches.
        break;
    }
    return {};
}

std::uint64_t SoundFileWriter::Salvage() {
    State& s = *state;
    // What a failed call has left, now and while the file is closed, is cut off.
    const auto cut = [&s] {
        return ::ftruncate(s.descriptor, s.length) == 0 &&
               ::lseek(s.descriptor, s.length, SEEK_SET) == s.length;
    };
    const bool wasCut = cut();
    if (SNDFILE* const file = s.file.release())
        sf_close(file);
    if (!wasCut || s.passed == 0 || !cut())
        return 0;
    const Result<std::uint64_t> frames = s.format == SoundFileFormat::flac ? s.AnnounceFlacFrames()
                                         : s.format == SoundFileFormat::ogg
                                             ? SetOggSerial(s.descriptor, kOggSerial)
                                             : s.passed;
    return frames ? *frames : 0;
}

std::uint64_t SoundFileWriter::Frames() const {
    return state->written / sizeof(float) / state->channels;
}

std::uint64_t SoundFileWriter::Loud() const {
    return state->loud;
}

Result<void> SoundFileWriter::Finish() {
    // An encoder makes no file of nothing, or one that cannot be read.
    if (Frames() == 0)
        return state->Failure("the sound has no length");
    if (Result<void> flushed = state->Flush(); !flushed)
        return flushed;
    if (const int error = sf_close(state->file.release()); error != SF_ERR_NO_ERROR)
        return state->Failure(sf_error_number(error));
    if (state->format == SoundFileFormat::ogg) {
        if (const auto set = SetOggSerial(state->descriptor, kOggSerial); !set)
            return state->Failure(set.Fault().text);
    }
    return {};
}

} // namespace kits
