// SPDX-License-Identifier: GPL-3.0-or-later
#include "tuning/TuningChoice.h"

#include "kits/storage/ReadFile.h"

#include <algorithm>

namespace vexa {

using kits::Error;
using kits::Result;

namespace {

/// Returns what the parts tune the keys to.
Result<Tuning> TuningBy(const TuningParts& parts) {
    const auto& [scaleFile, keymapFile, a4] = parts.choice;
    if (!scaleFile && !keymapFile)
        return EqualTemperament(a4.value_or(kA4Hertz));
    Keymap keymap = parts.keymap;
    if (a4) {
        if (!keymap.PlaceOf(kA4))
            return Error{keymapFile->string() +
                         ": the map leaves out key 69, the A4 whose frequency is given"};
        keymap.reference = kA4;
        keymap.hertz = *a4;
    }
    const Tuning tuning = TuningOf(parts.scale, keymap);
    if (std::all_of(tuning.begin(), tuning.end(), [](float hertz) { return hertz == 0; }))
        return Error{keymapFile.value_or(scaleFile.value_or("")).string() +
                     ": no key would sound between 0.1 and 100000 Hz"};
    return tuning;
}

using ChosenFile = std::optional<std::filesystem::path>;

/// Takes over a file, if one is given, with its bytes and what `parse` finds in them.
template<class Part, class Parse>
Result<void> Take(const ChosenFile& given, Parse parse, ChosenFile& chosen, std::string& bytes,
                  Part& part) {
    if (!given)
        return {};
    chosen = given->empty() ? std::nullopt : given;
    const Result<std::string> content = chosen ? kits::ReadFile(*chosen) : std::string();
    if (!content)
        return content.Fault();
    const Result<Part> found = chosen ? parse(*content, chosen->string()) : Part();
    if (!found)
        return found.Fault();
    bytes = *content;
    part = *found;
    return {};
}

} // namespace

Result<Tuning> TuningParts::Change(const TuningChoice& change) {
    if (const auto taken = Take(change.scale, ParseScale, choice.scale, files.scale, scale); !taken)
        return taken.Fault();
    if (const auto taken = Take(change.keymap, ParseKeymap, choice.keymap, files.keymap, keymap);
        !taken)
        return taken.Fault();
    if (change.a4)
        choice.a4 = *change.a4 > 0 ? change.a4 : std::nullopt;
    return TuningBy(*this);
}

Result<Tuning> ReadTuning(const TuningChoice& choice) {
    return TuningParts().Change(choice);
}

} // namespace vexa
