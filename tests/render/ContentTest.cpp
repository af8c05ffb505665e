// SPDX-License-Identifier: GPL-3.0-or-later
// Checks the shipped sounds, functions and samples by their rendered output.
#include "documents/FunctionDocument.h"
#include "documents/SoundDocument.h"
#include "formula/Formula.h"
#include "instrument/Instrument.h"
#include "support/Sounds.h"
#include "support/Spectrum.h"
#include "support/TemporaryFolder.h"

#include <numeric>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using vexa::Sound;

const fs::path kFolder = VEXA_PROGRAM_FOLDER;
/// Uses the source folder, as the copies in the program folder may have been edited.
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

/// Renders two seconds of note 57 (220 Hz), then its release, at the default gain.
std::vector<float> PlayOneNote(const Sound& sound) {
    vexa::Instrument whole(kFolder, vexa::Addons::None);
    const vexa::FunctionReport report = whole.Load(sound);
    EXPECT_TRUE(report) << vexa::Text(report);
    vexa::Engine& instrument = whole.Engine();
    instrument.renderer.SetGain(0.25F);
    instrument.consumer.NoteOn(0, 57, 100, 0);
    std::vector<float> samples = test::Render(instrument, 88200);
    instrument.consumer.NoteOff(0, 57, 0, 0);
    const std::vector<float> release = test::Render(instrument, 4 * 44100);
    samples.insert(samples.end(), release.begin(), release.end());
    return samples;
}

/// Another test, `scripts/measure-sounds --check`, compares the sounds with each other.
TEST(Content, EverySoundIsHeardCleanAndEnds) {
    std::set<std::string> categories;
    std::size_t count = 0;
    for (const fs::path& path : Documents("sounds")) {
        SCOPED_TRACE(path.filename());
        vexa::Warnings warnings;
        const auto sound = vexa::ReadSound(path, &warnings);
        ASSERT_TRUE(sound) << sound.Fault().text;
        EXPECT_TRUE(warnings.empty());
        const std::vector<float> samples = PlayOneNote(*sound);
        const float peak = test::Peak(samples);
        EXPECT_GT(peak, 0.02F);
        EXPECT_LT(peak, 0.6F) << "leaves room for a chord";
        const double mean =
            std::accumulate(samples.begin(), samples.end(), 0.0) / double(samples.size());
        EXPECT_LT(std::abs(mean), 0.01 * peak) << "a constant part";
        EXPECT_LT(test::Peak({samples.end() - 4410, samples.end()}), 0.01F * peak);
        count++;
        categories.insert(sound->info.category.value_or(""));
        for (const auto& text : {sound->info.name, sound->info.tags, sound->info.comment})
            EXPECT_FALSE(text.value_or("").empty()) << "name, tags or comment";
    }
    EXPECT_GE(count, 64U);
    EXPECT_THAT(categories, testing::ElementsAreArray(std::set<std::string>(
                                std::begin(vexa::kCategories), std::end(vexa::kCategories))));
}

/// Renders a held note with ears the given number of degrees apart: the left ear, the right ear,
/// and a single loudspeaker for both.
std::array<std::vector<float>, 3> Hear(const Sound& sound, uchar note, float spread) {
    vexa::Instrument whole(kFolder, vexa::Addons::None);
    EXPECT_TRUE(whole.Load(sound));
    vexa::Engine& instrument = whole.Engine();
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
        const auto sound = vexa::ReadSound(path);
        ASSERT_TRUE(sound);
        // The pads, and other sounds that are played like pads.
        const std::string name = path.stem();
        if (sound->info.category != "pad" && name != "pad" && name != "drone")
            continue;
        pads++;
        // The last two texts are the ratios, which may both be above 1.
        const double lowest =
            std::min(std::stod(sound->texts.end()[-2]), std::stod(sound->texts.back()));
        for (const uchar note : {36, 48, 60, 72}) {
            const double hertz = std::max(1.0, lowest) * 440 * std::exp2((note - 69) / 12.0);
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
    for (const fs::path& path : Documents("sounds")) {
        ASSERT_TRUE(vexa::WriteSound(copy, *vexa::ReadSound(path)));
        EXPECT_TRUE(test::Contents(copy) == test::Contents(path)) << path;
    }
    for (const fs::path& path : Documents("functions")) {
        ASSERT_TRUE(vexa::WriteFunction(copy, *vexa::ReadFunction(path, vexa::Function())));
        EXPECT_TRUE(test::Contents(copy) == test::Contents(path)) << path;
    }
}

TEST(Content, EveryFunctionPlaysAndIsFinite) {
    const std::vector<fs::path> paths = Documents("functions");
    EXPECT_GE(paths.size(), 40U);
    for (const fs::path& path : paths) {
        SCOPED_TRACE(path.filename());
        vexa::Warnings warnings;
        const auto function = vexa::ReadFunction(path, vexa::Function(), &warnings);
        ASSERT_TRUE(function) << function.Fault().text;
        EXPECT_TRUE(warnings.empty());
        for (const char* element : {"<name>", "<tags>", "<comment>"})
            EXPECT_THAT(function->kept.info, testing::HasSubstr(element));
        const auto outcome = vexa::CompileFormula(function->expression);
        ASSERT_TRUE(outcome) << outcome.fault.reason;
        // All macros at their middle, a note in the middle of the keyboard, half a second old, and
        // the wheel half up.
        const std::vector<float> inputs(outcome.formula->Inputs().size(), 0.5F);
        float highest = 0;
        for (float x = -8; x <= 8; x += 0.25F) {
            for (float y = -8; y <= 8; y += 0.25F) {
                const float value = outcome.formula->At(x, y, inputs.data());
                ASSERT_TRUE(std::isfinite(value)) << x << ' ' << y;
                highest = std::max(highest, std::abs(value));
            }
        }
        EXPECT_GT(highest, 0.2F);
        EXPECT_LT(highest, 3.0F);
    }
}

} // namespace
