// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SettingLines.h"

#include "kits/storage/ReadFile.h"
#include "kits/support/Quoted.h"
#include "kits/support/Trimmed.h"

#include <algorithm>
#include <utility>

namespace vexa {

namespace fs = std::filesystem;

namespace {

/// The largest size of a settings file, in bytes; a longer file is invalid.
constexpr std::size_t kLongest = 1 << 20;
constexpr std::string_view kNameCharacters = "abcdefghijklmnopqrstuvwxyz0123456789-";

/// The characters that are escaped in a value, and the letter after the backslash. A blank is
/// escaped only at either end, where it would otherwise be taken as padding of the "=".
constexpr std::pair<char, char> kEscapes[] = {
    {'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}, {'\t', 't'}, {' ', 's'}};

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

} // namespace

SettingLine::SettingLine(std::string_view text) : whole(text) {
    const std::size_t sign = text.find('=');
    const std::string_view before = kits::Trimmed(text.substr(0, sign));
    if (sign == std::string_view::npos || before.starts_with('#') ||
        before.find_first_not_of(kNameCharacters) != std::string_view::npos)
        return;
    name = before;
    value = Unescaped(kits::Trimmed(text.substr(sign + 1)));
}

bool SettingLine::IsBroken() const {
    const std::string_view text = kits::Trimmed(whole);
    return name.empty() && !text.empty() && !text.starts_with('#');
}

std::string SettingText(std::string_view name, std::string_view value) {
    return std::string(name) + " = " + Escaped(value) + '\n';
}

SettingFile ReadSettingFile(const fs::path& file) {
    SettingFile content;
    std::error_code ignored;
    if (fs::status(file, ignored).type() == fs::file_type::not_found)
        return content;
    const kits::Result<std::string> read = kits::ReadFile(file, kLongest);
    if (!read) {
        content.faults.push_back(read.Fault());
        return content;
    }
    std::string_view rest = *read;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const SettingLine& line = content.lines.emplace_back(rest.substr(0, end));
        if (line.IsBroken())
            content.faults.push_back(
                kits::At({file.string(), content.lines.size()},
                         {kits::Quoted(line.whole) + " is no setting (name = value)"}));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return content;
}

} // namespace vexa
