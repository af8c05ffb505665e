// SPDX-License-Identifier: GPL-3.0-or-later
// The colours of controls, menus, panels and alerts.
#pragma once

#include "kits/interface/InterfaceDefs.h"

namespace kits {

/// A set for everything that the toolkit draws; a light one unless it says otherwise.
struct ControlColors {
    /// The colour behind the controls.
    rgb_color panel = {204, 204, 204};
    rgb_color text = {24, 24, 24};
    /// The colour of texts of disabled controls.
    rgb_color faintText = {128, 128, 128};
    /// The colours inside of text fields and lists, and of their text.
    rgb_color field = {251, 251, 251};
    /// A field that is disabled, and its frame.
    rgb_color disabledField = {214, 214, 214};
    rgb_color disabledFrame = {168, 168, 168};
    /// A field whose text is not valid, and its frame.
    rgb_color wrongField = {251, 234, 234};
    rgb_color wrongFrame = {176, 32, 32};
    rgb_color fieldFrame = {140, 140, 140};
    /// A button at its top and bottom, under the pointer, and while it is pressed.
    rgb_color buttonTop = {244, 244, 244};
    rgb_color buttonBottom = {218, 218, 218};
    rgb_color buttonHover = {248, 248, 248};
    rgb_color buttonPressed = {198, 204, 212};
    rgb_color buttonFrame = {134, 134, 134};
    /// Its frame under the pointer, and where Enter presses it; its text while it is disabled; the
    /// arrow of one that opens a menu.
    rgb_color hoverFrame = {92, 92, 92};
    rgb_color defaultFrame = {90, 111, 136};
    rgb_color faintButton = {140, 140, 140};
    rgb_color arrow = {80, 80, 80};
    /// The frame of what has the focus, and what is selected, with its text.
    rgb_color accent = {42, 96, 158};
    rgb_color selection = {42, 96, 158};
    rgb_color selectedText = {255, 255, 255};
    rgb_color tip = {255, 255, 224};
    rgb_color tipText = {24, 24, 24};
    /// The colour of file panels, and of what belongs to them.
    rgb_color sheet = {216, 216, 216};
    /// Their list, every other row of it, its header, and what divides that.
    rgb_color list = {255, 255, 255};
    rgb_color otherRow = {242, 244, 247};
    rgb_color header = {228, 228, 228};
    rgb_color headerLine = {180, 180, 180};
};

/// Gives all controls these colours from now on. Windows draw themselves anew, and their views are
/// told by BView::ColorsChanged. Window thread, while there is an application.
void SetControlColors(const ControlColors& colors);
const ControlColors& PresentControlColors();

/// True where the person has chosen dark windows on this desktop. Window thread.
bool DesktopIsDark();

} // namespace kits
