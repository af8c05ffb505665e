// SPDX-License-Identifier: GPL-3.0-or-later
// The colours of the window, in three sets.
#pragma once

#include "kits/interface/Colors.h"

namespace vexa {

/// Every colour that a view of the window draws with. Text on `panel`, `editor`, `bar` and `row...`
/// has a contrast of at least 4.5 to 1, lines of at least 3 to 1 (the ratio of WCAG 2.1).
struct Theme {
    /// The colours behind the main view, the drawer and the strip, and behind the envelopes.
    rgb_color panel;
    rgb_color editor;
    rgb_color text;
    /// The colour of what is said beside, and of what is not to be used at present.
    rgb_color quietText;
    rgb_color dimText;
    /// The colour of the lines between areas.
    rgb_color edge;
    /// The colour of what has the focus and of what is chosen.
    rgb_color accent;
    /// The drawer: behind the rows, under the pointer, and the chosen one.
    rgb_color list;
    rgb_color rowHover;
    rgb_color rowChosen;
    rgb_color star;
    /// The logo bar: its text, what is well, what asks for attention, what is wrong.
    rgb_color barText;
    rgb_color barQuietText;
    rgb_color good;
    rgb_color warning;
    rgb_color bad;
    /// The strip: knobs, keys and scope.
    rgb_color knob;
    rgb_color knobEdge;
    rgb_color whiteKey;
    rgb_color blackKey;
    rgb_color soundingKey;
    rgb_color scope;
    rgb_color scopeLine;
    /// The curves of the envelopes, in the order of EnvelopePlaces().
    rgb_color envelopes[4];
    kits::ControlColors controls;
};

/// Classic has the first version's colours and hairlines. The others are easier to read and draw
/// curves smoothly.
enum class ColorSet { Classic, Light, Dark };

/// Returns the set that is chosen, which is Light at first. Window thread.
const Theme& Colors();
ColorSet ChosenColors();

/// Chooses a set, for controls too; all views are told by BView::ColorsChanged. Window thread,
/// while there is an application.
void ChooseColors(ColorSet next);

} // namespace vexa
