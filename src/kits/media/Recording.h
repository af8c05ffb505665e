// SPDX-License-Identifier: GPL-3.0-or-later
// A recording writes what a device plays into a sound file.
#pragma once

#include "kits/media/SoundFileWriter.h"
#include "kits/storage/FileReplacement.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Ring.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kits {

/// A sound file that grows while a device plays: two channels, every sample as the device gets it,
/// from the first device on. The file is written under a temporary name in the same folder and
/// takes its place when the recording is finished. Until then it is made readable once a second, as
/// far as it goes, in case the program is killed. Window thread, unless noted.
class Recording {
  public:
    /// The most frames that wait for the disk before any are left out: about 20 s.
    static constexpr std::size_t kPatience = 1U << 20;
    /// Bytes of the disk to leave free. The recording ends before, with a complete file. If others
    /// fill the disk faster, it ends with what could be written.
    static constexpr std::uint64_t kReserve = 16U << 20;

    /// The file's name determines the format. The error names the path and the fault.
    static Result<std::unique_ptr<Recording>> Begin(const std::filesystem::path& path,
                                                    std::size_t patience = kPatience,
                                                    std::uint64_t reserve = kReserve);
    /// Unless the recording was closed, as where an exception ends the program, what was recorded
    /// is kept as an incomplete file, and standard error gets its path.
    ~Recording();
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    /// Leaves a file that has the recording's name by its end, and gives it a free name beside that
    /// file. Before Close.
    void LeaveOthers() { leavesOthers = true; }

    /// Announces that a device of this rate, in frames per second, is about to play. The first call
    /// begins the file; a later one with another rate ends the recording, which Finish reports.
    void TakeRate(double rate);

    /// Takes the frames that the device plays next. It never waits; frames that the disk is too
    /// slow for are left out and counted. The device's thread.
    VEXA_REALTIME void Put(const float* left, const float* right, std::size_t frames) noexcept;

    /// Returns true once nothing more is kept, whoever puts it. Any thread.
    bool HasEnded() const { return over; }
    /// Returns why nothing more is kept; nothing before HasEnded. Any thread but the device's.
    std::optional<Error> Ending() const;

    /// Returns the length of what was put so far and is kept, in seconds.
    double Seconds() const;

    /// Completes the file. No thread may call Put any more.
    void Close();
    /// Closes the recording if it is still open. The error says why there is no file, or what is
    /// missing in it. An incomplete file replaces none: if there is one of its name, it gets a name
    /// of its own, which the error tells.
    Result<void> Finish();
    /// Returns the path of the file, which LeaveOthers may change with the end.
    const std::filesystem::path& Path() const { return path; }

    /// Returns what the listener of a finished recording should know; empty if there is nothing.
    std::string Remark() const;

  private:
    Recording(std::filesystem::path path, SoundFileFormat format, FileReplacement file,
              std::size_t patience, std::uint64_t reserve);
    bool IsDiskFull() const;
    void EndBecause(Error reason);
    void Run();
    void WriteWaiting();
    void KeepReadable();
    void Heed(const Result<void>& done);
    std::uint64_t Complete();
    Result<void> Conclude();

    std::filesystem::path path;
    SoundFileFormat format;
    FileReplacement file;
    const std::uint64_t reserve;
    bool leavesOthers = false;
    int rate = 0;
    /// The reason why nothing more is kept, whichever came first, and its guard, which no real-time
    /// thread takes.
    std::optional<Error> ending;
    mutable std::mutex endingGuard;
    Ring<float> waiting;
    std::atomic<bool> takes{false};
    std::atomic<bool> quitting{false};
    std::atomic<bool> over{false};
    std::atomic<std::size_t> keptFrames{0};
    std::atomic<std::size_t> lostFrames{0};
    /// The frames of a period, left and right interleaved. Belongs to the device's thread.
    std::vector<float> interleaved;
    std::thread thread;

    // The writer belongs to the recording's thread and, after that thread's end, to Finish.
    std::optional<SoundFileWriter> writer;
    /// True once the writer has failed, so that only Salvage may be called.
    bool failed = false;
    /// True once the disk was nearly full.
    bool full = false;
    /// The number of samples until the free space is checked again.
    std::size_t untilLook = 0;
    /// How the end of the file went, once it is closed.
    std::optional<Result<void>> outcome;
};

} // namespace kits
