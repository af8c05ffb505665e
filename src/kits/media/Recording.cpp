// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/Recording.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <string>

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
    quitting = true;
    if (thread.joinable())
        thread.join();
}

void Recording::TakeRate(double next) {
    const int rounded = static_cast<int>(std::lround(next));
    if (ended)
        return;
    if (rate == rounded)
        return;
    takes = false;
    if (rate != 0) {
        over = true;
        ended =
            Error{path.string() + ": the recording ends where the device changed its rate from " +
                  std::to_string(rate) + " to " + std::to_string(rounded) + " Hz"};
        return;
    }
    Result<SoundFileWriter> opened = SoundFileWriter::Create(
        file.Descriptor(), format, path, rounded, SoundFileWriter::kUnknownLength, kChannels);
    if (!opened) {
        over = true;
        ended = opened.Fault();
        return;
    }
    rate = rounded;
    writer.emplace(*std::move(opened));
    thread = std::thread([this] { Run(); });
    takes = true;
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

void Recording::Run() {
    while (!quitting) {
        WriteWaiting();
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
        if (fault || full)
            continue;
        if (untilLook < count) {
            untilLook = kSamplesPerLook;
            if (IsDiskFull())
                full = Error{path.string() + ": the recording ends where the disk was nearly full"};
        }
        untilLook -= count;
        if (!full) {
            const Result<void> written = writer->Write(samples.data(), count / kChannels);
            if (!written)
                fault = written.Fault();
        }
        // Never set to false, as the window thread may set it to true at the same moment.
        if (fault || full)
            over = true;
    }
}

double Recording::Seconds() const {
    return rate == 0 ? 0 : double(keptFrames) / rate;
}

Result<void> Recording::Finish() {
    takes = false;
    quitting = true;
    if (thread.joinable())
        thread.join();
    if (!writer) {
        return ended ? *ended
                     : Error{path.string() + ": nothing was recorded, as no audio device played"};
    }
    WriteWaiting();
    if (fault)
        return *fault;
    if (Result<void> finished = writer->Finish(); !finished)
        return finished;
    if (Result<void> committed = file.Commit(); !committed)
        return committed;
    if (lostFrames > 0)
        return Error{path.string() + ": " + std::to_string(lostFrames) +
                     " frames are missing, as the disk was too slow"};
    const std::optional<Error>& reason = full ? full : ended;
    return reason ? Result<void>(*reason) : Result<void>();
}

} // namespace kits
