// SPDX-License-Identifier: GPL-3.0-or-later
// Fonts and their measures.
#pragma once

#include "kits/support/SupportDefs.h"

#include <string>
#include <string_view>

constexpr uint16 B_REGULAR_FACE = 0;
constexpr uint16 B_ITALIC_FACE = 1;

/// Measures of a font's lines in pixels, all positive. Ascent and descent count from the baseline.
struct font_height {
    float ascent = 0;
    float descent = 0;
    /// The gap between the descent of one line and the ascent of the next.
    float leading = 0;
};

/// A mask of the fields of a font that a view takes over. There is only this one, which takes all.
constexpr uint32 B_FONT_ALL = 0xFF;

/// A font of the system, as a copyable value. Window thread.
class BFont {
  public:
    /// Makes the plain font with a size of 12 pixels.
    BFont();

    void SetFace(uint16 next) { face = next; }
    uint16 Face() const { return face; }
    /// Sets the size in pixels.
    void SetSize(float next) { size = next; }
    float Size() const { return size; }
    /// Returns the family; empty means the family that the desktop has chosen.
    const std::string& Family() const { return family; }
    void SetFamily(std::string_view name) { family = name; }

    void GetHeight(font_height* height) const;
    /// Returns the advance width of the text in pixels: the distance from its start to the start of
    /// a text that follows.
    float StringWidth(std::string_view text) const;
    /// Returns the distance from the start of the text to the right end of its ink, in pixels.
    /// Slanted letters reach beyond the advance width.
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

/// Sets the family of the plain font, in place of the desktop's choice. It must be called before
/// the first view is created. Window thread.
void SetPlainFontFamily(std::string_view family);

} // namespace kits
