// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/MediaFile.h"
#include "kits/media/SoundFileWriter.h"
#include "support/Limits.h"
#include "support/SoundFiles.h"
#include "support/TemporaryFolder.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using test::Contents;
using test::ReadSound;
using test::TemporaryFolder;
using test::WriteSound;

std::vector<float> Tone(std::size_t frames) {
    std::vector<float> values(frames);
    for (std::size_t i = 0; i < frames; i++)
        values[i] = 0.7F * static_cast<float>(std::sin(0.05 * static_cast<double>(i)));
    return values;
}

TEST(SoundFileWriter, WritesWhatIsReadBack) {
    struct Case {
        const char* name;
        float tolerance;
    };
    const TemporaryFolder folder;
    const std::vector<float> tone = Tone(50'000);
    for (const Case& c : {Case{"a.wav", 0}, Case{"a.FLAC", 1.2e-7F}, Case{"a.Ogg", 0.05F}}) {
        const auto written = WriteSound(folder.Path() / c.name, tone, 44100);
        ASSERT_TRUE(written) << written.Fault().text;
        const test::DecodedSound sound = ReadSound(folder.Path() / c.name, 1);
        EXPECT_EQ(sound.frameRate, 44100) << c.name;
        ASSERT_EQ(sound.values.size(), tone.size()) << c.name;
        float worst = 0;
        for (std::size_t i = 0; i < tone.size(); i++)
            worst = std::max(worst, std::abs(sound.values[i] - tone[i]));
        EXPECT_LE(worst, c.tolerance) << c.name;
    }
    ASSERT_TRUE(WriteSound(folder.Path() / "two.wav", {0.5F, -0.25F, 1.0F, 0.0F}, 48000, 2));
    const test::DecodedSound stereo = ReadSound(folder.Path() / "two.wav", 0);
    EXPECT_EQ(stereo.channels, 2U);
    EXPECT_EQ(stereo.values, (std::vector<float>{0.5F, -0.25F, 1.0F, 0.0F}));
}

TEST(SoundFileWriter, ALongSoundGoesBeyondWhatAWavFileCanCount) {
    const TemporaryFolder folder;
    const fs::path path = folder.Path() / "a.wav";
    const std::vector<float> tone = Tone(1000);
    const std::uint64_t most = (0xffffffffULL - 4096) / sizeof(float);
    ASSERT_TRUE(WriteSound(path, tone, 44100, 1, most));
    EXPECT_TRUE(Contents(path).starts_with("RIFF"));
    ASSERT_TRUE(WriteSound(path, tone, 44100, 1, most + 1));
    EXPECT_TRUE(Contents(path).starts_with("RF64"));
    EXPECT_EQ(ReadSound(path, 1).values, tone);
    ASSERT_TRUE(WriteSound(path, tone, 44100, 1, kits::SoundFileWriter::kUnknownLength));
    EXPECT_TRUE(Contents(path).starts_with("RIFF")) << "it was no longer than that";
    EXPECT_EQ(ReadSound(path, 1).values, tone);
}

TEST(SoundFileWriter, ClipsWhereTheFormatDoesAndSilencesWhatIsNoNumber) {
    const TemporaryFolder folder;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> values{2.0F, -2.0F, nan, infinity, -infinity, 0.5F, -1e30F};
    ASSERT_TRUE(WriteSound(folder.Path() / "a.wav", values, 44100));
    EXPECT_EQ(ReadSound(folder.Path() / "a.wav", 1).values,
              (std::vector<float>{2.0F, -2.0F, 0, 0, 0, 0.5F, -1e30F}));
    ASSERT_TRUE(WriteSound(folder.Path() / "a.flac", values, 44100));
    const float most = 1 - 0x1p-23F;
    EXPECT_EQ(ReadSound(folder.Path() / "a.flac", 1).values,
              (std::vector<float>{most, -1, 0, 0, 0, 0.5F, -1}));
    EXPECT_TRUE(WriteSound(folder.Path() / "a.ogg", values, 44100));
}

TEST(SoundFileWriter, ReportsWhatCannotBeWritten) {
    const TemporaryFolder folder;
    const auto unknown = kits::SoundFileFormatOf("tune.mp4");
    ASSERT_FALSE(unknown);
    EXPECT_EQ(unknown.Fault().text,
              "tune.mp4: the name of a sound file ends in one of .wav, .flac, .ogg");
    EXPECT_FALSE(kits::SoundFileFormatOf("wav"));
    const auto channels = WriteSound(folder.Path() / "a.flac", {}, 44100, 9);
    ASSERT_FALSE(channels);
    EXPECT_NE(channels.Fault().text.find("a.flac as .flac at 44100 Hz with 9 channels: "),
              std::string::npos);
    // At once, not when the encoder gets samples. The next lower rates are written.
    for (const auto& [name, rate, most, why] :
         {std::tuple{"a.ogg", 200001, 200000, "the highest rate is 200000 Hz"},
          std::tuple{"a.flac", 655360, 655350, "655350 Hz, and above 65535 Hz it is a mul"},
          std::tuple{"a.flac", 65536, 65535, "the highest rate is 655350 Hz, and above 65535"}}) {
        const auto begun =
            kits::SoundFileWriter::Create(-1, *kits::SoundFileFormatOf(name), name, rate, 1);
        ASSERT_FALSE(begun) << name;
        EXPECT_NE(begun.Fault().text.find(why), std::string::npos) << begun.Fault().text;
        EXPECT_TRUE(WriteSound(folder.Path() / name, {0.5F}, most)) << most;
        fs::remove(folder.Path() / name);
    }

    for (const char* name : {"a.wav", "a.flac", "a.ogg"}) {
        const auto empty = WriteSound(folder.Path() / name, {}, 44100);
        ASSERT_FALSE(empty) << name;
        EXPECT_NE(empty.Fault().text.find(": the sound has no length"), std::string::npos);
    }

    std::vector<float> noise(400'000);
    unsigned state = 1;
    for (float& value : noise)
        value = static_cast<float>(state = state * 1664525 + 1013904223) * 0x1p-32F;
    for (const char* name : {"a.wav", "a.flac", "a.ogg"}) {
        kits::Result<void> written;
        test::WithFileSizeLimit(50'000,
                                [&] { written = WriteSound(folder.Path() / name, noise, 44100); });
        ASSERT_FALSE(written) << name;
        EXPECT_NE(written.Fault().text.find(name), std::string::npos) << written.Fault().text;
    }
    EXPECT_EQ(folder.Count(), 0U) << "no file is left half written";
}

TEST(MediaFile, MixesAnyNumberOfChannelsAndTakesAnySampleType) {
    const TemporaryFolder folder;
    std::vector<float> seven;
    for (int frame = 0; frame < 5000; frame++) {
        for (int channel = 0; channel < 7; channel++)
            seven.push_back(static_cast<float>(frame % 100 + channel) / 128);
    }
    ASSERT_TRUE(WriteSound(folder.Path() / "seven.wav", seven, 22050, 7));
    const test::DecodedSound mixed = ReadSound(folder.Path() / "seven.wav", 1);
    ASSERT_EQ(mixed.values.size(), 5000U);
    EXPECT_EQ(mixed.channels, 1U);
    for (std::size_t i = 0; i < mixed.values.size(); i++)
        ASSERT_FLOAT_EQ(mixed.values[i], static_cast<float>(i % 100 + 3) / 128);

    folder.Write("short.wav", test::ShortWav({16384, -32768, 0, -8192}, 8000, 2));
    EXPECT_EQ(ReadSound(folder.Path() / "short.wav", 1).values,
              (std::vector<float>{-0.25F, -0.125F}));

    // AIFF: most significant byte first; 8000 Hz as an 80-bit float; 8 bits per value.
    const std::string aiff("FORM\0\0\0\x32"
                           "AIFFCOMM\0\0\0\x12\0\1\0\0\0\4\0\x08\x40\x0b\xfa\0\0\0\0\0\0\0"
                           "SSND\0\0\0\x0c\0\0\0\0\0\0\0\0\x40\xc0\0\x20",
                           58);
    folder.Write("byte.aiff", aiff);
    const test::DecodedSound bytes = ReadSound(folder.Path() / "byte.aiff", 1);
    EXPECT_EQ(bytes.frameRate, 8000);
    EXPECT_EQ(bytes.values, (std::vector<float>{0.5F, -0.5F, 0, 0.25F}));

    // MPEG 1 layer 3, 128 kbit/s, 44.1 kHz, one channel: frames of 417 bytes that hold silence.
    std::string mp3;
    for (int i = 0; i < 20; i++)
        mp3 += "\xff\xfb\x90\xc4" + std::string(413, '\0');
    folder.Write("silent.mp3", mp3);
    const test::DecodedSound silent = ReadSound(folder.Path() / "silent.mp3", 1);
    EXPECT_EQ(silent.frameRate, 44100);
    EXPECT_GT(silent.values.size(), 15U * 1152U);
}

/// Returns the remark on the length of a sound file, after reading all of it.
std::string Shortfall(const std::filesystem::path& path) {
    const entry_ref ref{path.parent_path().string(), path.filename().string()};
    BMediaFile file(&ref);
    media_format format;
    file.TrackAt(0)->DecodedFormat(&format);
    std::vector<float> buffer(format.u.raw_audio.buffer_size / sizeof(float));
    for (int64 count = 0; file.TrackAt(0)->ReadFrames(buffer.data(), &count) == B_OK;) {
    }
    return file.TrackAt(0)->Shortfall();
}

TEST(MediaFile, TellsOfAFileThatIsCutShort) {
    const TemporaryFolder folder;
    const std::string wav = test::ShortWav(std::vector<int>(1000, 5), 8000, 2);
    // A header that is only one byte off means an odd length, and one near 2 or 4 GiB none.
    const auto stating = [&](unsigned bytes) {
        std::string content = wav;
        return folder.Write("a.wav", content.replace(40, 4, test::LittleEndian(bytes, 4)));
    };
    EXPECT_EQ(Shortfall(stating(2000)), "");
    EXPECT_EQ(Shortfall(stating(2001)), "");
    EXPECT_EQ(Shortfall(stating(0x7ffff000)), "");
    EXPECT_EQ(Shortfall(stating(0xffffffff)), "");
    EXPECT_EQ(Shortfall(stating(5000)),
              "the file ends after 2000 of the 5000 bytes of sound that its header states");
    EXPECT_EQ(Shortfall(folder.Write("b.wav", wav.substr(0, wav.size() - 10))),
              "the file ends after 1990 of the 2000 bytes of sound that its header states");

    const std::string aiff("FORM\0\0\0\x32"
                           "AIFFCOMM\0\0\0\x12\0\1\0\0\0\4\0\x08\x40\x0b\xfa\0\0\0\0\0\0\0"
                           "SSND\0\0\0\x0c\0\0\0\0\0\0\0\0\x40\xc0\0\x20",
                           58);
    EXPECT_EQ(Shortfall(folder.Write("a.aiff", aiff)), "");
    EXPECT_THAT(Shortfall(folder.Write("b.aiff", aiff.substr(0, 56))),
                testing::StartsWith("the file ends after "));

    const auto flac = folder.Path() / "a.flac";
    std::vector<float> noise(20000);
    for (std::size_t i = 0; i < noise.size(); i++)
        noise[i] = static_cast<float>(i * i % 997) / 1000;
    ASSERT_TRUE(WriteSound(flac, noise, 44100));
    EXPECT_EQ(Shortfall(flac), "");
    std::filesystem::resize_file(flac, std::filesystem::file_size(flac) / 2);
    EXPECT_THAT(Shortfall(flac), testing::EndsWith(" of the 20000 frames that its header states"));

    const auto ogg = folder.Path() / "a.ogg";
    ASSERT_TRUE(WriteSound(ogg, noise, 44100));
    EXPECT_EQ(Shortfall(ogg), "");
    std::filesystem::resize_file(ogg, std::filesystem::file_size(ogg) - 1);
    EXPECT_THAT(Shortfall(ogg), testing::EndsWith(" frames, before the end of its stream"));
}

TEST(MediaFile, CountsValuesThatAreNotFiniteAsZero) {
    const TemporaryFolder folder;
    ASSERT_TRUE(WriteSound(folder.Path() / "a.wav", {1, 1, 1, 0.5F}, 44100, 2));
    // The last eight bytes are one frame; its first value becomes a NaN, then an infinity.
    for (const char* bytes : {"\0\0\xc0\x7f", "\0\0\x80\xff"}) {
        std::string content = Contents(folder.Path() / "a.wav");
        content.replace(content.size() - 8, 4, std::string(bytes, 4));
        EXPECT_EQ(ReadSound(folder.Write("b.wav", content), 1).values,
                  (std::vector<float>{1, 0.25F}));
    }
}

} // namespace
