// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/KeyTuning.h"

#include "app/Alerts.h"
#include "app/Settings.h"
#include "midi/MidiConsumer.h"

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace vexa {

namespace {

/// Returns the absolute path, as the next start may be from another folder; empty without a file.
std::string WholePath(const std::optional<std::filesystem::path>& file) {
    if (!file)
        return "";
    std::error_code error;
    const auto whole = std::filesystem::absolute(*file, error);
    return error ? file->string() : whole.string();
}

} // namespace

bool KeyTuning::Tune(const TuningChoice& choice) {
    if (hostTunes)
        return false;
    const kits::Result<Tuning> read = ReadTuning(choice);
    if (!read) {
        std::fprintf(stderr, "vexa: %s\n", read.Fault().text.c_str());
        ErrorAlert("The tuning stays as it is.", read.Fault().text);
        return false;
    }
    present = *read;
    consumer.SetTuning(present);
    chosen = choice;
    return true;
}

bool KeyTuning::Choose(const TuningChoice& choice) {
    if (!Tune(choice))
        return false;
    settings.Set(kScaleSetting, WholePath(choice.scale));
    settings.Set(kKeymapSetting, WholePath(choice.keymap));
    settings.Set(kA4Setting, choice.a4.value_or(0));
    return true;
}

} // namespace vexa
