// SPDX-License-Identifier: GPL-3.0-or-later
// The colours of the window, in three sets.
#pragma once

#include "kits/interface/Colors.h"

namespace vexa {

/// All colours that the views of the window draw with. Text on `panel`, `editor`, the logo bar and
/// `row...` has a contrast of at least 4.5 to 1, lines of at least 3 to 1 (contrast ratio of WCAG
/// 2.1).
struct Theme {
    /// The background of the main view, the drawer and the strip, and that of the envelopes.
    rgb_color panel;
    rgb_color editor;
    rgb_color text;
    /// Secondary texts, and texts of unavailable items.
    rgb_color quietText;
    rgb_color dimText;
    /// The lines between areas.
    rgb_color edge;
    /// The focus and the chosen item.
    rgb_color accent;
    /// The drawer: the background of its rows, of the row under the pointer and of the chosen row.
    rgb_color list;
    rgb_color rowHover;
    rgb_color rowChosen;
    rgb_color star;
    /// The logo bar: its text, and the colours of good states, of warnings and of faults.
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
    /// The text on what has the colour of sounding keys.
    rgb_color soundingText;
    rgb_color scope;
    rgb_color scopeLine;
    /// The curves of the envelopes, in the order of EnvelopePlaces().
    rgb_color envelopes[4];
    kits::ControlColors controls;
};

/// The sets of colours. Classic has the colours and hairlines of the first version; the others are
/// easier to read and draw curves antialiased.
enum class ColorSet { Classic, Light, Dark };

/// Return the chosen set, initially Light. Window thread.
const Theme& Colors();
ColorSet ChosenColors();

/// Chooses a set, which also applies to controls. All views are notified by BView::ColorsChanged.
/// Window thread, while there is an application.
void ChooseColors(ColorSet next);

} // namespace vexa
