// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/Sound.h"

#include "synth/ParameterTable.h"

namespace vexa {

PlayingTexts::PlayingTexts() : texts(PlayingRows().size()) {}

std::optional<std::string>& PlayingTexts::Of(std::string_view name) {
    return texts[static_cast<std::size_t>(&PlayingRowNamed(name) - PlayingRows().data())];
}

const std::optional<std::string>& PlayingTexts::Of(std::string_view name) const {
    return const_cast<PlayingTexts&>(*this).Of(name);
}

Sound::Sound() {
    for (const Parameter& row : Parameters())
        texts.emplace_back(row.initialText);
    envelopes.fill({EnvPoint{}});
}

} // namespace vexa
