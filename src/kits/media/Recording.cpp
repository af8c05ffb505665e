// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/Recording.h"

#include "kits/application/Interrupt.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>

#include <sys/statvfs.h>

namespace kits {

namespace {

constexpr std::size_t kChannels = 2;
/// The number of frames passed to the writer at a time.
constexpr std::size_t kWritten = 1024;

/// The writing thread's pause between two checks.
constexpr std::chrono::milliseconds kWriterPause{20};

/// Samples between two checks of the free space: a small part of the reserve.
constexpr std::size_t kSamplesPerLook = 1U << 18;

/// The time between two updates of what the file says of its length.
constexpr std::chrono::seconds kReadableEvery{1};

/// Returns a length for a person: "1.25 s".
std::string InSeconds(std::uint64_t frames, int rate) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f s", double(frames) / rate);
    return text.data();
}

} // namespace

Result<std::unique_ptr<Recording>> Recording::Begin(const std::filesystem::path& path,
                                                    std::size_t patience, std::uint64_t reserve) {
    const Result<SoundFileFormat> format = SoundFileFormatOf(path);
    if (!format)
        return format.Fault();
    Result<FileReplacement> file = FileReplacement::Create(path);
    if (!file)
        return file.Fault();
    return std::unique_ptr<Recording>(
        new Recording(path, *format, *std::move(file), patience, reserve));
}

Recording::Recording(std::filesystem::path path, SoundFileFormat format, FileReplacement file,
                     std::size_t patience, std::uint64_t reserve)
    : path(std::move(path)),
      format(format),
      file(std::move(file)),
      reserve(reserve),
      waiting(patience * kChannels),
      interleaved(kWritten * kChannels) {}

Recording::~Recording() {
    const Interrupt::Completion completing;
    quitting = true;
    if (thread.joinable())
        thread.join();
    if (outcome)
        return;
    try {
        EndBecause({path.string() + ": the recording was not finished"});
        if (const Result<void> kept = Finish(); keptFrames > 0)
            std::fprintf(stderr, "vexa: %s\n", kept.Fault().text.c_str());
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "vexa: the recording is lost: %s\n", fault.what());
    }
}

void Recording::TakeRate(double next) {
    const int rounded = static_cast<int>(std::lround(next));
    if (rate == rounded || over)
        return;
    if (rate != 0) {
        EndBecause({path.string() + ": the recording ends where the device changed its rate from " +
                    std::to_string(rate) + " to " + std::to_string(rounded) + " Hz"});
        return;
    }
    Result<SoundFileWriter> opened = SoundFileWriter::Create(
        file.Descriptor(), format, path, rounded, SoundFileWriter::kUnknownLength, kChannels);
    if (!opened) {
        EndBecause(opened.Fault());
        return;
    }
    rate = rounded;
    writer.emplace(*std::move(opened));
    // Before the thread, which may end the recording.
    takes = true;
    thread = std::thread([this] { Run(); });
}

void Recording::Put(const float* left, const float* right, std::size_t frames) noexcept {
    for (std::size_t done = 0; takes && done < frames;) {
        const std::size_t n = std::min(frames - done, interleaved.size() / kChannels);
        for (std::size_t i = 0; i < n; i++) {
            interleaved[i * kChannels] = left[done + i];
            interleaved[i * kChannels + 1] = right[done + i];
        }
        const bool kept = waiting.Write(interleaved.data(), n * kChannels);
        (kept ? keptFrames : lostFrames) += n;
        done += n;
    }
}

std::optional<Error> Recording::Ending() const {
    const std::lock_guard lock(endingGuard);
    return ending;
}

void Recording::EndBecause(Error reason) {
    const std::lock_guard lock(endingGuard);
    if (!ending)
        ending = std::move(reason);
    takes = false;
    over = true;
}

void Recording::Run() {
    using Clock = std::chrono::steady_clock;
    Clock::time_point next = Clock::now() + kReadableEvery;
    while (!quitting) {
        WriteWaiting();
        if (Clock::now() >= next) {
            KeepReadable();
            next = Clock::now() + kReadableEvery;
        }
        std::this_thread::sleep_for(kWriterPause);
    }
}

/// A file system that does not report its size counts as one with room.
bool Recording::IsDiskFull() const {
    struct statvfs disk {};
    if (::fstatvfs(file.Descriptor(), &disk) != 0 || disk.f_blocks == 0)
        return false;
    return std::uint64_t(disk.f_bavail) * disk.f_frsize < reserve;
}

void Recording::WriteWaiting() {
    std::array<float, 4096> samples;
    while (const std::size_t count = waiting.Read(samples.data(), samples.size())) {
        if (failed || full)
            continue;
        if (untilLook < count) {
            untilLook = kSamplesPerLook;
            if (IsDiskFull()) {
                full = true;
                EndBecause({path.string() + ": the recording ends where the disk was nearly full"});
                continue;
            }
        }
        untilLook -= count;
        Heed(writer->Write(samples.data(), count / kChannels));
    }
}

void Recording::KeepReadable() {
    if (!failed)
        Heed(writer->KeepReadable());
}

/// Ends the recording if a call of the writer failed.
void Recording::Heed(const Result<void>& done) {
    if (done)
        return;
    failed = true;
    std::string reason = done.Fault().text;
    // The library's sentences end with a full stop.
    if (reason.ends_with('.'))
        reason.pop_back();
    EndBecause({reason + "; the recording ends there"});
}

double Recording::Seconds() const {
    return rate == 0 ? 0 : double(keptFrames) / rate;
}

/// Completes the file as far as possible; returns the number of frames in it.
std::uint64_t Recording::Complete() {
    WriteWaiting();
    const std::uint64_t frames = writer->Frames();
    // Conclude has its own words for a recording without a frame.
    if (!failed && frames > 0)
        Heed(writer->Finish());
    return failed ? writer->Salvage() : frames;
}

void Recording::Close() {
    // The disk may be slow, and the person who has asked the program to end impatient.
    const Interrupt::Completion completing;
    if (!outcome)
        outcome = Conclude();
}

Result<void> Recording::Finish() {
    Close();
    return *outcome;
}

Result<void> Recording::Conclude() {
    takes = false;
    quitting = true;
    if (thread.joinable())
        thread.join();
    const std::uint64_t frames = writer ? Complete() : 0;
    std::string fault = ending ? ending->text : "";
    if (keptFrames > frames)
        fault += ", and the last " + InSeconds(keptFrames - frames, rate) + " are missing";
    if (frames == 0) {
        if (fault.empty())
            return Error{path.string() + ": nothing was recorded" +
                         (writer ? "" : ", as no audio device played")};
        return Error{fault + "; there is no file"};
    }
    if (lostFrames > 0)
        fault += (fault.empty() ? path.string() + ": " : "; ") + std::to_string(lostFrames) +
                 " frames are missing, as the disk was too slow";
    Result<std::filesystem::path> place = path;
    if (!fault.empty() || leavesOthers)
        place = file.CommitBeside();
    else if (const Result<void> committed = file.Commit(); !committed)
        place = committed.Fault();
    if (place && fault.empty()) {
        path = *place;
        return {};
    }
    if (!place)
        fault += (fault.empty() ? "" : "; ") + place.Fault().text;
    return Error{fault + "; what was recorded is in " + (place ? *place : file.Keep()).string()};
}

std::string Recording::Remark() const {
    if (format == SoundFileFormat::wav || !writer || writer->Loud() == 0)
        return "";
    return path.string() + ": what goes beyond full volume is clipped (" +
           std::to_string(writer->Loud()) + " samples); a .wav file avoids it";
}

} // namespace kits
