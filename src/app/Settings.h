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

/// The settings of SettingKeys.h, in a file as SettingLines.h has it, where a list has a line for
/// each item. Losing the file loses nothing else. Lines whose name is not known here, and those
/// that begin with "#", stay in it. Instances of the program share the file: each reads it at its
/// start and writes what has been set here, so that of each setting the last who set it wins. But
/// what another has put into a list since stays in it, behind what is written.
///
/// Faults are told on standard error, with file and line. A line that says nothing is read over,
/// and so is a value that is none; a file that cannot be read counts as empty. When something is
/// saved, a file with such lines or that cannot be read is kept beside the new one, as
/// "settings.broken". Window thread.
class Settings {
  public:
    using Clock = std::chrono::steady_clock;
    /// What is set is saved when nothing has been set for so long, as when a window is sized, but
    /// not later than the other time after the first.
    static constexpr std::chrono::seconds kRest{1};
    static constexpr std::chrono::seconds kLatest{5};

    /// Nobody's: nothing is set at first, and what is set is forgotten at the end.
    Settings() = default;
    /// Reads the settings of the file, which need not be there.
    explicit Settings(std::filesystem::path file);
    /// Saves what has been set.
    ~Settings();
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    template<class T>
    T Get(const SettingKey<T>& key) const;
    template<class T>
    void Set(const SettingKey<T>& key, const T& value);

    /// Puts the item at the head of the list, which has it once and `most` items at most.
    void PutFirst(const SettingKey<TextList>& key, const std::string& item, std::size_t most);

    /// Begins to save, in a thread, where it is time to; to be called some ten times a second.
    void Pulse(Clock::time_point now = Clock::now());

  private:
    /// The texts behind the name of each setting, one but for lists.
    using Texts = std::map<std::string, TextList, std::less<>>;

    /// The texts of a setting from now on. What its list was when it was read, or saved last, is
    /// what may be taken out of the file again; of other settings all that stands there is.
    struct Change {
        TextList next;
        std::optional<TextList> before;
    };
    using Changes = std::map<std::string, Change, std::less<>>;

    static std::string Save(const std::filesystem::path& file, const Changes& changes);
    const std::string* SingleText(const char* name) const;
    void SetTexts(const char* name, TextList texts, bool isList);
    void TellWrong(const char* name, const std::string& text) const;
    void TakeSaved();

    const std::filesystem::path file;
    Texts texts;
    /// The names whose values were found to be none, and where in the file names stand.
    mutable std::set<std::string, std::less<>> told;
    std::map<std::string, int, std::less<>> lines;

    /// Set and not saved, and what is being saved.
    Changes changes, leaving;
    std::optional<Clock::time_point> firstChange, lastChange;
    std::future<std::string> saving;
};

template<>
TextList Settings::Get(const SettingKey<TextList>& key) const;
template<>
void Settings::Set(const SettingKey<TextList>& key, const TextList& value);

/// Reads the file of the program's settings. Where the user has no folder for it that is told, and
/// the settings are kept nowhere.
std::shared_ptr<Settings> ReadSettings();

} // namespace vexa
