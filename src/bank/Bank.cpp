// SPDX-License-Identifier: GPL-3.0-or-later
#include "bank/Bank.h"

#include "bank/Thumbnail.h"
#include "instrument/Instrument.h"
#include "instrument/Programs.h"

#include <algorithm>
#include <chrono>
#include <unordered_map>

#include <sys/stat.h>

namespace vexa {

namespace {

using Clock = std::chrono::steady_clock;

/// The shortest time between two views while sounds are read and drawn, so that `changed` is not
/// called for each sound.
constexpr auto kPart = std::chrono::milliseconds(50);
constexpr const char* kSounds = "sounds";
/// The folders of the files that documents name.
constexpr const char* kSamples = "samples";
constexpr const char* kPictures = "pictures";
constexpr auto kForever = std::chrono::hours(24);

} // namespace

Bank::Bank(kits::ProgramFolders programFolders, int pictureSize, std::function<void()> changed)
    : folders(std::move(programFolders)),
      pictureSize(pictureSize),
      changed(std::move(changed)),
      watch({folders.Own(kSounds), folders.Shipped(kSounds), folders.Own(kSamples),
             folders.Shipped(kSamples), folders.Own(kPictures), folders.Shipped(kPictures)}) {
    thread = std::jthread([this](const std::stop_token& stop) { Work(stop); });
}

Bank::~Bank() {
    thread.request_stop();
    watch.Wake();
}

std::shared_ptr<const BankView> Bank::View() const {
    const std::lock_guard lock(mutex);
    return view;
}

void Bank::Hurry(std::vector<std::filesystem::path> paths) {
    const std::lock_guard lock(mutex);
    hurried = std::move(paths);
}

Bank::Stamp Bank::StampOf(const std::filesystem::path& path) {
    struct stat status {};
    if (path.empty() || ::stat(path.c_str(), &status) != 0)
        return {};
    return {status.st_ino, status.st_ctim.tv_sec * 1'000'000'000LL + status.st_ctim.tv_nsec,
            status.st_size};
}

void Bank::Work(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        if (!watch.Wait(kForever))
            continue;
        Scan(stop);
        DrawPictures(stop);
    }
}

/// Lists the sounds again, and reads those that are new or have changed. Publishes the list if it
/// differs from the last one.
void Bank::Scan(const std::stop_token& stop) {
    std::unordered_map<std::string, Known> before;
    for (Known& each : known)
        before.emplace(each.entry->path.string(), std::move(each));
    known.clear();
    std::size_t kept = 0;
    auto published = Clock::now();
    for (const std::filesystem::path& path : Programs(folders)) {
        if (stop.stop_requested())
            return;
        const auto found = before.find(path.string());
        if (found != before.end() && IsSame(found->second, path)) {
            known.push_back(std::move(found->second));
            kept++;
        } else {
            known.push_back(Read(path));
        }
        // Only the first scan publishes parts; later the last complete list is shown meanwhile.
        if (before.empty() && Clock::now() - published > kPart) {
            Publish(false);
            published = Clock::now();
        }
    }
    if (!View()->listed || kept < known.size() || kept < before.size())
        Publish(true);
}

Bank::Stamp Bank::StampOf(const std::optional<Function>& filed) const {
    return filed ? StampOf(FileOf(*filed, folders).value_or("")) : Stamp();
}

bool Bank::IsSame(const Known& each, const std::filesystem::path& path) const {
    return each.stamp == StampOf(path) && each.fileStamp == StampOf(each.filed);
}

Bank::Known Bank::Read(const std::filesystem::path& path) const {
    Known read;
    read.stamp = StampOf(path);
    ReadEntry entry = ReadSoundEntry(path, folders.IsOwn(kSounds, path));
    read.entry = std::make_shared<const SoundEntry>(std::move(entry.entry));
    read.sound = std::move(entry.sound);
    if (read.sound && read.sound->function.kind != FunctionKind::Expression) {
        read.filed = read.sound->function;
        read.fileStamp = StampOf(read.filed);
    }
    return read;
}

/// Draws the missing pictures. Scans the folders again in between if they have changed.
void Bank::DrawPictures(const std::stop_token& stop) {
    auto published = Clock::now();
    bool drawn = false;
    while (Known* next = NextToDraw()) {
        if (stop.stop_requested())
            return;
        Thumbnail thumbnail = DrawThumbnail(*next->sound, folders, pictureSize);
        next->sound.reset();
        auto entry = std::make_shared<SoundEntry>(*next->entry);
        entry->picture = std::move(thumbnail.picture);
        entry->fault = OneLine(thumbnail.fault, entry->path);
        next->entry = std::move(entry);
        drawn = true;
        if (Clock::now() - published <= kPart)
            continue;
        Publish(true);
        published = Clock::now();
        if (watch.Wait(std::chrono::milliseconds(0)))
            Scan(stop);
    }
    if (drawn)
        Publish(true);
}

Bank::Known* Bank::NextToDraw() {
    const auto left = [](const Known& each) { return each.sound.has_value(); };
    {
        const std::lock_guard lock(mutex);
        while (!hurried.empty()) {
            const auto found = std::find_if(known.begin(), known.end(), [this](const Known& each) {
                return each.entry->path == hurried.front();
            });
            if (found != known.end() && left(*found))
                return &*found;
            hurried.erase(hurried.begin());
        }
    }
    const auto found = std::find_if(known.begin(), known.end(), left);
    return found == known.end() ? nullptr : &*found;
}

void Bank::Publish(bool listed) {
    auto next = std::make_shared<BankView>();
    next->listed = listed;
    next->pictured = listed;
    for (const Known& each : known) {
        next->sounds.push_back(each.entry);
        next->pictured = next->pictured && !each.sound;
    }
    std::ranges::stable_sort(next->sounds, {}, [](const auto& entry) -> const std::string& {
        return entry->alphabetical;
    });
    std::shared_ptr<const BankView> last = std::move(next);
    {
        const std::lock_guard lock(mutex);
        std::swap(view, last);
    }
    // The previous view is destroyed without the lock.
    last.reset();
    if (changed)
        changed();
}

} // namespace vexa
