// SPDX-License-Identifier: GPL-3.0-or-later
#include "bank/SoundEntry.h"

#include "kits/text/FoldedText.h"

#include <cstdint>
#include <system_error>
#include <utility>

namespace vexa {

namespace {

/// The maximum size in bytes of a file that is read for a list. Every file in the folders of sounds
/// is read unasked, and the tree of a document may take sixty times the memory of its file.
constexpr std::uintmax_t kMostListed = std::uintmax_t{1} << 20;

/// Returns the text without blanks. The words of a search contain none, so that "x*y" also finds
/// the formula "x * y".
std::string WithoutBlanks(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
    return text;
}

std::string Searched(const SoundEntry& entry) {
    std::string text = entry.path.filename();
    for (const std::string* part :
         {&entry.name, &entry.category, &entry.tags, &entry.author, &entry.comment})
        text += '\n' + *part;
    return kits::Folded(text + '\n' + WithoutBlanks(entry.formula));
}

void Tell(const Sound& sound, SoundEntry& entry) {
    if (sound.info.name && !sound.info.name->empty())
        entry.name = *sound.info.name;
    entry.category = sound.info.category.value_or("");
    entry.tags = sound.info.tags.value_or("");
    entry.comment = sound.info.comment.value_or("");
    entry.author = sound.author;
    entry.formula = SourceOf(sound.function);
}

} // namespace

std::string OneLine(std::string text, const std::filesystem::path& path) {
    const std::string folder = path.parent_path().string() + '/';
    for (std::size_t at = 0; (at = text.find(folder, at)) != std::string::npos;)
        text.erase(at, folder.size());
    while (text.ends_with('\n'))
        text.pop_back();
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;)
        text.replace(at, 1, text.substr(0, at).ends_with(':') ? " " : "; ");
    return text;
}

ReadEntry ReadSoundEntry(const std::filesystem::path& path, bool own) {
    ReadEntry read;
    SoundEntry& entry = read.entry;
    entry.path = path;
    entry.own = own;
    entry.name = path.stem();
    std::error_code error;
    const bool isLarge = std::filesystem::file_size(path, error) > kMostListed && !error;
    kits::Result<Sound> sound =
        isLarge ? kits::At({path.string()}, {"it is larger than 1 MB; open it from the menu"})
                : ReadSound(path);
    if (sound) {
        Tell(*sound, entry);
        read.sound = *std::move(sound);
    } else {
        entry.fault = OneLine(sound.Fault().text, path);
    }
    entry.searched = Searched(entry);
    entry.alphabetical = kits::Folded(entry.name);
    return read;
}

} // namespace vexa
