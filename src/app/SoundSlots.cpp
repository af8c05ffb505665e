// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SoundSlots.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace vexa {

void SoundSlots::Begin(const Sound& sound, SoundFile file) {
    slots[present].emplace(sound, file.name);
    Present().File() = std::move(file);
    slots[1 - present].reset();
    comparedAt.reset();
}

/// Ends the gesture. Returns the other slot, with a copy of the sound and its file if it was empty.
History& SoundSlots::OpenOther(const Sound& sound) {
    Present().End();
    std::optional<History>& other = slots[1 - present];
    if (!other) {
        other.emplace(sound, "");
        other->File() = Present().File();
        // Losing the copy needs no question: the original is still in its slot.
        other->GiveUp(true);
    }
    return *other;
}

void SoundSlots::Switch(const Sound& sound) {
    OpenOther(sound);
    present = 1 - present;
    comparedAt.reset();
}

void SoundSlots::CopyToOther(const Sound& sound) {
    History& other = OpenOther(sound);
    if (other.Present() == sound)
        return;
    other.Load(sound, Present().File().name, std::string("copy of ") + Letter());
    other.File() = Present().File();
    other.GiveUp(true);
}

void SoundSlots::TakeAsSaved(const Sound& sound) {
    Present().File().saved = sound;
    Present().File().gone = false;
    comparedAt.reset();
}

void SoundSlots::ShareSaved() {
    const SoundFile& file = Present().File();
    if (std::optional<History>& other = slots[1 - present];
        other && other->File().path == file.path)
        other->File().saved = file.saved;
}

void SoundSlots::LookForFiles() {
    for (std::optional<History>& each : slots) {
        if (!each)
            continue;
        SoundFile& file = each->File();
        std::error_code ignored;
        file.gone = !file.path.empty() && !std::filesystem::exists(file.path, ignored);
    }
    comparedAt.reset();
}

bool SoundSlots::Differs(uint64 edits, const std::function<Sound()>& sound) const {
    if (comparedAt != edits) {
        differs = !Present().File().Holds(sound());
        comparedAt = edits;
    }
    return differs;
}

} // namespace vexa
