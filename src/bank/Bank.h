// SPDX-License-Identifier: GPL-3.0-or-later
// A bank has all sounds: the user's own and those that come with the program.
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

/// A snapshot of a bank; immutable.
struct BankView {
    /// In the order of their names, regardless of case and accents.
    SoundList sounds;
    /// True once all sounds have been read.
    bool listed = false;
    /// True once every sound has a picture or will not get one.
    bool pictured = false;
};

/// Reads sounds and draws their pictures in a thread of its own, and follows changes of the files;
/// unchanged files are not read again. No other thread waits for it.
class Bank {
  public:
    /// Pictures have `pictureSize` pixels a side. `changed` is called in the bank's thread when
    /// View has changed, at most about twenty times a second; it may be empty. Throws
    /// std::system_error if no thread can be started.
    Bank(kits::ProgramFolders folders, int pictureSize, std::function<void()> changed);
    /// Waits for the thread's present work: reading one sound or drawing one picture.
    ~Bank();

    /// Returns the newest view, never null. Any thread.
    std::shared_ptr<const BankView> View() const;
    /// Makes the bank draw the pictures of these sounds first. Any thread.
    void Hurry(std::vector<std::filesystem::path> paths);

  private:
    /// Identifies a version of a file: its inode, change time (ns) and length. A file with another
    /// stamp is read again. The change time is the system's own; programs set the modification time
    /// back, and it does not tell of new rights to read.
    struct Stamp {
        unsigned long inode = 0;
        long long time = 0;
        long long size = -1;
        bool operator==(const Stamp&) const = default;
    };
    static Stamp StampOf(const std::filesystem::path& path);

    /// A sound with its file's stamp. `filed` is its function if that names a sample or picture
    /// file, and `fileStamp` is that file's stamp. `sound` is kept until its picture is drawn.
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
    /// Only the bank's own thread uses this.
    std::vector<Known> known;

    mutable std::mutex mutex;
    // The mutex guards these two.
    std::shared_ptr<const BankView> view = std::make_shared<BankView>();
    std::vector<std::filesystem::path> hurried;
    /// The last member, so that the thread ends before the other members are destroyed.
    std::jthread thread;
};

} // namespace vexa
