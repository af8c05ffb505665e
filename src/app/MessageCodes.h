// SPDX-License-Identifier: GPL-3.0-or-later
// The message codes of the main view's controls. Those of the coefficients are in Parameters().
#pragma once

#include "kits/support/SupportDefs.h"

namespace vexa {

constexpr uint32 kExpressionCode = FourCC("Fxy_");
/// Sent while the expression is being typed, before it is confirmed.
constexpr uint32 kExpressionTypedCode = FourCC("FxyT");
constexpr uint32 kSampleFrequencyCode = FourCC("SFRQ");
constexpr uint32 kScaleCode = FourCC("SCAL");
constexpr uint32 kLinkFunctionXCode = FourCC("LFx_");
constexpr uint32 kLinkFunctionYCode = FourCC("LFy_");
constexpr uint32 kLinkScreenXCode = FourCC("LSx_");
constexpr uint32 kLinkScreenYCode = FourCC("LSy_");

// Codes of the buttons that show a file panel, and of the panels' results.

constexpr uint32 kLoadFunctionCode = FourCC("FUNL");
constexpr uint32 kSaveFunctionCode = FourCC("FUNS");
constexpr uint32 kLoadSoundCode = FourCC("SNDL");
constexpr uint32 kSaveSoundCode = FourCC("SNDS");
constexpr uint32 kSaveAgainCode = FourCC("SNDA");
constexpr uint32 kLoadSampleCode = FourCC("SAML");
constexpr uint32 kOpenCode = FourCC("OPEN");
constexpr uint32 kLoadScaleCode = FourCC("SCLL");
constexpr uint32 kLoadKeymapCode = FourCC("KBML");
constexpr uint32 kOpenedCode = FourCC("OPMS");
constexpr uint32 kScaleLoadedCode = FourCC("SCMS");
constexpr uint32 kKeymapLoadedCode = FourCC("KBMS");
constexpr uint32 kFunctionLoadedCode = FourCC("FLMS");
constexpr uint32 kFunctionSavedCode = FourCC("FSMS");
constexpr uint32 kSoundLoadedCode = FourCC("SLMS");
constexpr uint32 kSoundSavedCode = FourCC("SSMS");
constexpr uint32 kSampleLoadedCode = FourCC("SMPL");

// Further codes of the main menu.

/// Opens the file whose path is the string "path".
constexpr uint32 kOpenRecentCode = FourCC("RECN");
/// Shows the panel that exports a picture of the plane.
constexpr uint32 kSavePictureCode = FourCC("PICS");
constexpr uint32 kEqualStepsCode = FourCC("12EQ");
/// Switches the classic look on or off.
constexpr uint32 kClassicCode = FourCC("CLSC");
/// Chooses the size of windows: the number "percent", a value of kSizeSetting.
constexpr uint32 kSizeCode = FourCC("SIZE");
constexpr uint32 kHelpCode = FourCC("HELP");
/// Shows the window that describes the sound.
constexpr uint32 kDescribeCode = FourCC("DSCR");
constexpr uint32 kShowSoundsCode = FourCC("SHSN");
constexpr uint32 kAboutCode = FourCC("ABOU");

// Each of these switches a part of the window, or its dark colours, on or off.

constexpr uint32 kShowDrawerCode = FourCC("DRWR");
constexpr uint32 kShowStripCode = FourCC("STRP");
constexpr uint32 kDarkCode = FourCC("DARK");

/// Sent by the logo bar. Ends all notes at once.
constexpr uint32 kSilenceCode = FourCC("SILE");

// These load the sound before or after the present one in the drawer's list.

constexpr uint32 kPreviousSoundCode = FourCC("PRVS");
constexpr uint32 kNextSoundCode = FourCC("NXTS");

// These change the whole sound; see the corresponding functions of VexaView.

constexpr uint32 kUndoCode = FourCC("UNDO");
constexpr uint32 kRedoCode = FourCC("REDO");
constexpr uint32 kInitialSoundCode = FourCC("INIT");
constexpr uint32 kMutateCode = FourCC("MUTA");
constexpr uint32 kSwitchSlotCode = FourCC("SLOT");
constexpr uint32 kCopySlotCode = FourCC("SLCP");

/// A MIDI program change has arrived.
constexpr uint32 kProgramCode = FourCC("PROG");

/// The plug-in that the window is attached to may have news.
constexpr uint32 kNewsCode = FourCC("NEWS");

// Menus.

/// Switches on or off whether program changes choose sounds.
constexpr uint32 kFollowProgramsCode = FourCC("PRGF");

constexpr uint32 kAllChannelsCode = FourCC("MC_A");
/// kNoSourceCode chooses no MIDI source. kFirstSourceCode plus the number of a source, from 1,
/// chooses that source; kFirstSourceCode itself is the one that is waited for.
constexpr uint32 kNoSourceCode = FourCC("MidO");
constexpr uint32 kFirstSourceCode = FourCC("MD00");

/// Returns a code of four characters that ends in a number of one or two digits. `one` has the
/// digit 0 in the place of a number from 1 to 9, `two` two digits 0 in the place of a number from
/// 10 to 20.
constexpr uint32 NumberedCode(const char (&one)[5], const char (&two)[5], int32 number) {
    if (number < 10)
        return FourCC(one) + uint32(number);
    return FourCC(two) + uint32(number / 10) * 256 + uint32(number % 10);
}
/// Returns the code for at most that many voices: 'VOX1'..'VOX9', 'VO10'..'VO20'.
constexpr uint32 VoicesCode(int32 most) {
    return NumberedCode("VOX0", "VO00", most);
}
/// Returns the code of a channel: 'MC_1'..'MC_9', 'MC10'..'MC16' for the channels 1..16.
constexpr uint32 ChannelCode(int32 channel) {
    return NumberedCode("MC_0", "MC00", channel);
}

static_assert(VoicesCode(1) == FourCC("VOX1") && VoicesCode(20) == FourCC("VO20"));
static_assert(ChannelCode(9) == FourCC("MC_9") && ChannelCode(16) == FourCC("MC16"));

} // namespace vexa
