// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Project.h"

#include "app/SettingLines.h"
#include "documents/SoundDocument.h"
#include "instrument/SoundParts.h"
#include "kits/storage/FileReplacement.h"
#include "kits/storage/UserFolders.h"
#include "kits/support/Quoted.h"

#include <charconv>
#include <iterator>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace vexa {

namespace fs = std::filesystem;

namespace {

constexpr const char* kSoundFile = "sound.xml";
constexpr const char* kSessionFile = "session";
constexpr const char* kScaleFile = "scale.scl";
constexpr const char* kKeymapFile = "keymap.kbm";

// The names of the lines that are not options.

constexpr std::string_view kSoundName = "sound-name";
constexpr std::string_view kWindow = "window";
constexpr std::string_view kShown = "shown";
constexpr std::string_view kHidden = "hidden";

/// Returns whether the line's value is the name of a file in the project's folder.
bool IsTuningFile(std::string_view name) {
    return name == "tuning" || name == "keymap";
}

/// Returns the options that a project keeps. The others belong to a single run or to the machine.
const std::set<std::string_view>& Kept() {
    static const auto names = [] {
        std::set<std::string_view> all = {"voices", "channel", "mpe",    "programs",
                                          "midi",   "tuning",  "keymap", "a4"};
        for (const PlayingRow& row : PlayingRows()) {
            if (row.isOption)
                all.insert(row.name);
        }
        return all;
    }();
    return names;
}

/// Returns the text of the file "session".
std::string SessionText(const Project& project) {
    const AppOptions& options = project.options;
    std::string text = SettingText(kSoundName, project.soundName) +
                       SettingText(kWindow, project.windowShown ? kShown : kHidden);
    const auto add = [&text](std::string_view name, const std::optional<std::string>& value) {
        if (value)
            text += SettingText(name, *value);
    };
    const auto set = [](bool whether) { return whether ? std::optional("") : std::nullopt; };
    if (options.voices)
        add("voices", std::to_string(*options.voices));
    if (options.channel)
        add("channel", *options.channel < 0 ? "all" : std::to_string(*options.channel + 1));
    add("mpe", set(options.mpe));
    add("programs", set(options.programs));
    add("midi", options.midi);
    if (options.tuning.scale)
        add("tuning", kScaleFile);
    if (options.tuning.keymap)
        add("keymap", kKeymapFile);
    if (options.tuning.a4) {
        char digits[32];
        char* const end = std::to_chars(digits, std::end(digits), *options.tuning.a4).ptr;
        add("a4", std::string(std::begin(digits), end));
    }
    for (std::size_t i = 0; i < PlayingRows().size(); i++) {
        if (PlayingRows()[i].isOption)
            add(PlayingRows()[i].name, options.playing.texts[i]);
    }
    return text;
}

/// New contents for several files. Either all are replaced or none, unless the system fails between
/// two renames.
class Replacements {
  public:
    kits::Result<void> Add(const fs::path& path, std::string_view bytes) {
        auto file = kits::FileReplacement::Create(path);
        if (!file)
            return file.Fault();
        if (auto written = file->Write(bytes); !written)
            return written;
        files.push_back(*std::move(file));
        return {};
    }
    kits::Result<void> Commit() {
        for (kits::FileReplacement& file : files) {
            if (auto done = file.Commit(); !done)
                return done;
        }
        return {};
    }

  private:
    std::vector<kits::FileReplacement> files;
};

/// Applies the line to the project. Returns false if its name or value is invalid.
bool TakeLine(const SettingLine& line, const fs::path& folder, Project& project) {
    if (line.name == kSoundName) {
        project.soundName = line.value;
        return true;
    }
    if (line.name == kWindow) {
        project.windowShown = line.value == kShown;
        return project.windowShown || line.value == kHidden;
    }
    // An empty name chooses no source, which is a choice too.
    if (line.name == "midi" && line.value.empty()) {
        project.options.midi = "";
        return true;
    }
    const std::string value = IsTuningFile(line.name) ? (folder / line.value).string() : line.value;
    return Kept().contains(line.name) && SetAppOption(project.options, line.name, value);
}

} // namespace

bool ProjectExists(const fs::path& folder) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(folder / kSoundFile, ignored));
}

kits::Result<Project> ReadProject(const fs::path& folder, const AppOptions& options) {
    const fs::path file = folder / kSessionFile;
    const SettingFile lines = ReadSettingFile(file);
    if (!lines.faults.empty())
        return lines.faults.front();
    Project project;
    project.options = options;
    for (std::size_t i = 0; i < lines.lines.size(); i++) {
        const SettingLine& line = lines.lines[i];
        if (!line.name.empty() && !TakeLine(line, folder, project))
            return kits::At({file.string(), i + 1},
                            {line.name + " cannot be " + kits::Quoted(line.value)});
    }
    const auto sound = ReadSound(folder / kSoundFile);
    if (!sound)
        return sound.Fault();
    project.sound = *sound;
    project.options.sound = folder / kSoundFile;
    project.options.file.reset();
    return project;
}

kits::Result<void> WriteProject(const fs::path& folder, const Project& project) {
    if (auto made = kits::MakeUserFolder(folder); !made)
        return made;
    const TuningChoice& tuning = project.options.tuning;
    Replacements files;
    for (const auto& [name, isThere, text] :
         {std::tuple(kScaleFile, tuning.scale.has_value(), project.tuningFiles.scale),
          std::tuple(kKeymapFile, tuning.keymap.has_value(), project.tuningFiles.keymap),
          std::tuple(kSessionFile, true, SessionText(project)),
          std::tuple(kSoundFile, true, SoundText(project.sound))}) {
        if (!isThere)
            continue;
        if (auto added = files.Add(folder / name, text); !added)
            return added;
    }
    return files.Commit();
}

bool AreAlike(Project a, const Project& b) {
    a.windowShown = b.windowShown;
    return SessionText(a) == SessionText(b) && a.tuningFiles == b.tuningFiles &&
           AreAlike(a.sound, b.sound);
}

} // namespace vexa
