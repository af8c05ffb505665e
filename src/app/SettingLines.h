// SPDX-License-Identifier: GPL-3.0-or-later
// Files of lines "name = value", as settings and sessions are kept in.
#pragma once

#include "kits/support/Error.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// A line of such a file. Names are of small letters, digits and "-"; blanks round name and value
/// do not count. A value has `\n`, `\r`, `\t`, `\\` and `\s`, a blank, for what could not stand
/// there. Lines that are empty or begin with "#" have no name.
struct SettingLine {
    explicit SettingLine(std::string_view text);
    /// True for a line that is neither a setting nor empty or a remark.
    bool IsBroken() const;

    std::string whole, name, value;
};

/// Returns the line of any value, with its end.
std::string SettingText(std::string_view name, std::string_view value);

struct SettingFile {
    std::vector<SettingLine> lines;
    /// What is wrong with it, in sentences for a person: that the file cannot be read, or what is
    /// wrong with a broken line, with its place.
    std::vector<kits::Error> faults;
};

/// Reads a file, which is empty where there is no such file. Any thread.
SettingFile ReadSettingFile(const std::filesystem::path& file);

} // namespace vexa
