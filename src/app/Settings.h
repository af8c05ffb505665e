// SPDX-License-Identifier: GPL-3.0-or-later
// The settings are what the program remembers from one start to the next.
#pragma once

#include "app/SettingKeys.h"

#include <chrono>
#include <filesystem>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace vexa {

/// The settings of SettingKeys.h, in a file of the form of SettingLines.h; a list has one line for
/// each item. Losing the file loses nothing else. Lines that begin with "#" stay in it. Instances
/// of the program share the file: each reads it at its start and writes only the settings that were
/// set in it, so the last instance that sets a setting wins. Items that another instance has added
/// to a list since stay in it, behind those that are written, and those that it has removed stay
/// away, except one that is put first.
///
/// Faults are reported on standard error, with file and line: lines that are no settings or whose
/// name is unknown when the file is read, an invalid value when it is used, each once. Such lines
/// are ignored and stay in the file, an invalid value until the setting is set. A file that cannot
/// be read counts as empty, and the next save keeps it beside the new one, as "settings.broken".
/// Window thread.
class Settings {
  public:
    using Clock = std::chrono::steady_clock;
    /// Changes are saved when nothing has been set for kRest, so that sizing the window is saved
    /// once, but at most kLatest after the first change.
    static constexpr std::chrono::seconds kRest{1};
    static constexpr std::chrono::seconds kLatest{5};

    /// Makes settings without a file: nothing is set at first, and changes are lost at the end.
    Settings() = default;
    /// Reads the settings of the file, which need not exist.
    explicit Settings(std::filesystem::path file);
    /// Saves the changes that are not saved yet.
    ~Settings();
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    template<class T>
    T Get(const SettingKey<T>& key) const;
    template<class T>
    void Set(const SettingKey<T>& key, const T& value);

    /// Reports that the value in the file, which Get has returned, is none that the setting can
    /// have. `allowed` says which it can.
    template<class T>
    void TellWrong(const SettingKey<T>& key, const std::string& allowed) const {
        if (const std::string* const text = SingleText(key.name))
            TellWrong(key.name, *text, allowed);
    }

    /// Puts the item at the head of the list, removes its other occurrences, and keeps `most` items
    /// at most.
    void PutFirst(const SettingKey<TextList>& key, const std::string& item, std::size_t most);

    /// Begins to save in a thread, if changes are due. To be called about ten times a second.
    void Pulse(Clock::time_point now = Clock::now());

  private:
    /// The texts of each setting by its name: one, or any number for a list.
    using Texts = std::map<std::string, TextList, std::less<>>;

    /// The change of a setting. `next` are its texts from now on. Of a list, `before` are the texts
    /// when it was last read or saved, without those that were put first: only these may be removed
    /// from the file, and those that the file has lost since are not written again. Of other
    /// settings all lines in the file are replaced.
    struct Change {
        TextList next;
        std::optional<TextList> before;
    };
    using Changes = std::map<std::string, Change, std::less<>>;

    static std::string Save(const std::filesystem::path& file, const Changes& changes);
    const std::string* SingleText(const char* name) const;
    void SetTexts(const char* name, TextList texts, bool isList);
    void TellWrong(const char* name, const std::string& text, const std::string& allowed) const;
    void TakeSaved();

    const std::filesystem::path file;
    Texts texts;
    /// The names whose invalid values have been reported, and the lines of the names in the file.
    mutable std::set<std::string, std::less<>> reported;
    std::map<std::string, int, std::less<>> lines;

    /// The changes that are not saved yet, and those that are being saved.
    Changes changes, leaving;
    std::optional<Clock::time_point> firstChange, lastChange;
    std::future<std::string> saving;
};

template<>
TextList Settings::Get(const SettingKey<TextList>& key) const;
template<>
void Settings::Set(const SettingKey<TextList>& key, const TextList& value);

/// Reads the file of the program's settings. If the user has no folder for it, that is reported and
/// the settings have no file.
std::shared_ptr<Settings> ReadSettings();

} // namespace vexa
