// SPDX-License-Identifier: GPL-3.0-or-later
// The layout of the formulas in the main view, with the gaps for the fields.
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

/// Returns the tops of the blocks of dCx/dt, dCy/dt, Ax and Ay, which are also the tops of their
/// envelope editors.
std::span<const float, 4> EnvelopeTops();

/// The fixed text of the main view, placed by the measures of the panel font. Positions are in view
/// coordinates, in pixels. It can be copied. Window thread.
class FormulaPanel {
  public:
    /// `base` gives the font family; the panel sets face and size itself.
    explicit FormulaPanel(const BFont& base);

    struct Text {
        std::string text;
        /// The left end of the baseline.
        BPoint baseline;
        /// The index of the envelope in whose colour the text is drawn, if any.
        std::optional<std::size_t> envelope;
    };
    /// A fraction bar.
    struct Bar {
        BPoint from;
        BPoint to;
    };
    /// The room for a text field.
    struct Gap {
        FieldId field;
        BPoint baseline;
        /// The width in pixels.
        float width;
    };

    const BFont& Font() const { return font; }
    const std::vector<Text>& Texts() const { return texts; }
    const std::vector<Gap>& Gaps() const { return gaps; }
    /// Returns the gap of a field, null if there is none.
    const Gap* FindGap(FieldId field) const;
    /// Returns the frame of a text field in the gap. The field's text stands on the gap's baseline,
    /// and the field begins right of the letters before it.
    BRect FieldFrame(FieldId field) const;

    /// Returns a whole pixel that lies right of the point and of the ink of each text that begins
    /// before the point on the same baseline.
    float ClearOf(BPoint baseline) const;

    /// Returns the right end of the widest line, including its last field.
    float Right() const { return right; }
    /// Returns the right end of the text "displaywidth =", on its baseline.
    BPoint WidthEnd() const { return widthEnd; }
    /// Returns the baseline of the row "link (".
    float LinkBaseline() const { return link; }
    /// Returns the font's descent, from a baseline to the lowest pixel below it.
    float Descent() const { return height.descent; }

    /// Paints texts and bars. Must be called inside the view's Draw.
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
