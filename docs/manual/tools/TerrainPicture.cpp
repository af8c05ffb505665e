// SPDX-License-Identifier: GPL-3.0-or-later
// Draws a formula's plane with an orbit on it, and the wave and the spectrum that come of it.
//
// terrain-picture OUTPUT.ppm FORMULA [SETTING VALUE...]...: the settings, with the number of their
// values, are in kSettings. Exit code 1 for a formula that may not be played or a file that cannot
// be written, 2 for wrong usage.

#include "instrument/PlayableFormula.h"
#include "instrument/ShownFunction.h"
#include "synth/PlanePicture.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <complex>
#include <cstdio>
#include <fstream>
#include <map>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace vexa;

struct Pixel {
    uint8 red, green, blue;
};

// The window's colours: of an envelope's ground and line, and of the orbits' marks.
constexpr Pixel kGround = {176, 176, 176};
constexpr Pixel kLine = {0, 0, 128};
constexpr Pixel kZero = {144, 144, 144};
constexpr uint8 kOrbit = 200;
/// Steps between the levels of a colour: a picture with few colours is a small file.
constexpr int kLevelStep = 4;

constexpr int kSide = 164;
constexpr int kHarmonics = 32;
constexpr int kBarWidth = 5;
constexpr int kPanelWidth = kHarmonics * kBarWidth + 1;
constexpr int kGap = 4;
constexpr int kPanelHeight = (kSide - kGap) / 2;
/// The spectrum's bars begin so far below the strongest, in decibels.
constexpr double kRange = 60;
constexpr int kPeriodSamples = 1024;
/// Ratios that need more turns than this until the orbit closes are shown as if it closed there.
constexpr int kMostTurns = 8;

/// What a setting is unless it is given, which also says how many values it has.
const std::map<std::string, std::vector<float>, std::less<>> kSettings = {
    {"width", {8}}, // plane units from the left to the right edge
    {"centre", {0, 0}},
    {"radius", {1, 1}},
    {"ratio", {1, 1}}, // turns per period of the note,
                       // in x and in y
    {"a", {0.5F}},
    {"b", {0.5F}},
    {"c", {0.5F}},
    {"d", {0.5F}},
    {"vel", {0.8F}},
    {"key", {60.0F / 127}},
    {"t", {0}},
    {"ctl", {0}},    // of all controllers
    {"relief", {0}}, // 1: a relief in place of the plane, without wave and spectrum
};
using Settings = std::map<std::string, std::vector<float>, std::less<>>;

class Image {
  public:
    Image(int width, int height, Pixel ground)
        : width(width), height(height), pixels(std::size_t(width) * std::size_t(height), ground) {}

    /// What is outside is left out.
    void Set(int x, int y, Pixel pixel) {
        if (x >= 0 && x < width && y >= 0 && y < height)
            pixels[std::size_t(y) * std::size_t(width) + std::size_t(x)] = pixel;
    }
    void Column(int x, int top, int bottom, Pixel pixel) {
        for (int y = std::max(top, 0); y <= std::min(bottom, height - 1); y++)
            Set(x, y, pixel);
    }
    /// Marks the pixel as the window does.
    void Mark(int x, int y) {
        if (x >= 0 && x < width && y >= 0 && y < height)
            pixels[std::size_t(y) * std::size_t(width) + std::size_t(x)].green = kOrbit;
    }
    bool Write(const char* path) const {
        std::ofstream file(path, std::ios::binary);
        file << "P6\n" << width << " " << height << "\n255\n";
        for (const Pixel& p : pixels)
            file << char(p.red) << char(p.green) << char(p.blue);
        return static_cast<bool>(file.flush());
    }

  private:
    int width, height;
    std::vector<Pixel> pixels;
};

uint8 Level(uint32 word, int shift) {
    return static_cast<uint8>((word >> shift & 255) / kLevelStep * kLevelStep);
}

Pixel Colour(uint32 word) {
    return {Level(word, 16), Level(word, 8), Level(word, 0)};
}

/// The formula for one note, and the note's orbit.
class Terrain {
  public:
    Terrain(const PlaneFunction& f, const Settings& settings) : f(f), settings(settings) {}

    float One(std::string_view name, std::size_t i = 0) const {
        return settings.find(name)->second[i];
    }
    float X(double turn) const {
        return float(One("centre") + One("radius") * std::cos(kTurn * turn * One("ratio")));
    }
    float Y(double turn) const {
        return float(One("centre", 1) +
                     One("radius", 1) * std::sin(kTurn * turn * One("ratio", 1)));
    }
    float Heard(double turn) const { return vexa::Heard(f(X(turn), Y(turn))); }

    /// Periods of the note until the orbit closes.
    int Turns() const {
        const auto whole = [](float value) { return std::fabs(value - std::round(value)) < 1e-3F; };
        for (int turns = 1; turns < kMostTurns; turns++) {
            if (whole(One("ratio") * float(turns)) && whole(One("ratio", 1) * float(turns)))
                return turns;
        }
        return kMostTurns;
    }

    std::vector<uint32> Plane(int columns, int rows) const {
        std::vector<uint32> words(std::size_t(columns) * std::size_t(rows));
        DrawPlane(f,
                  {0, 0, 0.5F, 0.5F, One("width") / float(columns), std::size_t(columns),
                   std::size_t(rows)},
                  words.data());
        return words;
    }

    void DrawPlaneInto(Image& image) const {
        const std::vector<uint32> words = Plane(kSide, kSide);
        for (int i = 0; i < kSide * kSide; i++)
            image.Set(i % kSide, i / kSide, Colour(words[std::size_t(i)]));
        const double scale = kSide / One("width");
        constexpr int kMarks = 720;
        for (int i = 0; i < kMarks * Turns(); i++) {
            const double turn = double(i) / kMarks;
            const auto column = int(std::floor(kSide / 2.0 + X(turn) * scale));
            const auto row = int(std::floor(kSide / 2.0 - Y(turn) * scale));
            if (column < kSide)
                image.Mark(column, row);
        }
    }

    /// One closed orbit, two periods at least, without its mean and as high as there is room.
    void DrawWave(Image& image, int left, int top) const {
        const int periods = std::max(2, Turns());
        constexpr int kFine = 8;
        std::vector<double> wave;
        for (int i = 0; i < kPanelWidth * kFine; i++)
            wave.push_back(Heard(double(i) * periods / (kPanelWidth * kFine)));
        double mean = 0, peak = 1e-9;
        for (const double value : wave)
            mean += value / double(wave.size());
        for (const double value : wave)
            peak = std::max(peak, std::fabs(value - mean));
        const double middle = top + (kPanelHeight - 1) / 2.0;
        const auto row = [&](double value) {
            return int(std::lround(middle - (value - mean) / peak * (kPanelHeight / 2.0 - 4)));
        };
        for (int x = 0; x < kPanelWidth; x++) {
            image.Set(left + x, int(middle), kZero);
            // From the column before to the next, so that steep flanks are lines too.
            const std::size_t first = std::size_t(std::max(0, x * kFine - 1));
            int low = row(wave[first]), high = low;
            for (std::size_t i = first; i <= std::size_t(x * kFine + kFine - 1); i++) {
                low = std::max(low, row(wave[i]));
                high = std::min(high, row(wave[i]));
            }
            image.Column(left + x, high, low, kLine);
        }
    }

    /// The note's harmonics 1 to 32, and what lies between them where the orbit needs several
    /// periods, in decibels below the strongest.
    void DrawSpectrum(Image& image, int left, int top) const {
        const int turns = Turns(), count = turns * kPeriodSamples;
        std::vector<std::complex<double>> circle;
        std::vector<double> wave;
        for (int i = 0; i < count; i++) {
            circle.push_back(std::polar(1.0, kTurn * i / count));
            wave.push_back(Heard(double(i) / kPeriodSamples));
        }
        std::vector<double> parts;
        for (int k = 1; k <= turns * kHarmonics; k++) {
            std::complex<double> sum = 0;
            for (int i = 0; i < count; i++)
                sum += wave[std::size_t(i)] * circle[std::size_t(int64(i) * k % count)];
            parts.push_back(std::abs(sum));
        }
        const double strongest = std::max(1e-9, *std::max_element(parts.begin(), parts.end()));
        const int bottom = top + kPanelHeight - 1;
        for (int k = 1; k <= turns * kHarmonics; k++) {
            const double level = 20 * std::log10(parts[std::size_t(k) - 1] / strongest + 1e-9);
            const auto height =
                int(std::lround((1 + std::max(level, -kRange) / kRange) * (kPanelHeight - 5)));
            const int x = left + k * kBarWidth / turns - 3;
            for (int wide = 0; wide < (turns == 1 ? 3 : 1) && height > 0; wide++)
                image.Column(x + wide, bottom - height, bottom, kLine);
        }
    }

    /// The plane from the front and above: rows from the farthest on, each over those behind.
    Image Relief() const {
        constexpr int kWidth = 320, kHeight = 220, kRows = 300, kRise = 26;
        Image image(kWidth, kHeight, {255, 255, 255});
        const std::vector<uint32> words = Plane(kRows, kRows);
        const double unit = One("width") / kRows;
        // Where the plane's points stand in the picture: what is farther away is narrower.
        const auto column = [&](double x, double depth) {
            return kWidth / 2.0 + (x / unit) * (0.62 + 0.42 * depth);
        };
        const auto row = [&](double depth, double value) {
            return kRise + 20 + depth * (kHeight - kRise - 50) -
                   value * kRise * (0.7 + 0.3 * depth);
        };
        for (int i = 0; i < kRows; i++) {
            const double depth = double(i) / (kRows - 1);
            const double y = (kRows / 2.0 - i) * unit;
            for (int k = 0; k < kWidth; k++) {
                const double x = (k - kWidth / 2.0) * unit / (0.62 + 0.42 * depth);
                const auto cell = int(std::floor(x / unit + kRows / 2.0));
                if (cell < 0 || cell >= kRows)
                    continue;
                const auto value = double(vexa::Heard(f(float(x), float(y))));
                // So that flat black ground shows the relief, levels start a little above black.
                Pixel colour = Colour(words[std::size_t(i * kRows + cell)]);
                const bool net = i % 15 == 0 || cell % 15 == 0;
                const int light = net ? 96 : 24;
                colour = {uint8(std::min(255, colour.red + light)), uint8(light),
                          uint8(std::min(255, colour.blue + light))};
                const auto at = int(std::lround(row(depth, value)));
                image.Column(k, at, int(std::lround(row(depth, -1))) + 6, colour);
            }
            // The orbit's points of this row, in front of what is behind them.
            constexpr int kMarks = 4000;
            for (int mark = 0; mark < kMarks; mark++) {
                const double turn = double(mark) / kMarks;
                if (int(std::floor(kRows / 2.0 - Y(turn) / unit)) != i)
                    continue;
                const auto at = int(std::lround(row(depth, Heard(turn))));
                const auto k = int(std::lround(column(X(turn), depth)));
                for (int wide = 0; wide < 2; wide++)
                    image.Column(k + wide, at - 1, at, {0, 255, 0});
            }
        }
        return image;
    }

  private:
    static constexpr double kTurn = 2 * std::numbers::pi;

    const PlaneFunction& f;
    const Settings& settings;
};

float ValueOf(const FunctionInput& input, const Settings& settings) {
    using Kind = FunctionInput::Kind;
    switch (input.kind) {
    case Kind::Macro:
        return settings.at(std::string(1, char('a' + input.number)))[0];
    case Kind::Velocity:
        return settings.at("vel")[0];
    case Kind::Key:
        return settings.at("key")[0];
    case Kind::Time:
        return settings.at("t")[0];
    case Kind::TimeRest:
        return 0;
    case Kind::Controller:
        return settings.at("ctl")[0];
    }
    return 0;
}

/// False, with a message, where a word is no setting or what follows are not its values.
bool Read(int count, const char* const* words, Settings& settings) {
    for (int i = 0; i < count;) {
        const auto place = settings.find(words[i++]);
        if (place == settings.end()) {
            std::fprintf(stderr, "terrain-picture: there is no setting \"%s\"\n", words[i - 1]);
            return false;
        }
        for (float& value : place->second) {
            const std::string_view text = i < count ? words[i++] : "";
            const auto [end, fault] =
                std::from_chars(text.data(), text.data() + text.size(), value);
            if (fault != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
                std::fprintf(stderr, "terrain-picture: %s: expected a number, not \"%.*s\"\n",
                             place->first.c_str(), int(text.size()), text.data());
                return false;
            }
        }
    }
    if (!(settings["width"][0] > 0)) {
        std::fprintf(stderr, "terrain-picture: the width must be above 0\n");
        return false;
    }
    return true;
}

} // namespace

int main(int count, char** words) {
    Settings settings = kSettings;
    if (count < 3) {
        std::fprintf(stderr, "Usage: terrain-picture OUTPUT.ppm FORMULA [SETTING VALUE...]...\n");
        return 2;
    }
    if (!Read(count - 3, words + 3, settings))
        return 2;
    const PlayableFormula playable = ReadPlayable(words[2]);
    if (!playable.formula) {
        std::fprintf(stderr, "terrain-picture: %s: %s\n", words[2], playable.reason.c_str());
        return 1;
    }
    std::array<float, kMostInputs> values{};
    std::size_t i = 0;
    for (const FunctionInput& input : playable.formula->Inputs())
        values[i++] = ValueOf(input, settings);
    const PlaneFunction f(std::make_shared<ShownFunction>(PlaneFunction(playable.formula), values));

    const Terrain terrain(f, settings);
    const bool relief = settings["relief"][0] != 0;
    Image image = relief ? terrain.Relief() : Image(kSide + kGap + kPanelWidth, kSide, kGround);
    if (!relief) {
        const int left = kSide + kGap;
        terrain.DrawPlaneInto(image);
        for (int x = 0; x < kPanelWidth; x++)
            image.Column(left + x, kPanelHeight, kPanelHeight + kGap - 1, {255, 255, 255});
        for (int x = kSide; x < left; x++)
            image.Column(x, 0, kSide - 1, {255, 255, 255});
        terrain.DrawWave(image, left, 0);
        terrain.DrawSpectrum(image, left, kPanelHeight + kGap);
    }
    if (!image.Write(words[1])) {
        std::fprintf(stderr, "terrain-picture: %s: cannot be written\n", words[1]);
        return 1;
    }
    return 0;
}
