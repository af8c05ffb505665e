// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/Remarks.h"

#include "kits/support/Utf8.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace vexa {

namespace {

/// Advances `place` from that of the byte `from` to that of the byte `to` of the text.
void Advance(kits::Place& place, std::string_view text, std::size_t from, std::size_t to) {
    for (const char byte : text.substr(from, to - from)) {
        if (byte == '\n') {
            place.line++;
            place.column = 1;
        } else if (kits::BeginsCharacter(byte)) {
            place.column++;
        }
    }
}

std::size_t OffsetOf(std::string_view text, std::size_t left) {
    return text.size() - std::min(left, text.size());
}

} // namespace

kits::Place PlaceOf(std::string_view file, std::string_view text, std::size_t left) {
    kits::Place place{std::string(file), 1, 1};
    Advance(place, text, 0, OffsetOf(text, left));
    return place;
}

void Remarks::Add(std::size_t left, std::string text) {
    const Remark remark{left, std::move(text)};
    if (std::ranges::find(kept, remark) != kept.end())
        return;
    if (kept.size() < kMost)
        kept.push_back(remark);
    else
        others++;
}

std::vector<kits::Error> Remarks::Located(std::string_view file, std::string_view text) const {
    std::vector<Remark> ordered = kept;
    std::ranges::stable_sort(ordered, std::greater(), &Remark::left);
    std::vector<kits::Error> located;
    kits::Place place{std::string(file), 1, 1};
    std::size_t at = 0;
    for (const Remark& remark : ordered) {
        const std::size_t offset = OffsetOf(text, remark.left);
        Advance(place, text, at, offset);
        at = offset;
        located.push_back(kits::At(place, {remark.text}));
    }
    if (others > 0)
        located.push_back(
            kits::At({std::string(file)}, {"and " + std::to_string(others) + " more like these"}));
    return located;
}

} // namespace vexa
