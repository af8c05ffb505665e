// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/bar/WindowRecorder.h"

#include "audio/AudioGraph.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <system_error>
#include <utility>

namespace vexa {

namespace {

/// Returns the local time in a form that sorts: "2031-05-17 20.15.08".
std::string Now() {
    const std::time_t seconds = std::time(nullptr);
    std::tm parts{};
    ::localtime_r(&seconds, &parts);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%d %H.%M.%S", &parts);
    return {text.data(), length};
}

} // namespace

WindowRecorder::WindowRecorder(AudioGraph& graph, kits::ProgramFolders folders)
    : graph(graph), folders(std::move(folders)) {}

WindowRecorder::~WindowRecorder() {
    if (!recording)
        return;
    if (const auto kept = End(); !kept)
        std::fprintf(stderr, "vexa: %s\n", kept.Fault().text.c_str());
}

kits::Result<void> WindowRecorder::Begin(const std::string& soundName) {
    const std::filesystem::path folder = folders.Own("recordings");
    std::error_code fault;
    std::filesystem::create_directories(folder, fault);
    if (fault)
        return kits::Error{folder.string() + ": " + fault.message()};
    const std::string stem = (soundName.empty() ? "sound" : soundName) + " " + Now();
    path = folder / (stem + ".wav");
    // The name can exist already: from the same second, or after the clock was set back, as in
    // autumn.
    for (int number = 2; std::filesystem::exists(path, fault); number++)
        path = folder / (stem + " (" + std::to_string(number) + ").wav");
    auto begun = kits::Recording::Begin(path);
    if (!begun)
        return begun.Fault();
    recording = *std::move(begun);
    graph.Record(recording.get());
    return {};
}

kits::Result<std::filesystem::path> WindowRecorder::End() {
    graph.Record(nullptr);
    const std::unique_ptr<kits::Recording> ended = std::move(recording);
    if (const auto finished = ended->Finish(); !finished)
        return finished.Fault();
    return path;
}

} // namespace vexa
