// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/FilePrograms.h"

#include "instrument/PlayableFormula.h"
#include "instrument/Programs.h"
#include "kits/midi/ControllerNumbers.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vexa {

std::vector<std::string> NotCompiled(const std::string& what, const Function& function) {
    const std::string reason = WhyNoAddon(function);
    if (reason.empty())
        return {};
    return {"--compile: " + what + " is not compiled: " + reason};
}

std::string FunctionOf(const std::filesystem::path& file) {
    return "the function of " + file.string();
}

std::vector<std::string> FilePrograms::Read(const MidiFile& file) {
    std::vector<std::string> remarks;
    const VexaMidiConsumer& consumer = instrument.Engine().consumer;
    ProgramSelector chosen(consumer, BMessenger(), 0);
    // The consumer may hear any channel once the file has made a zone of MPE.
    const bool makesZone = std::ranges::any_of(file.events, [](const MidiEvent& event) {
        return event.kind == MidiEvent::Kind::ControlChange &&
               event.number == kits::kParameterLsb && event.value == kits::kZoneParameter;
    });
    const Sound* sound = &instrument.State();
    bool missed = false;
    for (const MidiEvent& event : file.events) {
        if (event.kind == MidiEvent::Kind::NoteOn && (makesZone || consumer.Accepts(event.channel)))
            struck.insert(sound);
        chosen.Came(event.ForConsumer());
        const std::optional<int32> number = chosen.Take();
        if (!number)
            continue;
        const auto [place, isNew] = sounds.try_emplace(*number);
        if (isNew) {
            const auto path = FindProgram(folders, *number);
            if (path)
                place->second = {*path, Read(*path, remarks)};
            else if (!std::exchange(missed, true))
                remarks.push_back(path.Fault().text);
        }
        if (place->second.sound)
            sound = &*place->second.sound;
    }
    return remarks;
}

std::optional<Sound> FilePrograms::Read(const std::filesystem::path& path,
                                        std::vector<std::string>& remarks) const {
    Warnings warnings;
    kits::Result<Sound> sound = ReadWhole(path, instrument, warnings);
    std::ranges::move(kits::Texts(warnings), std::back_inserter(remarks));
    if (sound && compiles)
        std::ranges::move(NotCompiled(FunctionOf(path), sound->function),
                          std::back_inserter(remarks));
    if (sound)
        return *std::move(sound);
    remarks.push_back(sound.Fault().text);
    return std::nullopt;
}

void FilePrograms::Came(const kits::MidiEvent& event) {
    selector.Came(event);
    const std::optional<int32> number = selector.Take();
    if (!number || !sounds[*number].sound)
        return;
    if (const FunctionReport loaded = instrument.Load(*sounds[*number].sound);
        !Plays(loaded) && fault.empty())
        fault = Text(loaded);
}

} // namespace vexa
