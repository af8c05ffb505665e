// SPDX-License-Identifier: GPL-3.0-or-later
// How long does a bank take to list a thousand sounds, next to reading the same files one after the
// other; and to list them and draw all their pictures, next to drawing them one after the other?
#include "bank/Bank.h"
#include "bank/Thumbnail.h"
#include "instrument/Programs.h"
#include "support/Content.h"
#include "support/TemporaryFolder.h"

#include <chrono>
#include <semaphore>

#include <benchmark/benchmark.h>

namespace {

using namespace vexa;

constexpr int kSounds = 1000;
constexpr int kPictureSize = 48;

/// A user's folder with a thousand sounds: copies of all shipped ones.
class Many {
  public:
    Many() {
        test::CopyContent(folder.Path());
        const std::filesystem::path sounds = folder.Path() / "sounds";
        const std::vector<std::filesystem::path> shipped = Programs(folders);
        for (std::size_t i = shipped.size(); i < kSounds; i++) {
            const std::filesystem::path& from = shipped[i % shipped.size()];
            copy(from, sounds / (from.stem().string() + std::to_string(i) + ".xml"));
        }
    }
    const kits::ProgramFolders& Folders() const { return folders; }

  private:
    test::TemporaryFolder folder;
    const kits::ProgramFolders folders{folder.Path()};
};

const Many& Sounds() {
    static const Many many;
    return many;
}

void Wait(bool (*done)(const BankView&)) {
    std::binary_semaphore changed(0);
    const Bank bank(Sounds().Folders(), kPictureSize, [&changed] { changed.release(); });
    while (!done(*bank.View()))
        changed.acquire();
}

void ListByBank(benchmark::State& state) {
    for (auto _ : state)
        Wait([](const BankView& view) { return view.listed; });
}

void ReadOneByOne(benchmark::State& state) {
    for (auto _ : state) {
        for (const std::filesystem::path& path : Programs(Sounds().Folders())) {
            benchmark::DoNotOptimize(bool(ReadSound(path)));
        }
    }
}

void ListAndDrawByBank(benchmark::State& state) {
    for (auto _ : state)
        Wait([](const BankView& view) { return view.pictured; });
}

void DrawOneByOne(benchmark::State& state) {
    for (auto _ : state) {
        for (const std::filesystem::path& path : Programs(Sounds().Folders()))
            benchmark::DoNotOptimize(
                DrawThumbnail(*ReadSoundEntry(path, true).sound, Sounds().Folders(), kPictureSize));
    }
}

void SearchAll(benchmark::State& state) {
    const Bank bank(Sounds().Folders(), kPictureSize, {});
    while (!bank.View()->listed)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const std::shared_ptr<const BankView> view = bank.View();
    for (auto _ : state)
        benchmark::DoNotOptimize(Search(view->sounds, {.text = "sin bright péd"}, {}));
}

void Times(benchmark::internal::Benchmark* benchmark) {
    benchmark->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime()->MinTime(1);
}

BENCHMARK(ListByBank)->Apply(Times);
BENCHMARK(ReadOneByOne)->Apply(Times);
BENCHMARK(ListAndDrawByBank)->Apply(Times);
BENCHMARK(DrawOneByOne)->Apply(Times);
BENCHMARK(SearchAll)->Apply(Times);

} // namespace
