// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/KeyTuning.h"

#include "app/Alerts.h"
#include "app/Settings.h"
#include "kits/support/NumberText.h"
#include "midi/MidiConsumer.h"

#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <system_error>
#include <utility>

namespace vexa {

namespace {

/// Returns the absolute path, as the next start may be from another folder; an empty one stays.
std::string WholePath(const std::filesystem::path& file) {
    std::error_code error;
    const auto whole = std::filesystem::absolute(file, error);
    return error || file.empty() ? file.string() : whole.string();
}

} // namespace

void KeyTuning::Play(TuningParts next, const Tuning& tuning) {
    parts = std::move(next);
    present = tuning;
    consumer.SetTuning(present);
}

/// Says what plays, for an alert.
std::string KeyTuning::Told() const {
    const auto& [scale, keymap, a4] = parts.choice;
    std::string text = scale ? scale->filename().string() : "twelve equal steps";
    if (keymap)
        text += " by " + keymap->filename().string();
    if (const double hertz = A4(); hertz > 0)
        text += ", with A4 at " + kits::ShortText(hertz) + " Hz";
    return text;
}

void KeyTuning::Restore(const TuningChoice& choice) {
    if (hostTunes)
        return;
    std::string faults;
    // If the whole cannot be had, then each part that can.
    for (const TuningChoice& part : std::initializer_list<TuningChoice>{
             choice, {choice.scale, {}, {}}, {{}, choice.keymap, {}}, {{}, {}, choice.a4}}) {
        TuningParts next = parts;
        if (const kits::Result<Tuning> read = next.Change(part); !read) {
            const std::string fault = read.Fault().text + '\n';
            if (faults.find(fault) != faults.npos)
                continue;
            std::fprintf(stderr, "vexa: %s", fault.c_str());
            faults += fault;
        } else {
            Play(std::move(next), *read);
            if (faults.empty())
                return;
        }
    }
    ShowErrorAlert("The tuning is not all as it was. Now it is " + Told() + '.',
                   faults + "The choice is kept for the next start.");
}

bool KeyTuning::Choose(const TuningChoice& change) {
    if (hostTunes)
        return false;
    TuningParts next = parts;
    const kits::Result<Tuning> read = next.Change(change);
    if (!read) {
        std::fprintf(stderr, "vexa: %s\n", read.Fault().text.c_str());
        ErrorAlert("The tuning stays as it is.", read.Fault().text);
        return false;
    }
    Play(std::move(next), *read);
    if (change.scale)
        settings.Set(kScaleSetting, WholePath(*change.scale));
    if (change.keymap)
        settings.Set(kKeymapSetting, WholePath(*change.keymap));
    if (change.a4)
        settings.Set(kA4Setting, *change.a4);
    return true;
}

} // namespace vexa
