#include "kits/media/Recording.h"

#include <array>
#include <chrono>
#include <cmath>
#include <string>

namespace kits {

namespace {

constexpr std::size_t kRoom = 1U << 20;

/// Between two looks of the thread that writes.
constexpr std::chrono::milliseconds kPause{20};

} // namespace

Result<std::unique_ptr<Recording>> Recording::Begin(const std::filesystem::path& path) {
    const Result<SoundFileFormat> format = SoundFileFormatOf(path);
    if (!format)
        return format.Fault();
    Result<FileReplacement> file = FileReplacement::Create(path);
    if (!file)
        return file.Fault();
    return std::unique_ptr<Recording>(new Recording(path, *format, *std::move(file)));
}

Recording::Recording(std::filesystem::path path, SoundFileFormat format, FileReplacement file)
    : path(std::move(path)), format(format), file(std::move(file)), waiting(kRoom) {}

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
        ended =
            Error{path.string() + ": the recording ends where the device changed its rate from " +
                  std::to_string(rate) + " to " + std::to_string(rounded) + " Hz"};
        return;
    }
    Result<SoundFileWriter> opened = SoundFileWriter::Create(
        file.Descriptor(), format, path, rounded, SoundFileWriter::kUnknownLength);
    if (!opened) {
        ended = opened.Fault();
        return;
    }
    rate = rounded;
    writer.emplace(*std::move(opened));
    thread = std::thread([this] { Run(); });
    takes = true;
}

void Recording::Put(std::span<const float> samples) noexcept {
    if (takes && !waiting.Write(samples.data(), samples.size()))
        lost += samples.size();
}

void Recording::Run() {
    while (!quitting) {
        WriteWaiting();
        std::this_thread::sleep_for(kPause);
    }
}

void Recording::WriteWaiting() {
    std::array<float, 4096> samples;
    while (const std::size_t count = waiting.Read(samples.data(), samples.size())) {
        if (fault)
            continue;
        if (const Result<void> written = writer->Write(samples.data(), count); !written)
            fault = written.Fault();
    }
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
    if (lost > 0)
        return Error{path.string() + ": " + std::to_string(lost) +
                     " samples are missing, as the disk was too slow"};
    return ended ? Result<void>(*ended) : Result<void>();
}

} // namespace kits
