// SPDX-License-Identifier: GPL-3.0-or-later
// How long does it take to load a picture, compared with libpng's own conversion to grey? What does
// a point of the terrain cost in blocks, compared with one point at a time? What does it take to
// open a whole sound with a picture, compared with one with an expression?
#include "documents/SoundDocument.h"
#include "functions/PictureFunction.h"
#include "functions/PictureLoops.h"
#include "instrument/Instrument.h"
#include "support/Pictures.h"
#include "support/TemporaryFolder.h"

#include <cmath>
#include <random>

#include <benchmark/benchmark.h>

namespace {

/// Returns hills with some grain, like a photograph; `channels` 8-bit values per pixel.
std::vector<unsigned char> Pixels(std::size_t side, std::size_t channels) {
    std::vector<unsigned char> pixels(side * side * channels);
    std::mt19937 random(1);
    for (std::size_t i = 0; i < pixels.size(); i++) {
        const double x = double(i / channels % side) / double(side);
        const double y = double(i / channels / side) / double(side);
        const double hill = 0.5 + 0.3 * std::sin(9 * x + double(i % channels)) * std::cos(7 * y);
        pixels[i] = static_cast<unsigned char>(255 * hill + double(random() % 8));
    }
    return pixels;
}

std::string PngOf(std::size_t side) {
    return test::Png(unsigned(side), unsigned(side), {PNG_COLOR_TYPE_RGB}, Pixels(side, 3));
}
std::string JpegOf(std::size_t side) {
    return test::Jpeg(unsigned(side), unsigned(side), {JCS_RGB, 3}, Pixels(side, 3));
}

void Decode(benchmark::State& state, std::string (*make)(std::size_t)) {
    const std::string file = make(std::size_t(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(kits::DecodePicture(file));
    state.counters["MB"] = double(file.size()) / 1e6;
}

/// Loads with the library's simplified interface, to 8 bits.
void Library(benchmark::State& state) {
    const std::string file = PngOf(std::size_t(state.range(0)));
    for (auto _ : state) {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        png_image_begin_read_from_memory(&image, file.data(), file.size());
        image.format = PNG_FORMAT_GRAY;
        std::vector<png_byte> grey(PNG_IMAGE_SIZE(image));
        png_image_finish_read(&image, nullptr, grey.data(), 0, nullptr);
        benchmark::DoNotOptimize(grey.data());
    }
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(512)->Arg(1024)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond);
}
BENCHMARK(Library)->Apply(Sizes);
BENCHMARK_CAPTURE(Decode, Png, PngOf)->Apply(Sizes);
BENCHMARK_CAPTURE(Decode, Jpeg, JpegOf)->Apply(Sizes);

/// 20 voices on rings around the centre, block by block as the renderer asks for them.
void Terrain(benchmark::State& state, bool inBlocks) {
    const auto side = int32(state.range(0));
    kits::BrightnessMap map{side, side, {}};
    map.values.assign(std::size_t(side) * std::size_t(side), 0.5F);
    const vexa::PlaneFunction f = std::make_shared<vexa::PictureTerrain>(
        std::make_shared<const kits::BrightnessMap>(std::move(map)));
    constexpr std::size_t kPoints = 64 * 20 * 16;
    std::vector<float> x(kPoints), y(kPoints), values(kPoints);
    for (std::size_t i = 0; i < kPoints; i++) {
        const double radius = 0.5 + 0.2 * double(i / 64 % 20), turn = 0.06 * double(i);
        x[i] = float(radius * std::cos(turn));
        y[i] = float(radius * std::sin(turn));
    }
    for (auto _ : state) {
        if (inBlocks)
            f.Evaluate(x.data(), y.data(), values.data(), kPoints);
        for (std::size_t i = 0; !inBlocks && i < kPoints; i++)
            values[i] = f(x[i], y[i]);
        benchmark::DoNotOptimize(values.data());
    }
    state.counters["points"] = benchmark::Counter(double(kPoints) * double(state.iterations()),
                                                  benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(Terrain, PointByPoint, false)->Arg(384)->Arg(4096);
BENCHMARK_CAPTURE(Terrain, Blocks, true)->Arg(384)->Arg(4096);

/// Opens a sound, from its documents on the disk to the function that plays.
void Open(benchmark::State& state, vexa::FunctionKind kind, const std::string& source) {
    const test::TemporaryFolder folder;
    folder.Write("pictures/a.png", PngOf(1024));
    folder.Write("pictures/a.jpeg", JpegOf(1024));
    vexa::Sound sound;
    sound.function.kind = kind;
    vexa::SourceOf(sound.function) = source;
    const std::filesystem::path path = folder.Path() / "sound.xml";
    if (!vexa::WriteSound(path, sound))
        return state.SkipWithError("not written");
    vexa::Instrument instrument(folder.Path(), vexa::Addons::None);
    for (auto _ : state) {
        if (!instrument.Load(*vexa::ReadSound(path)))
            return state.SkipWithError("not loaded");
    }
}
BENCHMARK_CAPTURE(Open, Expression, vexa::FunctionKind::Expression, "sin(x)*cos(y)")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Open, Png, vexa::FunctionKind::Picture, "a.png")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Open, Jpeg, vexa::FunctionKind::Picture, "a.jpeg")->Unit(benchmark::kMillisecond);

} // namespace
