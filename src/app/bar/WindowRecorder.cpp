// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/bar/WindowRecorder.h"

#include "audio/AudioGraph.h"
#include "kits/storage/FileName.h"
#include "kits/support/Utf8.h"

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

/// Room in a file's name for a number such as " (99)", in bytes.
constexpr std::size_t kNumberRoom = 5;

/// Returns the characters of a text in UTF-8 that fit into `most` bytes.
std::string FirstOf(const std::string& text, std::size_t most) {
    if (text.size() <= most)
        return text;
    while (most > 0 && !kits::BeginsCharacter(text[most]))
        most--;
    return text.substr(0, most);
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
    const std::string ending = " " + Now() + ".wav";
    const std::string stem = FirstOf(soundName.empty() ? "sound" : soundName,
                                     kits::kLongestFileName - kNumberRoom - ending.size());
    auto begun = kits::Recording::Begin(folder / (stem + ending));
    if (!begun)
        return begun.Fault();
    recording = *std::move(begun);
    // The name can exist by the end: from the same second, by another program too, or after the
    // clock was set back, as in autumn.
    recording->LeaveOthers();
    graph.Record(recording.get());
    return {};
}

kits::Result<std::filesystem::path> WindowRecorder::End() {
    graph.Record(nullptr);
    const std::unique_ptr<kits::Recording> ended = std::move(recording);
    if (const auto finished = ended->Finish(); !finished)
        return finished.Fault();
    return ended->Path();
}

} // namespace vexa
