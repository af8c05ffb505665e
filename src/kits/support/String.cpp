// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/String.h"

#include <algorithm>
#include <utility>

BString::BString(const char* text) : bytes(text ? text : "") {}

BString::BString(BString&& other) noexcept
    : bytes(std::move(other.bytes)), start(std::exchange(other.start, 0)) {
    other.bytes.clear();
}

BString& BString::operator=(BString&& other) noexcept {
    bytes.swap(other.bytes);
    std::swap(start, other.start);
    return *this;
}

char BString::ByteAt(int64 position) const {
    return position >= 0 && position < Length() ? bytes[start + static_cast<std::size_t>(position)]
                                                : '\0';
}

int64 BString::FindFirst(std::string_view text) const {
    // npos becomes -1.
    return static_cast<int64>(std::string_view(*this).find(text));
}

BString& BString::Append(std::string_view text) {
    bytes.append(text);
    return *this;
}

BString& BString::Remove(int64 from, int64 length) {
    const std::string_view range = Range(from, length);
    const auto position = static_cast<std::size_t>(range.data() - bytes.data());
    if (position == start)
        start += range.size();
    else
        bytes.erase(position, range.size());
    return *this;
}

BString& BString::ReplaceAll(std::string_view old, std::string_view replacement) {
    const std::string_view text = *this;
    std::size_t found = old.empty() ? text.npos : text.find(old);
    if (found == text.npos)
        return *this;
    std::string result;
    result.reserve(text.size());
    std::size_t copied = 0;
    for (; found != text.npos; found = text.find(old, copied)) {
        result.append(text.substr(copied, found - copied)).append(replacement);
        copied = found + old.size();
    }
    result.append(text.substr(copied));
    bytes = std::move(result);
    start = 0;
    return *this;
}

void BString::CopyInto(BString& target, int64 from, int64 length) const {
    target = BString(Range(from, length));
}

void BString::MoveInto(BString& target, int64 from, int64 length) {
    if (from <= 0 && length >= Length()) {
        target = std::exchange(*this, BString());
    } else {
        CopyInto(target, from, length);
        Remove(from, length);
    }
}

std::string_view BString::Range(int64 from, int64 length) const {
    from = std::clamp<int64>(from, 0, Length());
    length = std::clamp<int64>(length, 0, Length() - from);
    return std::string_view(*this).substr(static_cast<std::size_t>(from),
                                          static_cast<std::size_t>(length));
}
