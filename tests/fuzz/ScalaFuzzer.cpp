// SPDX-License-Identifier: GPL-3.0-or-later
// Fails if bytes, read as a scale and as a keyboard map, give neither a reason that names a line,
// nor a tuning whose keys can all be played.

#include "fuzz/Fuzzing.h"
#include "tuning/Keymap.h"
#include "tuning/Scale.h"

#include <algorithm>

namespace {

void RequirePlace(const kits::Error& fault) {
    fuzz::Require(fault.place.file == "fuzzed" && fault.place.line > 0,
                  "a fault names file and line");
    fuzz::Require(std::none_of(fault.text.begin(), fault.text.end(),
                               [](char c) { return uchar(c) < ' ' || c == 127; }),
                  "a fault is one line");
}

void RequirePlayable(const vexa::Scale& scale, const vexa::Keymap& keymap) {
    for (const float hertz : vexa::TuningOf(scale, keymap))
        fuzz::Require(hertz == 0 ||
                          (hertz >= float(vexa::kLeastHertz) && hertz <= float(vexa::kMostHertz)),
                      "a frequency is one that can be played");
}

} // namespace

/// The scale ends at a zero byte; the map follows.
extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    const std::string_view bytes = fuzz::Text(data, size);
    const std::size_t end = std::min(bytes.find('\0'), bytes.size());
    const auto scale = vexa::ParseScale(bytes.substr(0, end), "fuzzed");
    const auto keymap = vexa::ParseKeymap(bytes.substr(std::min(end + 1, size)), "fuzzed");
    if (!scale)
        RequirePlace(scale.Fault());
    if (!keymap)
        RequirePlace(keymap.Fault());
    RequirePlayable(scale ? *scale : vexa::Scale(), keymap ? *keymap : vexa::Keymap());
    return 0;
}
