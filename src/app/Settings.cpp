// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Settings.h"

#include "app/SettingLines.h"
#include "kits/storage/FileReplacement.h"
#include "kits/storage/UserFolders.h"
#include "kits/support/Descriptor.h"
#include "kits/support/NumberText.h"
#include "kits/support/Quoted.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>

namespace vexa {

namespace fs = std::filesystem;

namespace {

/// The most lines that are reported one by one.
constexpr std::size_t kMostTold = 5;

void Tell(const std::string& text) {
    std::fprintf(stderr, "vexa: %s\n", text.c_str());
}

// Conversions between values and texts; FromText returns false for an invalid text.

bool FromText(const std::string& text, std::string& value) {
    value = text;
    return true;
}

bool FromText(const std::string& text, bool& value) {
    value = text == "true";
    return value || text == "false";
}

bool FromText(const std::string& text, int& value) {
    const char* const end = text.data() + text.size();
    const auto [read, fault] = std::from_chars(text.data(), end, value);
    return fault == std::errc() && read == end;
}

bool FromText(const std::string& text, double& value) {
    std::size_t length = 0;
    value = kits::NumberOf(text, &length);
    return length == text.size() && length > 0;
}

// What the values of such a setting can be.

std::string AllowedFor(const std::string&) {
    return "";
}

std::string AllowedFor(bool) {
    return "true or false";
}

std::string AllowedFor(int) {
    return "a whole number";
}

std::string AllowedFor(double) {
    return "a number";
}

std::string ToText(const std::string& value) {
    return value;
}

std::string ToText(bool value) {
    return value ? "true" : "false";
}

std::string ToText(int value) {
    return std::to_string(value);
}

bool IsKnown(const std::string& name) {
    return std::ranges::find(kSettingNames, name) != std::end(kSettingNames);
}

/// Returns the shortest text that reads back as the same number.
std::string ToText(double value) {
    char text[32];
    return {text, std::to_chars(text, std::end(text), value).ptr};
}

} // namespace

Settings::Settings(fs::path path) : file(std::move(path)) {
    SettingFile content = ReadSettingFile(file);
    std::vector<kits::Error>& faults = content.faults;
    for (std::size_t i = 0; i < content.lines.size(); i++) {
        const SettingLine& line = content.lines[i];
        if (line.name.empty())
            continue;
        texts[line.name].push_back(line.value);
        lines[line.name] = static_cast<int>(i) + 1;
        if (!IsKnown(line.name))
            faults.push_back(
                kits::At({file.string(), i + 1}, {"there is no setting " + line.name}));
    }
    std::ranges::stable_sort(faults, {}, [](const kits::Error& fault) { return fault.place.line; });
    const std::size_t told = std::min(faults.size(), kMostTold);
    for (std::size_t i = 0; i < told; i++)
        Tell("warning: " + faults[i].text);
    if (const std::size_t others = faults.size() - told; others > 0)
        Tell("warning: " + file.string() + ": " + std::to_string(others) +
             (others == 1 ? " other line is" : " other lines are") + " wrong too");
}

Settings::~Settings() {
    if (saving.valid())
        TakeSaved();
    if (file.empty() || changes.empty())
        return;
    if (const std::string fault = Save(file, changes); !fault.empty())
        Tell(fault);
}

/// Returns null if the setting is not set. Of several lines the last one counts.
const std::string* Settings::SingleText(const char* name) const {
    const auto found = texts.find(std::string_view(name));
    return found == texts.end() || found->second.empty() ? nullptr : &found->second.back();
}

void Settings::TellWrong(const char* name, const std::string& text,
                         const std::string& allowed) const {
    const auto line = lines.find(std::string_view(name));
    if (line != lines.end() && reported.emplace(name).second)
        Tell("warning: " + file.string() + ':' + std::to_string(line->second) + ": " + name +
             " cannot be " + kits::Quoted(text) + (allowed.empty() ? "" : "; it is " + allowed));
}

template<class T>
T Settings::Get(const SettingKey<T>& key) const {
    const std::string* const text = SingleText(key.name);
    T value{};
    if (text && FromText(*text, value))
        return value;
    if (text)
        TellWrong(key.name, *text, AllowedFor(key.initial));
    return key.initial;
}

template<>
TextList Settings::Get(const SettingKey<TextList>& key) const {
    const auto found = texts.find(std::string_view(key.name));
    return found == texts.end() ? TextList() : found->second;
}

template<class T>
void Settings::Set(const SettingKey<T>& key, const T& value) {
    const std::string* const text = SingleText(key.name);
    const std::string next = ToText(value);
    if (text ? *text != next : value != key.initial)
        SetTexts(key.name, {next}, false);
}

template<>
void Settings::Set(const SettingKey<TextList>& key, const TextList& value) {
    if (value != Get(key))
        SetTexts(key.name, value, true);
}

template bool Settings::Get(const SettingKey<bool>&) const;
template int Settings::Get(const SettingKey<int>&) const;
template double Settings::Get(const SettingKey<double>&) const;
template std::string Settings::Get(const SettingKey<std::string>&) const;
template void Settings::Set(const SettingKey<bool>&, const bool&);
template void Settings::Set(const SettingKey<int>&, const int&);
template void Settings::Set(const SettingKey<double>&, const double&);
template void Settings::Set(const SettingKey<std::string>&, const std::string&);

void Settings::SetTexts(const char* name, TextList next, bool isList) {
    TextList& present = texts[name];
    Change& change = changes[name];
    if (isList && !change.before)
        change.before = present;
    change.next = next;
    present = std::move(next);
    lastChange = Clock::now();
    if (!firstChange)
        firstChange = lastChange;
}

void Settings::PutFirst(const SettingKey<TextList>& key, const std::string& item,
                        std::size_t most) {
    TextList list = Get(key);
    std::erase(list, item);
    list.insert(list.begin(), item);
    list.resize(std::min(list.size(), most));
    Set(key, list);
    if (const auto change = changes.find(std::string_view(key.name)); change != changes.end())
        std::erase(*change->second.before, item);
}

void Settings::Pulse(Clock::time_point now) {
    if (saving.valid()) {
        if (saving.wait_for(Clock::duration::zero()) != std::future_status::timeout)
            TakeSaved();
        return;
    }
    const bool isTime =
        firstChange && (now - *lastChange >= kRest || now - *firstChange >= kLatest);
    if (file.empty() || !isTime)
        return;
    firstChange.reset();
    leaving = std::exchange(changes, {});
    // Without a free thread the saving is deferred and runs at the next pulse.
    saving = std::async(std::launch::async | std::launch::deferred, Save, file, leaving);
}

/// Reports a failed save and keeps its changes, which are saved again with the next change.
void Settings::TakeSaved() {
    if (const std::string fault = saving.get(); !fault.empty()) {
        Tell(fault);
        for (const auto& [name, change] : leaving)
            changes.try_emplace(name, change).first->second.before = change.before;
    }
    leaving.clear();
}

/// Merges the changes into the file as it is now, with the settings that other instances have
/// written. Returns the reason for a failure; else an empty text.
std::string Settings::Save(const fs::path& file, const Changes& changes) {
    const fs::path folder = file.parent_path();
    if (const kits::Result<void> made = kits::MakeUserFolder(folder); !made)
        return made.Fault().text;
    // Other instances wait until this descriptor is closed.
    const kits::Descriptor lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ::flock(lock.Number(), LOCK_EX);

    const SettingFile before = ReadSettingFile(file);
    const bool isRead = before.faults.empty() || !before.lines.empty();
    // A file that is lost has not removed anything.
    std::error_code ignored, error;
    const bool isThere = isRead && fs::exists(file, ignored);
    Changes left = changes;
    std::string bytes;
    const auto has = [](const TextList& list, const std::string& text) {
        return std::ranges::find(list, text) != list.end();
    };
    const auto write = [&](const std::string& name, const Change& change) {
        TextList present;
        for (const SettingLine& line : before.lines) {
            if (line.name == name)
                present.push_back(line.value);
        }
        for (const std::string& text : change.next) {
            const bool removedByOthers =
                isThere && change.before && has(*change.before, text) && !has(present, text);
            if (!removedByOthers)
                bytes += SettingText(name, text);
        }
        for (const SettingLine& line : before.lines) {
            const bool ofOthers = line.name == name && change.before &&
                                  !has(*change.before, line.value) && !has(change.next, line.value);
            if (ofOthers)
                bytes += SettingText(name, line.value);
        }
    };
    for (const SettingLine& line : before.lines) {
        if (!changes.contains(line.name))
            bytes += line.whole + '\n';
        // All lines of the setting are written in place of the first.
        if (const auto changed = left.find(line.name); changed != left.end()) {
            write(changed->first, changed->second);
            left.erase(changed);
        }
    }
    for (const auto& [name, change] : left)
        write(name, change);

    const fs::path aside = file.string() + ".broken";
    if (!isRead)
        fs::rename(file, aside, error);
    if (error)
        return "could not move " + file.string() + " aside: " + error.message();
    const kits::Result<void> saved = kits::ReplaceFile(file, bytes);
    if (saved)
        return "";
    if (!isRead)
        fs::rename(aside, file, error);
    return saved.Fault().text;
}

std::shared_ptr<Settings> ReadSettings() {
    const kits::Result<fs::path> folder = kits::UserConfigFolder();
    if (folder)
        return std::make_shared<Settings>(*folder / "vexa/settings");
    Tell("warning: " + folder.Fault().text);
    return std::make_shared<Settings>();
}

} // namespace vexa
