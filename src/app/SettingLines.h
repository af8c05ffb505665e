// SPDX-License-Identifier: GPL-3.0-or-later
// Files of lines "name = value", in which settings and sessions are kept.
#pragma once

#include "kits/support/Error.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// A line of such a file. A name consists of small letters, digits and "-"; blanks around name and
/// value are ignored. A value has the escapes `\n`, `\r`, `\t`, `\\` and `\s` (a blank) for
/// characters that could not stand there. Lines that are empty or begin with "#" have no name.
struct SettingLine {
    explicit SettingLine(std::string_view text);
    /// True if the line is neither a setting, nor empty, nor a comment.
    bool IsBroken() const;

    std::string whole, name, value;
};

/// Returns the line for a name and any value, with its newline.
std::string SettingText(std::string_view name, std::string_view value);

struct SettingFile {
    std::vector<SettingLine> lines;
    /// The faults as sentences for the user: that the file cannot be read, or what is wrong with
    /// each broken line, with its place.
    std::vector<kits::Error> faults;
};

/// Reads a file; one that does not exist is empty. Any thread.
SettingFile ReadSettingFile(const std::filesystem::path& file);

} // namespace vexa
