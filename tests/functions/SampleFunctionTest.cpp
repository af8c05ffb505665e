// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/SampleFunction.h"

#include "functions/SpiralLoops.h"
#include "support/Environment.h"
#include "support/Limits.h"
#include "support/SoundFiles.h"
#include "support/TemporaryFolder.h"

#include <array>
#include <cmath>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using test::TemporaryFolder;
using vexa::LoadSample;
using vexa::PlaneFunction;
using vexa::SampleFrames;
using vexa::SampleSpiral;
using vexa::Winding;
using vexa::WindingFor;

/// Returns the values as a sample of 1000 Hz.
SampleFrames Load(const std::vector<float>& values) {
    const TemporaryFolder folder;
    EXPECT_TRUE(test::WriteSound(folder.Path() / "a.wav", values, 1000));
    const auto loaded = LoadSample(folder.Path() / "a.wav");
    EXPECT_TRUE(loaded) << loaded.Fault().text;
    EXPECT_EQ(loaded->frameRate, 1000);
    return loaded->frames;
}

/// 0, 1/n, 2/n, ... 1
std::vector<float> Ramp(std::size_t n) {
    std::vector<float> values(n + 1);
    for (std::size_t i = 0; i <= n; i++)
        values[i] = static_cast<float>(i) / static_cast<float>(n);
    return values;
}

/// Returns the spiral's value in double precision, for points within the sample.
double Reference(const std::vector<float>& sample, const Winding& spiral, double x, double y) {
    const double phi = std::atan2(-y, -x) / (2 * std::numbers::pi) + 0.5;
    const double u = std::hypot(x, y) / spiral.alphap - phi;
    const double n = std::floor(u);
    const auto at = [&sample](double p) {
        const double last = static_cast<double>(sample.size()) - 1;
        const double i = std::floor(p);
        const double low = sample[static_cast<std::size_t>(std::clamp(i, 0.0, last))];
        const double high = sample[static_cast<std::size_t>(std::clamp(i + 1, 0.0, last))];
        return low + (p - i) * (high - low);
    };
    const double p = (n + phi) * spiral.T;
    return at(p) + (u - n) * (at(p + spiral.T) - at(p));
}

TEST(SampleFunction, WindsTheSampleRoundTheOrigin) {
    std::vector<float> values = Ramp(4999);
    for (std::size_t i = 0; i < values.size(); i++)
        values[i] = 0.5F * values[i] - 0.9F + 0.1F * std::sin(0.05F * static_cast<float>(i));
    values[0] = 1;
    const SampleFrames frames = Load(values);
    const auto winding = WindingFor(frames->size(), 1000, 20);
    ASSERT_TRUE(winding);
    EXPECT_EQ(winding->T, 50);
    EXPECT_EQ(winding->alphap, 0.05F) << "so that the sample ends at radius 5";

    const PlaneFunction spiral = std::make_shared<SampleSpiral>(frames, *winding);
    EXPECT_NEAR(spiral(0, 0), 1, 1e-6);
    double worst = 0;
    for (int i = 0; i < 4000; i++) {
        const auto angle = static_cast<float>(0.1 + i * 0.7);
        const float r = 0.06F + 0.00122F * static_cast<float>(i);
        const float x = r * std::cos(angle);
        const float y = r * std::sin(angle);
        worst = std::max(worst, std::abs(spiral(x, y) - Reference(*frames, *winding, x, y)));
    }
    // Positions of up to 5000 have a resolution of 1/2048 frame.
    EXPECT_LT(worst, 1e-4);

    // One turn of an orbit is one period, counter-clockwise; a step of alphap outwards is T frames.
    const PlaneFunction ramp = std::make_shared<SampleSpiral>(Load(Ramp(4999)), *winding);
    const float r = 40.5F * winding->alphap;
    const auto frame = [&](double turn) {
        const double angle = 2 * std::numbers::pi * turn;
        return ramp(static_cast<float>(r * std::cos(angle)),
                    static_cast<float>(r * std::sin(angle)));
    };
    EXPECT_NEAR((frame(0.75) - frame(0.25)) * 4999, 0, 0.01) << "radius alone tells the place";
    EXPECT_NEAR((ramp(3.05F, 0.1F) - ramp(3.0F, 0.1F)) * 4999, 50, 0.1);
}

TEST(SampleFunction, HoldsTheLastValueOutside) {
    const SampleFrames frames = Load({0.25F, 0.5F, -1.0F, 0.75F});
    const PlaneFunction spiral =
        std::make_shared<SampleSpiral>(frames, *WindingFor(frames->size(), 1000, 400));
    EXPECT_NEAR(spiral(0, 0), 0.25, 1e-6);
    for (const float far : {12.0F, 1e4F, 1e18F, 1e30F}) {
        EXPECT_EQ(spiral(far, 0), 0.75F) << far;
        EXPECT_EQ(spiral(-far, far), 0.75F) << far;
    }
    // Neither these points nor the next frequencies lead out of the table.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float x : {nan, infinity, -infinity, 1e-40F}) {
        spiral(x, 0.1F);
        spiral(0.1F, x);
    }
    for (const double frequency : {0.0, -1.0, double(nan), double(infinity), 1e-300, 1e300})
        EXPECT_FALSE(WindingFor(4, 1000, frequency)) << frequency;
}

TEST(SampleFunction, HasABlockFormOfTheSameValues) {
    std::vector<float> noise(44100);
    std::mt19937 random(1);
    for (float& value : noise)
        value = static_cast<float>(random()) / 2147483648.0F - 1;
    const auto winding = WindingFor(noise.size(), 44100, 220);
    ASSERT_TRUE(winding);
    std::vector<float> x;
    std::vector<float> y;
    const float infinity = std::numeric_limits<float>::infinity();
    const auto special = std::to_array<float>(
        {0.0F, -0.0F, 1.0F, -1.0F, 1e-40F, 1e-20F, -1e30F, infinity, -infinity, 3.4e38F, NAN});
    for (const float first : special) {
        for (const float second : special) {
            x.push_back(first);
            y.push_back(second);
        }
    }
    for (int i = 0; i < 200000; i++) {
        x.push_back(static_cast<float>(random()) / 4e8F - 5.4F);
        y.push_back(static_cast<float>(random()) / 4e8F - 5.4F);
    }
    const vexa::SpiralTurns turns{noise.data(), static_cast<int>(noise.size()) - 1, winding->T,
                                  winding->alphap};
    std::vector<float> values(x.size());
    for (const vexa::SpiralLoops* loops : vexa::RunnableSpiralLoops()) {
        loops->Values(turns, x.data(), y.data(), values.data(), x.size());
        for (std::size_t i = 0; i < x.size(); i++) {
            const float expected = vexa::sampler2rfun(turns, x[i], y[i]);
            ASSERT_TRUE(values[i] == expected || (std::isnan(values[i]) && std::isnan(expected)))
                << loops->name << " at " << x[i] << ", " << y[i] << ": " << values[i]
                << " instead of " << expected;
        }
    }
    const PlaneFunction spiral =
        std::make_shared<SampleSpiral>(std::make_shared<const std::vector<float>>(noise), *winding);
    float value = 0;
    spiral.Evaluate(&x.back(), &y.back(), &value, 1);
    EXPECT_EQ(value, spiral(x.back(), y.back()));
}

TEST(LoadSample, NormalisesToAPeakOfOne) {
    const TemporaryFolder folder;
    folder.Write("short.wav", test::ShortWav({0, 8192, -16384, 4096}, 8000, 1));
    EXPECT_EQ(*LoadSample(folder.Path() / "short.wav")->frames,
              (std::vector<float>{0, 0.5F, -1, 0.25F}));
    EXPECT_EQ(*Load({0, 0, 0}), (std::vector<float>{0, 0, 0})) << "silence is not scaled";
    std::vector<float> opposite{0.5F, -0.5F, 0.5F, 0.25F};
    ASSERT_TRUE(test::WriteSound(folder.Path() / "two.flac", opposite, 8000, 2));
    EXPECT_EQ(*LoadSample(folder.Path() / "two.flac")->frames, (std::vector<float>{0, 1}))
        << "the mean of the channels";
}

TEST(LoadSample, TellsWhyThereIsNone) {
    const TemporaryFolder folder;
    const auto refuse = [&](const char* name, const char* reason) {
        const auto loaded = LoadSample(folder.Path() / name);
        ASSERT_FALSE(loaded) << name;
        EXPECT_NE(loaded.Fault().text.find(name), std::string::npos) << loaded.Fault().text;
        EXPECT_NE(loaded.Fault().text.find(reason), std::string::npos) << loaded.Fault().text;
    };
    folder.Write("text.txt", "This is a text.");
    folder.Write("empty.wav", "");
    folder.Write("moving.gif", "GIF89a");
    folder.Write("headed.wav", test::ShortWav({}, 44100, 1));
    for (const char* other : {"text.txt", "moving.gif"})
        refuse(other, "are sound files, and pictures as PNG or JPEG");
    refuse("empty.wav", "");
    refuse("headed.wav", "no sound");
    refuse("missing.wav", "No such file");
    refuse("none/missing.wav", "no such folder");
    refuse("", "not a file");

    // A header that claims more frames than the file holds gives those that exist.
    std::string cut = test::ShortWav(std::vector<int>(1000, 16384), 44100, 1);
    cut.resize(44 + 200);
    const auto loaded = LoadSample(folder.Write("cut.wav", cut));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->frames->size(), 100U);
}

/// With less memory than the longest sample would take.
TEST(LoadSample, GoesByTheAnnouncedLengthBeforeItReads) {
    if (test::kSanitized)
        GTEST_SKIP() << "a sanitizer needs more than these limits leave";
    const TemporaryFolder folder;
    const unsigned bytes = 2 * (vexa::kLongestSample + 1);
    const fs::path path = folder.Write(
        "long.wav", test::ShortWav({}, 44100, 1).replace(40, 4, test::LittleEndian(bytes, 4)));
    fs::resize_file(path, 44 + bytes);
    const fs::path unknown = folder.Path() / "unknown.flac";
    ASSERT_TRUE(test::WriteSound(unknown, std::vector<float>(1000, 0.5F), 8000));
    // The last 36 bits before the checksum of the first block are the length, 0 if it is not known.
    std::string flac = test::Contents(unknown);
    flac.replace(22, 4, 4, '\0');
    flac[21] = static_cast<char>(flac[21] & 0xF0);
    folder.Write("unknown.flac", flac);
    test::WithMemoryLeft(64 << 20, [&] {
        const auto loaded = LoadSample(path);
        ASSERT_FALSE(loaded);
        EXPECT_NE(loaded.Fault().text.find("it is longer than 134217728 frames"), std::string::npos)
            << loaded.Fault().text;
        const auto other = LoadSample(unknown);
        ASSERT_TRUE(other) << other.Fault().text;
        EXPECT_EQ(other->frames->size(), 1000U);
    });
}

} // namespace
