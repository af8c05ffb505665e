// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/Recording.h"

#include "support/Limits.h"
#include "support/SoundFiles.h"
#include "support/TemporaryFolder.h"

#include <cmath>
#include <functional>

#include <gtest/gtest.h>

namespace {

class RecordingTest : public testing::Test {
  protected:
    std::unique_ptr<kits::Recording> Begin(const char* name) {
        auto begun = kits::Recording::Begin(folder.Path() / name);
        EXPECT_TRUE(begun);
        return *std::move(begun);
    }
    /// Returns the reason for which the recording is incomplete; empty if it is complete.
    static std::string Fault(kits::Recording& recording) {
        const auto finished = recording.Finish();
        return finished ? "" : finished.Fault().text;
    }
    std::size_t Files() const {
        return std::size_t(std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
    }
    /// Puts `frames` frames of these values.
    static void Put(kits::Recording& recording, std::size_t frames, float left, float right) {
        recording.Put(std::vector(frames, left).data(), std::vector(frames, right).data(), frames);
    }
    /// Returns frame number `frame` of a signal that no encoder makes small.
    static float Noise(std::size_t frame) {
        return float(std::uint32_t(frame * 2654435761U) >> 8) * 0x1p-24F;
    }
    /// Puts `frames` frames of noise, from `from` on, as fast as the disk takes them.
    static void PutNoise(kits::Recording& recording, std::size_t from, std::size_t frames) {
        std::vector<float> values(frames);
        for (std::size_t i = 0; i < frames; i++)
            values[i] = Noise(from + i);
        recording.Put(values.data(), values.data(), frames);
    }
    static bool Within(std::chrono::seconds time, const std::function<bool()>& holds) {
        const auto end = std::chrono::steady_clock::now() + time;
        while (!holds() && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return holds();
    }
    /// Returns the number of frames that a sound file announces; -1 if it does not or is none.
    static int64 Announced(const std::filesystem::path& path) {
        const entry_ref ref{path.parent_path().string(), path.filename().string()};
        BMediaFile file(&ref);
        BMediaTrack* const track = file.TrackAt(0);
        return track ? track->CountFrames() : -1;
    }
    test::TemporaryFolder folder;
};

/// Checks the file byte for byte where its format allows it, and that what it has and what is said
/// to be missing are all that was put before it ended.
TEST_F(RecordingTest, WhatWasWrittenBeforeTheDiskWasFullIsKept) {
    constexpr std::size_t kFrames = 480'000;
    for (const auto& [name, tolerance] :
         {std::pair{"a.wav", 0.0}, std::pair{"a.flac", 1.2e-7}, std::pair{"a.ogg", 2.0}}) {
        const auto recording = Begin(name);
        recording->TakeRate(48000);
        std::string fault;
        double seconds = 0;
        test::WithFileSizeLimit(100'000, [&] {
            PutNoise(*recording, 0, kFrames);
            EXPECT_TRUE(Within(std::chrono::seconds(20), [&] { return recording->HasEnded(); }));
            EXPECT_NE(recording->Ending()->text.find("; the recording ends there"),
                      std::string::npos);
            seconds = recording->Seconds();
            PutNoise(*recording, kFrames, 4800);
            EXPECT_EQ(recording->Seconds(), seconds) << "what comes after the end counts";
            fault = Fault(*recording);
        });
        const test::DecodedSound sound = test::ReadSound(folder.Path() / name, 0);
        const std::size_t kept = sound.values.size() / 2;
        ASSERT_GT(kept, 4000U) << name;
        EXPECT_EQ(Announced(folder.Path() / name), int64(kept)) << name;
        std::size_t wrong = 0;
        for (std::size_t i = 0; i < sound.values.size(); i++)
            wrong += std::abs(sound.values[i] - Noise(i / 2)) > tolerance ? 1 : 0;
        EXPECT_EQ(wrong, 0U) << name;
        char missing[64];
        std::snprintf(missing, sizeof missing, ", and the last %.2f s are missing",
                      (std::round(seconds * 48000) - double(kept)) / 48000);
        EXPECT_NE(fault.find(missing), std::string::npos) << fault << " without" << missing;
    }
    EXPECT_EQ(Files(), 3U);
}

TEST_F(RecordingTest, AnEmptyOrIncompleteOneReplacesNone) {
    for (const std::string ending : {".wav", ".flac", ".ogg"}) {
        const std::filesystem::path old = folder.Write("a" + ending, "a good one");
        const auto empty = *kits::Recording::Begin(old, 1U << 20, 1ULL << 60);
        empty->TakeRate(48000);
        PutNoise(*empty, 0, 4800);
        EXPECT_NE(
            Fault(*empty).find("nearly full, and the last 0.10 s are missing; there is no file"),
            std::string::npos);
        const auto silent = Begin(old.filename().c_str());
        silent->TakeRate(48000);
        EXPECT_NE(Fault(*silent).find("nothing was recorded"), std::string::npos);

        const auto changed = Begin(old.filename().c_str());
        changed->TakeRate(48000);
        PutNoise(*changed, 0, 5000);
        changed->TakeRate(44100);
        const std::filesystem::path beside = folder.Path() / ("a (2)" + ending);
        EXPECT_NE(Fault(*changed).find("; what was recorded is in " + beside.string()),
                  std::string::npos);
        EXPECT_EQ(test::ReadSound(beside, 0).values.size(), 10'000U);
        // So is one that nobody finishes, as when an exception ends the program.
        testing::internal::CaptureStderr();
        {
            const auto unfinished = Begin(old.filename().c_str());
            unfinished->TakeRate(48000);
            PutNoise(*unfinished, 0, 5000);
        }
        const std::filesystem::path third = folder.Path() / ("a (3)" + ending);
        EXPECT_NE(testing::internal::GetCapturedStderr().find(third.string()), std::string::npos);
        EXPECT_EQ(test::ReadSound(third, 0).values.size(), 10'000U);
        const auto careful = Begin(old.filename().c_str());
        careful->LeaveOthers();
        careful->TakeRate(48000);
        PutNoise(*careful, 0, 5000);
        EXPECT_EQ(Fault(*careful), "");
        EXPECT_EQ(careful->Path(), folder.Path() / ("a (4)" + ending));
        EXPECT_EQ(test::ReadSound(careful->Path(), 0).values.size(), 10'000U);
        EXPECT_EQ(test::Contents(old), "a good one");
        const auto whole = Begin(old.filename().c_str());
        whole->TakeRate(48000);
        PutNoise(*whole, 0, 5000);
        EXPECT_EQ(Fault(*whole), "");
        EXPECT_EQ(test::ReadSound(old, 0).values.size(), 10'000U);
    }
    EXPECT_EQ(Files(), 12U);
}

TEST_F(RecordingTest, CanBeReadBeforeItIsFinished) {
    for (const char* name : {"a.wav", "a.flac"}) {
        const auto recording = Begin(name);
        recording->TakeRate(48000);
        PutNoise(*recording, 0, 48'000);
        const std::filesystem::path unfinished =
            std::filesystem::directory_iterator(folder.Path())->path();
        // As the program was killed: of what the writer holds back, nothing is in the file.
        EXPECT_TRUE(Within(std::chrono::seconds(10), [&] {
            const std::string bytes = test::Contents(unfinished);
            const std::string length = test::LittleEndian(unsigned(bytes.size()) - 8, 4);
            return Announced(unfinished) >= 40'000 &&
                   (bytes.substr(0, 4) == "fLaC" || bytes.substr(4, 4) == length);
        })) << name;
        PutNoise(*recording, 48'000, 48'000);
        EXPECT_EQ(Fault(*recording), "");
        EXPECT_EQ(Announced(folder.Path() / name), 96'000);
        std::filesystem::remove(folder.Path() / name);
    }
}

TEST_F(RecordingTest, SaysHowManySamplesAreClipped) {
    for (const auto& [name, remark] :
         {std::pair{"a.wav", ""},
          std::pair{"a.flac",
                    ": what goes beyond full volume is clipped (100 samples); a .wav file "
                    "avoids it"}}) {
        const auto recording = Begin(name);
        recording->TakeRate(48000);
        Put(*recording, 5000, 1, -1);
        Put(*recording, 100, 1, -1.01F);
        EXPECT_EQ(Fault(*recording), "");
        EXPECT_EQ(recording->Remark(), *remark ? (folder.Path() / name).string() + remark : "");
    }
}

TEST_F(RecordingTest, KeepsWhatWasPutFromTheFirstDeviceOn) {
    const auto recording = Begin("a.wav");
    Put(*recording, 10, 1, 1); // no device yet
    EXPECT_EQ(recording->Seconds(), 0);
    recording->TakeRate(48000);
    std::vector<float> all;
    for (int piece = 0; piece < 3000; piece++) {
        Put(*recording, 64, float(piece), float(-piece));
        for (int i = 0; i < 64; i++)
            all.insert(all.end(), {float(piece), float(-piece)});
        if (piece == 1500)
            recording->TakeRate(48000); // it was lost and came back
    }
    EXPECT_EQ(recording->Seconds(), 4); // 192000 frames
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "a.wav")) << "it is not whole yet";
    EXPECT_EQ(Fault(*recording), "");
    const test::DecodedSound sound = test::ReadSound(folder.Path() / "a.wav", 0);
    EXPECT_EQ(sound.frameRate, 48000);
    EXPECT_EQ(sound.values, all);
}

TEST_F(RecordingTest, SaysWhatIsMissing) {
    EXPECT_FALSE(kits::Recording::Begin(folder.Path() / "a.mp3"));
    EXPECT_FALSE(kits::Recording::Begin(folder.Path() / "none" / "a.wav"));
    EXPECT_NE(Fault(*Begin("a.wav")).find("no audio device"), std::string::npos);
    EXPECT_EQ(Files(), 0U);

    const auto changed = Begin("a.wav");
    changed->TakeRate(48000);
    Put(*changed, 100, 1, 1);
    changed->TakeRate(44100);
    Put(*changed, 100, 2, 2);
    EXPECT_NE(Fault(*changed).find("from 48000 to 44100 Hz"), std::string::npos);
    EXPECT_EQ(test::ReadSound(folder.Path() / "a.wav", 0).values, std::vector<float>(200, 1.0F));

    // A disk that would become full ends the recording, here before its first frame.
    const auto full = *kits::Recording::Begin(folder.Path() / "full.flac", 1U << 20, 1ULL << 60);
    full->TakeRate(48000);
    Put(*full, 100, 1, 1);
    for (int i = 0; i < 500 && !full->HasEnded(); i++)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(full->HasEnded());
    EXPECT_NE(Fault(*full).find("full.flac: the recording ends where the disk was nearly full"),
              std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "full.flac"));

    // Far more than any disk can write in the available time, so that the recording pauses.
    const auto slow = *kits::Recording::Begin(folder.Path() / "b.wav", 1024);
    slow->TakeRate(48000);
    Put(*slow, 1U << 22, 1, 1);
    EXPECT_NE(Fault(*slow).find(" frames are missing"), std::string::npos);
}

} // namespace
