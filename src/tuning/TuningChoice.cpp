// SPDX-License-Identifier: GPL-3.0-or-later
#include "tuning/TuningChoice.h"

#include "tuning/Keymap.h"
#include "tuning/Scale.h"

#include <algorithm>

namespace vexa {

using kits::Error;
using kits::Result;

Result<Tuning> ReadTuning(const TuningChoice& choice) {
    if (!choice.scale && !choice.keymap)
        return EqualTemperament(choice.a4.value_or(kA4Hertz));
    const Result<Scale> scale = choice.scale ? ReadScale(*choice.scale) : Scale();
    if (!scale)
        return scale.Fault();
    Result<Keymap> keymap = choice.keymap ? ReadKeymap(*choice.keymap) : Keymap();
    if (!keymap)
        return keymap.Fault();
    if (choice.a4) {
        if (!keymap->PlaceOf(kA4))
            return Error{choice.keymap->string() + ": the map leaves out key 69, which --a4 tunes"};
        keymap->reference = kA4;
        keymap->hertz = *choice.a4;
    }
    const Tuning tuning = TuningOf(*scale, *keymap);
    if (std::all_of(tuning.begin(), tuning.end(), [](float hertz) { return hertz == 0; }))
        return Error{choice.keymap.value_or(choice.scale.value_or("")).string() +
                     ": no key would sound between 0.1 and 100000 Hz"};
    return tuning;
}

} // namespace vexa
