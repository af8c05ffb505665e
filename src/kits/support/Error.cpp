// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/Error.h"

#include <utility>

namespace kits {

Error At(Place place, Error error) {
    std::string prefix = place.file;
    for (const std::size_t number : {place.line, place.column}) {
        if (number > 0)
            prefix += ':' + std::to_string(number);
    }
    error.text.insert(0, prefix + ": ");
    error.place = std::move(place);
    return error;
}

std::vector<std::string> Texts(std::span<const Error> errors) {
    std::vector<std::string> texts;
    for (const Error& error : errors)
        texts.push_back(error.text);
    return texts;
}

} // namespace kits
