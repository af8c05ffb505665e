// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/Sound.h"

#include "synth/ParameterTable.h"

namespace vexa {

PlayingTexts::PlayingTexts() : texts(PlayingRows().size()) {}

Sound::Sound() {
    for (const Parameter& row : Parameters())
        texts.emplace_back(row.initialText);
    envelopes.fill({EnvPoint{}});
}

} // namespace vexa
