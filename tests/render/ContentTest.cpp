// SPDX-License-Identifier: GPL-3.0-or-later
// The sounds, functions and samples that come with the program, by what they sound like.
#include "documents/FunctionDocument.h"
#include "documents/SoundDocument.h"
#include "functions/FunctionCompiler.h"
#include "instrument/Instrument.h"
#include "support/Sounds.h"
#include "support/Spectrum.h"
#include "support/TemporaryFolder.h"

#include <numeric>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using vexa::Sound;

const fs::path kFolder = VEXA_PROGRAM_FOLDER;
/// The copies in the program folder may have been changed by hand.
const fs::path kContent = VEXA_SOURCE_FOLDER "/data";
constexpr double kRate = 44100;

std::vector<fs::path> Documents(const char* folder) {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(kContent / folder)) {
        if (entry.path().extension() == ".xml")
            paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

/// Two seconds of note 57 (220 Hz), then its release, at the gain that a user starts with.
std::vector<float> PlayOneNote(const Sound& sound) {
    vexa::Instrument whole(kFolder, vexa::Addons::None);
    const vexa::FunctionReport report = whole.Load(sound);
    EXPECT_TRUE(report) << vexa::Text(report);
    vexa::Engine& instrument = whole.Playing();
    instrument.renderer.SetGain(0.25F);
    instrument.consumer.NoteOn(0, 57, 100, 0);
    std::vector<float> samples = test::Render(instrument, 88200);
    instrument.consumer.NoteOff(0, 57, 0, 0);
    const std::vector<float> release = test::Render(instrument, 4 * 44100);
    samples.insert(samples.end(), release.begin(), release.end());
    return samples;
}

/// Levels of the first 24 harmonics and of what lies between them, in decibels above -60 of the
/// loudest.
std::vector<double> Timbre(const std::vector<float>& samples) {
    const std::span<const float> held(samples.data() + 11025, 22050);
    std::vector<double> levels;
    for (int half = 1; half <= 48; half++)
        levels.push_back(test::Amplitude(held, 110.0 * half, kRate));
    const double loudest = *std::max_element(levels.begin(), levels.end());
    for (double& level : levels)
        level = std::max(0.0, 60 + 20 * std::log10(level / loudest));
    return levels;
}

/// Decibels by which two timbres differ on an average of what is heard in either.
double Difference(const std::vector<double>& a, const std::vector<double>& b) {
    double sum = 0;
    int heard = 0;
    for (std::size_t i = 0; i < a.size(); i++) {
        sum += std::abs(a[i] - b[i]);
        heard += a[i] > 0 || b[i] > 0;
    }
    return sum / heard;
}

TEST(Content, EverySoundIsHeardCleanEndsAndIsItself) {
    std::vector<std::pair<std::string, std::vector<double>>> timbres;
    for (const fs::path& path : Documents("sounds")) {
        SCOPED_TRACE(path.filename());
        vexa::ReadReport report;
        const auto sound = vexa::ReadSound(path, report);
        ASSERT_TRUE(sound) << report.reason;
        EXPECT_TRUE(report.warnings.empty());
        const std::vector<float> samples = PlayOneNote(*sound);
        const float peak = test::Peak(samples);
        EXPECT_GT(peak, 0.03F);
        EXPECT_LT(peak, 0.6F) << "leaves room for a chord";
        const double mean =
            std::accumulate(samples.begin(), samples.end(), 0.0) / double(samples.size());
        EXPECT_LT(std::abs(mean), 0.01 * peak) << "a constant part";
        EXPECT_LT(test::Peak({samples.end() - 4410, samples.end()}), 0.01F * peak);

        const std::vector<double> timbre = Timbre(samples);
        for (const auto& [name, other] : timbres) {
            EXPECT_GT(Difference(timbre, other), 6) << "sounds like " << name;
        }
        timbres.emplace_back(path.filename(), timbre);
    }
    EXPECT_GE(timbres.size(), 9U);
}

/// What ears so many degrees apart hear of a held note: the left one, the right one, and a single
/// loudspeaker for both.
std::array<std::vector<float>, 3> Hear(const Sound& sound, uchar note, float spread) {
    vexa::Instrument whole(kFolder, vexa::Addons::None);
    EXPECT_TRUE(whole.Load(sound));
    vexa::Engine& instrument = whole.Playing();
    instrument.playing.given = true;
    instrument.playing.spread = spread;
    instrument.renderer.SetGain(0.25F);
    instrument.consumer.NoteOn(0, note, 100, 0);
    std::array<std::vector<float>, 3> heard;
    heard.fill(std::vector<float>(6 * 44100));
    auto& [left, right, sum] = heard;
    instrument.renderer.Render(left.data(), right.data(), left.size());
    for (std::size_t i = 0; i < sum.size(); i++)
        sum[i] = (left[i] + right[i]) / 2;
    return heard;
}

TEST(Content, APadWithASpreadOf60KeepsItsFundamentalOnEitherSideAndInMono) {
    int pads = 0;
    for (const fs::path& path : Documents("sounds")) {
        vexa::ReadReport report;
        const auto sound = vexa::ReadSound(path, report);
        ASSERT_TRUE(sound);
        // The pads, and those that are played like one.
        const std::string name = path.stem();
        if (sound->info.category != "pad" && name != "pad" && name != "drone")
            continue;
        pads++;
        for (const uchar note : {36, 48, 60, 72}) {
            const double hertz = 440 * std::exp2((note - 69) / 12.0);
            const std::vector<float> mono = Hear(*sound, note, 0)[0];
            for (const std::vector<float>& ear : Hear(*sound, note, 60)) {
                for (std::size_t at = 0; at + 11025 <= mono.size(); at += 5512) {
                    const auto level = [&](const std::vector<float>& samples) {
                        return test::Amplitude({&samples[at], 11025}, hertz, kRate);
                    };
                    EXPECT_GT(20 * std::log10(level(ear) / level(mono)), -12)
                        << name << ' ' << int(note) << ' ' << at;
                }
            }
        }
    }
    EXPECT_GE(pads, 2);
}

TEST(Content, EveryDocumentIsAsTheProgramWouldSaveIt) {
    const test::TemporaryFolder folder;
    const fs::path copy = folder.Path() / "copy.xml";
    vexa::ReadReport report;
    for (const fs::path& path : Documents("sounds")) {
        ASSERT_TRUE(vexa::WriteSound(copy, *vexa::ReadSound(path, report)));
        EXPECT_TRUE(test::Contents(copy) == test::Contents(path)) << path;
    }
    for (const fs::path& path : Documents("functions")) {
        ASSERT_TRUE(vexa::WriteFunction(copy, *vexa::ReadFunction(path, vexa::Function(), report)));
        EXPECT_TRUE(test::Contents(copy) == test::Contents(path)) << path;
    }
}

TEST(Content, EveryFunctionCompilesAndIsFinite) {
    const std::vector<fs::path> paths = Documents("functions");
    EXPECT_GE(paths.size(), 6U);
    for (const fs::path& path : paths) {
        SCOPED_TRACE(path.filename());
        vexa::ReadReport report;
        const auto function = vexa::ReadFunction(path, vexa::Function(), report);
        ASSERT_TRUE(function) << report.reason;
        const auto outcome = vexa::FunctionCompiler(kFolder).Compile(function->expression);
        ASSERT_TRUE(outcome) << outcome.details;
        const vexa::PlaneFunction f = outcome.addon;
        float highest = 0;
        for (float x = -8; x <= 8; x += 0.25F) {
            for (float y = -8; y <= 8; y += 0.25F) {
                ASSERT_TRUE(std::isfinite(f(x, y))) << x << ' ' << y;
                highest = std::max(highest, std::abs(f(x, y)));
            }
        }
        EXPECT_GT(highest, 0.2F);
        EXPECT_LT(highest, 3.0F);
    }
}

} // namespace
