// SPDX-License-Identifier: GPL-3.0-or-later
// The panel knows where the formulas of the main view stand, and the gaps in them for the fields.
#pragma once

#include "app/FieldId.h"
#include "kits/interface/Font.h"
#include "kits/support/Geometry.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class BView;

namespace vexa {

/// Tops of the blocks of dCx/dt, dCy/dt, Ax and Ay, which are those of their envelopes' editors.
std::span<const float, 4> EnvelopeTops();

/// The fixed text of the main view, placed by the measures of the panel font. Positions are in view
/// coordinates, in pixels. It is a value that can be copied. Window thread.
class FormulaPanel {
  public:
    /// `base` gives the family; face and size are the panel's own.
    explicit FormulaPanel(const BFont& base);

    struct Text {
        std::string text;
        /// The left end of the baseline.
        BPoint baseline;
        /// The envelope in whose colour it is, if it is in one's.
        std::optional<std::size_t> envelope;
    };
    /// A fraction bar.
    struct Bar {
        BPoint from;
        BPoint to;
    };
    /// A gap is room for a text field.
    struct Gap {
        FieldId field;
        BPoint baseline;
        /// The width in pixels.
        float width;
    };

    const BFont& Font() const { return font; }
    const std::vector<Text>& Texts() const { return texts; }
    const std::vector<Bar>& Bars() const { return bars; }
    const std::vector<Gap>& Gaps() const { return gaps; }
    /// Returns the gap of a field, null if there is none.
    const Gap* FindGap(FieldId field) const;
    /// The frame of a text field that stands in the gap with its text on the gap's baseline, clear
    /// of the letters before it.
    BRect FieldFrame(FieldId field) const;

    /// Returns the first whole pixel at or right of the point that no text before it on the
    /// baseline reaches.
    float ClearOf(BPoint baseline) const;

    /// Returns where the widest line ends, with its last field.
    float Right() const { return right; }
    /// Returns where the text "displaywidth =" ends.
    BPoint WidthEnd() const { return widthEnd; }
    /// Returns the baseline of the row "link (".
    float LinkBaseline() const { return link; }
    /// Returns the pixels from a baseline to the lowest pixel below it.
    float Descent() const { return height.descent; }

    /// Paints texts and bars. It is called inside the view's Draw.
    void Draw(BView& view) const;

  private:
    float Width(std::string_view text) const { return font.StringWidth(text); }
    void Put(std::string_view text, float x, float baseline,
             std::optional<std::size_t> envelope = std::nullopt);
    void PutGap(FieldId field, float x, float baseline, float width);
    void PutDriftBlock(char axis, ParameterId first, std::size_t envelope);
    void PutRadiusBlock(char axis, ParameterId first, std::size_t envelope);
    void PutSum(ParameterId first, float top, bool closed);
    void PutOrbitLine(char axis, ParameterId ratio, ParameterId start, float baseline);
    void PutPlaneControls();

    BFont font;
    font_height height;
    /// The height of a line, and the distance from one line of a block to the next, in pixels.
    float lineHeight;
    float pitch;
    BPoint widthEnd;
    float link = 0;
    float right = 0;
    std::vector<Text> texts;
    std::vector<Bar> bars;
    std::vector<Gap> gaps;
};

} // namespace vexa
