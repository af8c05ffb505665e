// SPDX-License-Identifier: GPL-3.0-or-later
// Fonts and their measures.
#pragma once

#include "kits/support/SupportDefs.h"

#include <string>
#include <string_view>

constexpr uint16 B_REGULAR_FACE = 0;
constexpr uint16 B_ITALIC_FACE = 1;

/// Distances from the baseline in pixels, all positive.
struct font_height {
    float ascent = 0;
    float descent = 0;
    /// The pixels between the descent of one line and the ascent of the next.
    float leading = 0;
};

/// This mask chooses which fields of a font a view takes over; there is but one, which takes them
/// all.
constexpr uint32 B_FONT_ALL = 0xFF;

/// A font of the system, as a value that can be copied. Window thread.
class BFont {
  public:
    /// Makes the plain font in a size of 12 pixels.
    BFont();

    void SetFace(uint16 next) { face = next; }
    uint16 Face() const { return face; }
    /// Sets the size in pixels.
    void SetSize(float next) { size = next; }
    float Size() const { return size; }
    /// Returns the family; an empty text stands for the one that the desktop has chosen.
    const std::string& Family() const { return family; }
    void SetFamily(std::string_view name) { family = name; }

    void GetHeight(font_height* height) const;
    /// Returns the pixels from the start of the text to where the next one would start.
    float StringWidth(std::string_view text) const;
    /// Returns the pixels from the start of the text to the right end of its ink: slanted letters
    /// reach beyond the width.
    float InkWidth(std::string_view text) const;

    bool operator==(const BFont&) const = default;

  private:
    std::string family;
    float size = 12;
    uint16 face = B_REGULAR_FACE;
};

/// The font that controls and labels use.
const BFont* be_plain_font();

namespace kits {

/// Makes this family, which need not be the desktop's, the plain font's from now on. It must be
/// called before the first view is made. Window thread.
void SetPlainFontFamily(std::string_view family);

} // namespace kits
