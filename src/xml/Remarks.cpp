// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/Remarks.h"

#include <algorithm>
#include <utility>

namespace vexa {

namespace {

/// Goes on in the text from `from`, which is at `place`, to the byte `to`.
Place Advanced(std::string_view text, std::size_t from, Place place, std::size_t to) {
    for (const char byte : text.substr(from, to - from)) {
        if (byte == '\n')
            place = {place.line + 1, 1};
        else if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80)
            place.column++;
    }
    return place;
}

std::size_t OffsetOf(std::string_view text, std::size_t left) {
    return text.size() - std::min(left, text.size());
}

std::string Line(std::string_view name, Place place, const std::string& text) {
    return std::string(name) + ':' + std::to_string(place.line) + ':' +
           std::to_string(place.column) + ": " + text;
}

} // namespace

Place PlaceOf(std::string_view text, std::size_t left) {
    return Advanced(text, 0, {1, 1}, OffsetOf(text, left));
}

void Remarks::Add(std::size_t left, std::string text) {
    if (kept.size() < kMost)
        kept.push_back({left, std::move(text)});
    else
        others++;
}

std::vector<std::string> Remarks::Located(std::string_view name, std::string_view text) const {
    std::vector<const Remark*> ordered;
    for (const Remark& remark : kept)
        ordered.push_back(&remark);
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const Remark* a, const Remark* b) { return a->left > b->left; });
    std::vector<std::string> lines;
    Place place{1, 1};
    std::size_t at = 0;
    for (const Remark* remark : ordered) {
        const std::size_t offset = OffsetOf(text, remark->left);
        place = Advanced(text, at, place, offset);
        at = offset;
        lines.push_back(Line(name, place, remark->text));
    }
    if (others > 0)
        lines.push_back(std::string(name) + ": and " + std::to_string(others) + " more like these");
    return lines;
}

std::string Located(std::string_view name, std::string_view text, const Remark& remark) {
    return Line(name, PlaceOf(text, remark.left), remark.text);
}

} // namespace vexa
