// SPDX-License-Identifier: GPL-3.0-or-later
#include "tuning/Keymap.h"

#include "kits/storage/ReadFile.h"
#include "tuning/ScalaLines.h"
#include "tuning/Scale.h"

namespace vexa {

namespace {

using kits::Result;

/// The keys that follow the pattern's size in the file, in the file's order.
struct KeyRow {
    const char* what;
    int Keymap::*target;
};
constexpr KeyRow kKeyRows[] = {
    {"the first key, from 0 to 127", &Keymap::first},
    {"the last key, from 0 to 127", &Keymap::last},
    {"the middle key, from 0 to 127", &Keymap::middle},
    {"the reference key, from 0 to 127", &Keymap::reference},
};

/// Reads the number on the next line that is not blank into `target`. Returns false, and leaves
/// `target` unchanged, if it is not a number from 0 to `most`.
bool TakeNumber(ScalaLines& lines, int most, int& target) {
    lines.NextFilled();
    const auto number = NumberIn(lines.Text(), 0, most);
    target = number.value_or(target);
    return number.has_value();
}

/// Reads the remaining lines as the entries of a pattern of `size` keys.
Result<void> ReadPattern(ScalaLines& lines, int size, Keymap& keymap) {
    while (lines.NextFilled()) {
        const std::string_view word = FirstWord(lines.Text());
        const bool none = word == "x" || word == "X";
        const auto degree = NumberIn(word, 0, kMostScaleNotes);
        if (!none && !degree)
            return lines.Expected("a degree from 0 to " + std::to_string(kMostScaleNotes) +
                                  ", or x");
        if (keymap.pattern.size() == static_cast<std::size_t>(size))
            return lines.Expected("no entry after number " + std::to_string(size));
        keymap.pattern.push_back(degree);
    }
    keymap.pattern.resize(static_cast<std::size_t>(size));
    return {};
}

} // namespace

std::optional<Keymap::Place> Keymap::PlaceOf(int key) const {
    if (pattern.empty())
        return Place{0, key - middle};
    const auto size = static_cast<int>(pattern.size());
    const int entry = ((key - middle) % size + size) % size;
    const std::optional<int> degree = pattern[static_cast<std::size_t>(entry)];
    if (!degree)
        return std::nullopt;
    return Place{(key - middle - entry) / size, *degree};
}

Result<Keymap> ParseKeymap(std::string_view bytes, const std::string& name) {
    ScalaLines lines(bytes, name);
    Keymap keymap;
    int size = 0;
    if (!TakeNumber(lines, kKeys, size))
        return lines.Expected("the size of the map, from 0 to 128");
    for (const KeyRow& row : kKeyRows) {
        if (!TakeNumber(lines, kKeys - 1, keymap.*row.target))
            return lines.Expected(row.what);
        if (keymap.last < keymap.first)
            return lines.Expected("a last key that is not below the first");
    }
    const int lineOfReference = lines.Number();
    lines.NextFilled();
    const auto hertz = NumberIn(lines.Text(), kLeastHertz, kMostHertz);
    if (!hertz)
        return lines.Expected("the reference's frequency, from 0.1 to 100000 Hz");
    keymap.hertz = *hertz;
    if (!TakeNumber(lines, kMostScaleNotes, keymap.octave))
        return lines.Expected("the degree of the octave, from 0 to " +
                              std::to_string(kMostScaleNotes));
    if (const Result<void> read = ReadPattern(lines, size, keymap); !read)
        return read.Fault();
    if (!keymap.PlaceOf(keymap.reference))
        return lines.Fault(lineOfReference, "expected a reference key that the map does not leave "
                                            "out, not " +
                                                std::to_string(keymap.reference));
    return keymap;
}

Result<Keymap> ReadKeymap(const std::filesystem::path& path) {
    const Result<std::string> bytes = kits::ReadFile(path);
    if (!bytes)
        return bytes.Fault();
    return ParseKeymap(*bytes, path.string());
}

} // namespace vexa
