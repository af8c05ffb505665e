// SPDX-License-Identifier: GPL-3.0-or-later
// A string of bytes that is cheap to consume from its front.
#pragma once

#include "kits/support/SupportDefs.h"

#include <string>
#include <string_view>

/// A string of bytes in no particular encoding, which may contain zeros. Positions and lengths
/// count bytes, from 0; ranges are cut off at the string's ends. Removing from the front takes time
/// in proportion to what is removed, not to the rest, so that a text of any size can be read by
/// taking its pieces away. Any thread, one at a time.
class BString {
  public:
    BString() = default;
    /// Copies the text up to its terminating zero; null makes the empty string.
    BString(const char* text);
    explicit BString(std::string_view text) : bytes(text) {}
    BString(const BString& other) = default;
    BString(BString&& other) noexcept;
    BString& operator=(const BString& other) = default;
    BString& operator=(BString&& other) noexcept;
    ~BString() = default;

    int64 Length() const { return static_cast<int64>(bytes.size() - start); }
    /// Returns the bytes and a terminating zero, valid until the string changes.
    const char* String() const { return bytes.c_str() + start; }
    operator std::string_view() const { return std::string_view(bytes).substr(start); }
    /// Returns the byte at a position; 0 outside of the string.
    char ByteAt(int64 position) const;
    char operator[](int64 position) const { return ByteAt(position); }

    /// Returns the position of the first occurrence, -1 if there is none.
    int64 FindFirst(std::string_view text) const;

    BString& Append(std::string_view text);
    BString& operator+=(std::string_view text) { return Append(text); }
    BString& Remove(int64 from, int64 length);
    /// Replaces every occurrence, from left to right; replacements are not searched again.
    BString& ReplaceAll(std::string_view old, std::string_view replacement);

    /// Replaces the content of `target`, another string, by the range.
    void CopyInto(BString& target, int64 from, int64 length) const;
    /// Replaces the content of `target` as CopyInto does, and removes the range here.
    void MoveInto(BString& target, int64 from, int64 length);

    friend bool operator==(const BString& a, const BString& b) {
        return std::string_view(a) == std::string_view(b);
    }
    friend bool operator==(const BString& a, const char* b) { return std::string_view(a) == b; }

  private:
    std::string_view Range(int64 from, int64 length) const;

    std::string bytes;
    /// The index in `bytes` at which the string begins. The removed bytes before it are kept until
    /// the string changes as a whole.
    std::size_t start = 0;
};
