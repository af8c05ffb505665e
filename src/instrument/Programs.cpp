// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/Programs.h"

namespace vexa {

namespace {

constexpr const char* kSounds = "sounds";

} // namespace

std::vector<std::filesystem::path> Programs(const kits::ProgramFolders& folders) {
    std::vector<std::filesystem::path> paths;
    for (const std::string& name : folders.Documents(kSounds))
        paths.push_back(folders.Find(kSounds, name));
    return paths;
}

kits::Result<std::filesystem::path> FindProgram(const kits::ProgramFolders& folders, int32 number) {
    const std::vector<std::string> names = folders.Documents(kSounds);
    const auto index = static_cast<std::size_t>(number);
    if (number < 0 || index >= names.size()) {
        const std::string sounds =
            names.empty() ? "there are no sounds"
                          : "the sounds are programs 0 to " + std::to_string(names.size() - 1);
        return kits::Error{"there is no program " + std::to_string(number) + ": " + sounds};
    }
    return folders.Find(kSounds, names[index]);
}

kits::Result<Sound> ReadWhole(const std::filesystem::path& path, const Instrument& instrument,
                              Warnings& warnings) {
    kits::Result<Sound> sound = ReadSound(path, &warnings);
    if (!sound)
        return sound;
    if (const FunctionReport tried = instrument.Try(sound->function); !tried)
        return FaultIn(path, sound->function, tried);
    return sound;
}

} // namespace vexa
