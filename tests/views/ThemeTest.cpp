// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/Theme.h"

#include "support/WindowStage.h"
#include "views/Contrast.h"

#include <utility>

#include <gtest/gtest.h>

namespace {

using test::Contrast;
using vexa::ColorSet;
using vexa::Theme;

TEST(Theme, TextAndLinesCanBeSeen) {
    constexpr double kText = 4.5;
    constexpr double kLine = 3;
    // The brightest colour of the logo bar.
    constexpr rgb_color kBar = {43, 51, 80};
    for (const ColorSet set : {ColorSet::Light, ColorSet::Dark}) {
        vexa::ChooseColors(set);
        const Theme& c = vexa::Colors();
        const struct {
            const char* what;
            rgb_color above;
            rgb_color below;
            double least;
        } pairs[] = {
            {"text on the panel", c.text, c.panel, kText},
            {"quiet text on the panel", c.quietText, c.panel, kText},
            {"text on a row", c.text, c.list, kText},
            {"text on a row under the pointer", c.text, c.rowHover, kText},
            {"text on the chosen row", c.text, c.rowChosen, kText},
            {"quiet text on a row", c.quietText, c.list, kText},
            {"quiet text on the chosen row", c.quietText, c.rowChosen, kText},
            {"a star on a row", c.star, c.list, kLine},
            {"the focus on the panel", c.accent, c.panel, kLine},
            {"the focus on an envelope", c.accent, c.editor, kLine},
            {"the edge of a knob", c.knobEdge, c.panel, kLine},
            {"a sounding key", c.soundingKey, c.blackKey, kLine},
            {"the scope", c.scopeLine, c.scope, kLine},
            {"text in a field", c.controls.text, c.controls.field, kText},
            {"text of a button", c.controls.text, c.controls.buttonBottom, kText},
            {"text of a button that is pressed", c.controls.text, c.controls.buttonPressed, kText},
            {"text of a button that records", c.controls.runningText, c.controls.running, kText},
            {"a button that records, on the bar", c.controls.running, kBar, kLine},
            {"selected text", c.controls.selectedText, c.controls.selection, kText},
            {"text on a file panel", c.controls.text, c.controls.sheet, kText},
            {"text in its list", c.controls.text, c.controls.list, kText},
            {"text in every other row", c.controls.text, c.controls.otherRow, kText},
            {"text of its header", c.controls.text, c.controls.header, kText},
            {"a tip", c.controls.tipText, c.controls.tip, kText},
            {"text in a wrong field", c.controls.text, c.controls.wrongField, kText},
            {"the frame of a wrong field", c.controls.wrongFrame, c.panel, kLine},
            {"the frame of a field", c.controls.fieldFrame, c.controls.field, kLine},
            {"envelope 1", c.envelopes[0], c.editor, kLine},
            {"envelope 2", c.envelopes[1], c.editor, kLine},
            {"envelope 3", c.envelopes[2], c.editor, kLine},
            {"envelope 4", c.envelopes[3], c.editor, kLine},
            {"envelope 1 named", c.envelopes[0], c.panel, kText},
            {"envelope 2 named", c.envelopes[1], c.panel, kText},
            {"envelope 3 named", c.envelopes[2], c.panel, kText},
            {"envelope 4 named", c.envelopes[3], c.panel, kText},
        };
        for (const auto& pair : pairs)
            EXPECT_GE(Contrast(pair.above, pair.below), pair.least)
                << pair.what << (set == ColorSet::Dark ? ", dark" : ", light");
    }
    vexa::ChooseColors(ColorSet::Light);
}

} // namespace
