// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/DefaultSound.h"

#include "instrument/InitialSound.h"

#include <utility>

namespace vexa {

DefaultSound ReadDefaultSound(const kits::ProgramFolders& folders) {
    const std::string file = std::string(kDefaultSoundName) + kits::kDocumentEnding;
    const std::filesystem::path first = folders.Find("sounds", file);
    const std::filesystem::path shipped = folders.Shipped("sounds") / file;
    DefaultSound found;
    const auto read = [&found](const std::filesystem::path& path) {
        kits::Result<Sound> sound = ReadSound(path, &found.warnings);
        if (!sound) {
            found.fault += sound.Fault().text + '\n';
            return false;
        }
        found.sound = *std::move(sound);
        found.path = path;
        return true;
    };
    if (read(first))
        return found;
    if (shipped != first && read(shipped)) {
        found.fault += "instead the sound of " + shipped.string() + " plays";
        return found;
    }
    found.sound = InitialSound();
    found.fault += "instead a plain sound plays";
    return found;
}

} // namespace vexa
