// SPDX-License-Identifier: GPL-3.0-or-later
// A recording keeps in a sound file what a device plays.
#pragma once

#include "kits/media/SoundFileWriter.h"
#include "kits/storage/FileReplacement.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Ring.h"

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

namespace kits {

/// A sound file that grows while a device plays: two channels, every sample as the device gets it,
/// from the first device on. The file takes its place when the recording is finished; until then it
/// lies beside it. Window thread, unless noted.
class Recording {
  public:
    /// Frames that wait for the disk before any are left out: some 20 s.
    static constexpr std::size_t kPatience = 1U << 20;
    /// Bytes of the disk that it leaves free. It ends before, as a whole file.
    static constexpr std::uint64_t kReserve = 16U << 20;

    /// The format is what the name asks for. The error names the path and the fault.
    static Result<std::unique_ptr<Recording>> Begin(const std::filesystem::path& path,
                                                    std::size_t patience = kPatience,
                                                    std::uint64_t reserve = kReserve);
    /// Ends the recording. Where Finish was not called no file is left.
    ~Recording();
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    /// Tells that a device of this rate, in frames per second, is about to play. The first one
    /// begins the file; one of another rate ends what is kept, which Finish tells.
    void TakeRate(double rate);

    /// Takes what the device plays next. It never waits; what the disk is too slow for is left out
    /// and counted. The device's thread.
    VEXA_REALTIME void Put(const float* left, const float* right, std::size_t frames) noexcept;

    /// True from when on nothing more is kept, whoever puts it; Finish tells why. Any thread.
    bool HasEnded() const { return over; }

    /// Completes the file, when nobody puts any more. The error says why there is none, or what is
    /// missing in it.
    Result<void> Finish();

  private:
    Recording(std::filesystem::path path, SoundFileFormat format, FileReplacement file,
              std::size_t patience, std::uint64_t reserve);
    bool IsDiskFull() const;
    void Run();
    void WriteWaiting();

    std::filesystem::path path;
    SoundFileFormat format;
    FileReplacement file;
    const std::uint64_t reserve;
    int rate = 0;
    /// The reason why what the device plays is kept no longer.
    std::optional<Error> ended;
    Ring<float> waiting;
    std::atomic<bool> takes{false};
    std::atomic<bool> quitting{false};
    std::atomic<bool> over{false};
    std::atomic<std::size_t> lostFrames{0};
    /// The frames of a period by turns of left and right; it belongs to the device's thread.
    std::vector<float> interleaved;
    std::thread thread;

    // The writer belongs to the recording's thread, and after its end to Finish.
    std::optional<SoundFileWriter> writer;
    /// Why the file is of no use, or ends before what was put does.
    std::optional<Error> fault, full;
    /// Samples until the disk is looked at again.
    std::size_t untilLook = 0;
};

} // namespace kits
