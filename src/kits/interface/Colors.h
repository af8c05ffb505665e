// SPDX-License-Identifier: GPL-3.0-or-later
// The colours of controls, menus, panels and alerts.
#pragma once

#include "kits/interface/InterfaceDefs.h"

namespace kits {

/// The colours of everything that the toolkit draws. The default values are a light set.
struct ControlColors {
    /// The colour behind the controls.
    rgb_color panel = {204, 204, 204};
    rgb_color text = {24, 24, 24};
    /// The colour of texts of disabled controls.
    rgb_color faintText = {128, 128, 128};
    /// The background of text fields, and of lists such as completions.
    rgb_color field = {251, 251, 251};
    /// The background and the frame of a disabled field.
    rgb_color disabledField = {214, 214, 214};
    rgb_color disabledFrame = {168, 168, 168};
    /// The background and the frame of a field whose text is invalid, and the frame of valid
    /// fields.
    rgb_color wrongField = {251, 234, 234};
    rgb_color wrongFrame = {176, 32, 32};
    rgb_color fieldFrame = {140, 140, 140};
    /// The background of a button at its top and bottom, under the pointer, and while it is
    /// pressed.
    rgb_color buttonTop = {244, 244, 244};
    rgb_color buttonBottom = {218, 218, 218};
    rgb_color buttonHover = {248, 248, 248};
    rgb_color buttonPressed = {198, 204, 212};
    rgb_color buttonFrame = {134, 134, 134};
    /// The background and the text of a button on a dark background whose action goes on.
    rgb_color running = {255, 110, 100};
    rgb_color runningText = {24, 24, 24};
    /// The frame of a button under the pointer, and that of the one that Enter presses; the text of
    /// a disabled button; the arrow of a button that opens a menu.
    rgb_color hoverFrame = {92, 92, 92};
    rgb_color defaultFrame = {90, 111, 136};
    rgb_color faintButton = {140, 140, 140};
    rgb_color arrow = {80, 80, 80};
    /// The frame of the control that has the focus, and the background and the text of a selection.
    rgb_color accent = {42, 96, 158};
    rgb_color selection = {42, 96, 158};
    rgb_color selectedText = {255, 255, 255};
    rgb_color tip = {255, 255, 224};
    rgb_color tipText = {24, 24, 24};
    /// The background of file panels and their parts.
    rgb_color sheet = {216, 216, 216};
    /// The list in a file panel, every other row of it, its header, and the lines that divide the
    /// header.
    rgb_color list = {255, 255, 255};
    rgb_color otherRow = {242, 244, 247};
    rgb_color header = {228, 228, 228};
    rgb_color headerLine = {180, 180, 180};
};

/// Sets the colours of all controls. All windows redraw themselves, and their views are notified by
/// BView::ColorsChanged. Window thread, while there is an application.
void SetControlColors(const ControlColors& colors);
const ControlColors& PresentControlColors();

/// Returns true if the user has chosen dark windows on this desktop. Window thread.
bool DesktopIsDark();

} // namespace kits
