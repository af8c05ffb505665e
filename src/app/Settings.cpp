// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Settings.h"

#include "kits/storage/FileReplacement.h"
#include "kits/storage/ReadFile.h"
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

/// In bytes; what is longer is no file of settings.
constexpr std::size_t kLongest = 1 << 20;
constexpr std::string_view kNameCharacters = "abcdefghijklmnopqrstuvwxyz0123456789-";
constexpr std::string_view kBlanks = " \t\r";

/// What cannot stand in a value as it is, and the letter behind a backslash that stands for it. A
/// blank is one of them only at an end, where it would be taken for one beside the "=".
constexpr std::pair<char, char> kEscapes[] = {
    {'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}, {'\t', 't'}, {' ', 's'}};

std::string_view Trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (std::size_t i = 0; i < text.size(); i++) {
        const auto* const row = std::ranges::find(kEscapes, text[i], &std::pair<char, char>::first);
        const bool atEnd = i == 0 || i + 1 == text.size();
        if (row != std::end(kEscapes) && (text[i] != ' ' || atEnd))
            escaped += {'\\', row->second};
        else
            escaped += text[i];
    }
    return escaped;
}

std::string Unescaped(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); i++) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        const auto* const row = std::ranges::find(kEscapes, next, &std::pair<char, char>::second);
        const bool escape = text[i] == '\\' && row != std::end(kEscapes);
        plain += escape ? row->first : text[i];
        i += escape;
    }
    return plain;
}

void Tell(const std::string& text) {
    std::fprintf(stderr, "vexa: %s\n", text.c_str());
}

// The values of each type as texts, and back; false for a text that is none.

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

std::string ToText(const std::string& value) {
    return value;
}

std::string ToText(bool value) {
    return value ? "true" : "false";
}

std::string ToText(int value) {
    return std::to_string(value);
}

/// The shortest that is read as the same number.
std::string ToText(double value) {
    char text[32];
    return {text, std::to_chars(text, std::end(text), value).ptr};
}

} // namespace

/// A line of the file. Comments and empty lines have no name.
struct Settings::Line {
    std::string whole, name, value;

    explicit Line(std::string_view text) : whole(text) {
        const std::size_t sign = text.find('=');
        const std::string_view before = Trimmed(text.substr(0, sign));
        if (sign == std::string_view::npos || before.starts_with('#') ||
            before.find_first_not_of(kNameCharacters) != std::string_view::npos)
            return;
        name = before;
        value = Unescaped(Trimmed(text.substr(sign + 1)));
    }
    bool IsBroken() const {
        const std::string_view text = Trimmed(whole);
        return name.empty() && !text.empty() && !text.starts_with('#');
    }
};

struct Settings::Content {
    std::vector<Line> lines;
    /// What is wrong with it, for a person.
    std::vector<std::string> faults;
};

Settings::Content Settings::Read(const fs::path& file) {
    Content content;
    std::error_code ignored;
    if (fs::status(file, ignored).type() == fs::file_type::not_found)
        return content;
    const kits::Result<std::string> read = kits::ReadFile(file, kLongest);
    if (!read) {
        content.faults.push_back(read.Fault().text);
        return content;
    }
    std::string_view rest = *read;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const Line& line = content.lines.emplace_back(rest.substr(0, end));
        if (line.IsBroken())
            content.faults.push_back(file.string() + ':' + std::to_string(content.lines.size()) +
                                     ": " + kits::Quoted(line.whole) +
                                     " is no setting (name = value)");
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return content;
}

Settings::Settings(fs::path path) : file(std::move(path)) {
    const Content content = Read(file);
    for (std::size_t i = 0; i < content.lines.size(); i++) {
        const Line& line = content.lines[i];
        if (!line.name.empty()) {
            texts[line.name].push_back(line.value);
            lines[line.name] = static_cast<int>(i) + 1;
        }
    }
    if (content.faults.empty())
        return;
    Tell("warning: " + content.faults.front());
    if (const std::size_t others = content.faults.size() - 1; others > 0)
        Tell("warning: " + file.string() + ": so are " + std::to_string(others) + " other lines");
}

Settings::~Settings() {
    if (saving.valid())
        TakeSaved();
    if (file.empty() || changes.empty())
        return;
    if (const std::string fault = Save(file, changes); !fault.empty())
        Tell(fault);
}

/// Null where the setting is not set. Of several lines the last one counts.
const std::string* Settings::SingleText(const char* name) const {
    const auto found = texts.find(std::string_view(name));
    return found == texts.end() || found->second.empty() ? nullptr : &found->second.back();
}

void Settings::TellWrong(const char* name, const std::string& text) const {
    if (told.emplace(name).second)
        Tell("warning: " + file.string() + ':' + std::to_string(lines.at(name)) + ": " + name +
             " cannot be " + kits::Quoted(text));
}

template<class T>
T Settings::Get(const SettingKey<T>& key) const {
    const std::string* const text = SingleText(key.name);
    T value{};
    if (text && FromText(*text, value))
        return value;
    if (text)
        TellWrong(key.name, *text);
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
        SetTexts(key.name, {next});
}

template<>
void Settings::Set(const SettingKey<TextList>& key, const TextList& value) {
    if (value != Get(key))
        SetTexts(key.name, value);
}

template bool Settings::Get(const SettingKey<bool>&) const;
template int Settings::Get(const SettingKey<int>&) const;
template double Settings::Get(const SettingKey<double>&) const;
template std::string Settings::Get(const SettingKey<std::string>&) const;
template void Settings::Set(const SettingKey<bool>&, const bool&);
template void Settings::Set(const SettingKey<int>&, const int&);
template void Settings::Set(const SettingKey<double>&, const double&);
template void Settings::Set(const SettingKey<std::string>&, const std::string&);

void Settings::SetTexts(const char* name, TextList next) {
    changes[name] = next;
    texts[name] = std::move(next);
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
    // Where there is no room for a thread, at the next pulse.
    saving = std::async(std::launch::async | std::launch::deferred, Save, file, leaving);
}

/// What could not be saved is tried again with the next change.
void Settings::TakeSaved() {
    if (const std::string fault = saving.get(); !fault.empty()) {
        Tell(fault);
        changes.merge(leaving);
    }
    leaving.clear();
}

/// Into the file as it is now, beside what others have written there. Why that failed; else empty.
std::string Settings::Save(const fs::path& file, const Texts& changes) {
    const fs::path folder = file.parent_path();
    if (const kits::Result<void> made = kits::MakeUserFolder(folder); !made)
        return made.Fault().text;
    // Until it is closed, other instances wait.
    const kits::Descriptor lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ::flock(lock.Number(), LOCK_EX);

    const Content before = Read(file);
    Texts left = changes;
    std::string bytes;
    const auto write = [&bytes](const std::string& name, const TextList& texts) {
        for (const std::string& text : texts)
            bytes += name + " = " + Escaped(text) + '\n';
    };
    for (const Line& line : before.lines) {
        if (!changes.contains(line.name) && !line.IsBroken())
            bytes += line.whole + '\n';
        // In the place of its first line, all of it.
        if (const auto changed = left.find(line.name); changed != left.end()) {
            write(changed->first, changed->second);
            left.erase(changed);
        }
    }
    for (const auto& [name, texts] : left)
        write(name, texts);

    const fs::path aside = file.string() + ".broken";
    std::error_code error;
    if (!before.faults.empty())
        fs::rename(file, aside, error);
    if (error)
        return "could not move " + file.string() + " aside: " + error.message();
    const kits::Result<void> saved = kits::ReplaceFile(file, bytes);
    if (saved)
        return "";
    if (!before.faults.empty())
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
