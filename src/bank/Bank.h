// SPDX-License-Identifier: GPL-3.0-or-later
// A bank has all sounds that there are, a person's own and those that came with the program.
#pragma once

#include "bank/SoundSearch.h"
#include "kits/storage/FolderWatch.h"
#include "kits/storage/ProgramFolder.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <utility>
#include <vector>

namespace vexa {

/// What a bank knows at one moment; it never changes.
struct BankView {
    SoundList sounds;
    /// True when all have been read.
    bool listed = false;
    /// True when all have a picture, or will have none.
    bool pictured = false;
};

/// Reads sounds and draws their pictures in a thread of its own, and follows what becomes of the
/// files: what has not changed is not read again. Nobody waits for it.
class Bank {
  public:
    /// Pictures have `pictureSize` pixels a side. `changed` is called in the bank's thread when
    /// View has something new, some twenty times a second at most; it may be empty. Throws
    /// std::system_error where there is no thread to be had.
    Bank(kits::ProgramFolders folders, int pictureSize, std::function<void()> changed);
    /// Waits for what the thread is about: reading one sound, or drawing one picture.
    ~Bank();

    /// Returns the newest view, never null. Any thread.
    std::shared_ptr<const BankView> View() const;
    /// Has the pictures of these sounds drawn first. Any thread.
    void Hurry(std::vector<std::filesystem::path> paths);

  private:
    /// A file with another stamp is another file: its place on the disk, its time (ns) and its
    /// length.
    struct Stamp {
        unsigned long inode = 0;
        long long time = 0;
        long long size = -1;
        bool operator==(const Stamp&) const = default;
    };
    static Stamp StampOf(const std::filesystem::path& path);

    /// A sound, and its function where that names a sample or a picture file, with what tells of
    /// that file; `sound` until it is drawn.
    struct Known {
        std::shared_ptr<const SoundEntry> entry;
        Stamp stamp;
        std::optional<Function> filed;
        Stamp fileStamp;
        std::optional<Sound> sound;
    };

    void Work(const std::stop_token& stop);
    void Scan(const std::stop_token& stop);
    Known Read(const std::filesystem::path& path) const;
    Stamp StampOf(const std::optional<Function>& filed) const;
    bool IsSame(const Known& known, const std::filesystem::path& path) const;
    void DrawPictures(const std::stop_token& stop);
    Known* NextToDraw();
    void Publish(bool listed);

    const kits::ProgramFolders folders;
    const int pictureSize;
    const std::function<void()> changed;
    kits::FolderWatch watch;
    /// This belongs to the bank's own thread.
    std::vector<Known> known;

    mutable std::mutex mutex;
    // The mutex guards this.
    std::shared_ptr<const BankView> view = std::make_shared<BankView>();
    std::vector<std::filesystem::path> hurried;
    /// The last member: it ends before the others go.
    std::jthread thread;
};

} // namespace vexa
