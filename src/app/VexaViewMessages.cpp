// SPDX-License-Identifier: GPL-3.0-or-later
// The effects of the main view's messages.
#include "app/Alerts.h"
#include "app/Attachment.h"
#include "app/ExpressionFeedback.h"
#include "app/MessageCodes.h"
#include "app/PlaneControls.h"
#include "app/VexaView.h"
#include "documents/ApplySound.h"
#include "documents/NumberDoubt.h"
#include "kits/interface/Control.h"
#include "kits/midi/ControllerNumbers.h"
#include "kits/midi/MidiRoster.h"

#include <algorithm>

namespace vexa {

void VexaView::MessageReceived(BMessage* message) {
    NoteSteps();
    Take(message);
    NoteSteps();
}

void VexaView::Take(BMessage* message) {
    const uint32 code = message->what;
    if (TakeParameter(code) || planeControls->Take(code) || TakeMenuChoice(code) ||
        TakePanelCommand(*message) || TakeSource(code) || TakeOpening(*message))
        return;
    switch (code) {
    case kExpressionCode:
        // A refused text is mended in its field.
        if (!Compile(fields.TextOf(FunctionField::Expression).c_str()))
            Field(FunctionField::Expression).MakeFocus();
        break;
    case kExpressionTypedCode:
        feedback->TakeTyping();
        break;
    case kSampleFrequencyCode:
        TakeSampleFrequency();
        break;
    case kNewsCode:
        TakeNews();
        break;
    case kProgramCode:
        LoadProgram();
        break;
    case kUndoCode:
        Undo();
        break;
    case kRedoCode:
        Redo();
        break;
    case kSaveAgainCode:
        SaveAgain();
        break;
    case kInitialSoundCode:
        InitialSound();
        break;
    case kMutateCode:
        MutateSound();
        break;
    case kSwitchSlotCode:
        SwitchAB();
        break;
    case kCopySlotCode:
        CopyToOther();
        break;
    case B_MIDI_EVENT:
        sources.Fill(followsPrograms);
        break;
    default:
        BView::MessageReceived(message);
    }
}

bool VexaView::TakeParameter(uint32 code) {
    for (const Parameter& row : Parameters()) {
        if (row.code != code)
            continue;
        if (instrument.Edit(row, fields.TextOf(row.id)) == TextFault::ControllerNumber)
            ErrorAlert(kInvalidController);
        fields.MarkNumber(row.id, row.controller);
        return true;
    }
    return false;
}

bool VexaView::TakeMenuChoice(uint32 code) {
    for (int32 n = 1; n <= kMostVoices; n++) {
        if (code == VoicesCode(n)) {
            instrument.ChooseVoices(n);
            return true;
        }
    }
    for (int32 n = 1; n <= 16; n++) {
        if (code == ChannelCode(n)) {
            SetChannel(n - 1);
            return true;
        }
    }
    if (code != kAllChannelsCode)
        return false;
    SetChannel(-1);
    return true;
}

/// Sets the MIDI channel, 0..15, or -1 for all. The computer's keyboard and the screen piano play
/// on it, or on channel 0 for all.
void VexaView::SetChannel(int32 channel) {
    keyboard.SetChannel(static_cast<uchar>(std::max(channel, 0)));
    piano.SetChannel(static_cast<uchar>(std::max(channel, 0)));
    graph->Consumer().SetChannel(channel);
}

bool VexaView::TakeSource(uint32 code) {
    if (code == kFollowProgramsCode) {
        FollowPrograms(!followsPrograms);
        return true;
    }
    if (!sources.Take(code))
        return false;
    settings->Set(kSourceSetting, sources.Chosen());
    return true;
}

void VexaView::FollowPrograms(bool on) {
    followsPrograms = on;
    graph->Consumer().Gate()->Watch(on ? &programs : nullptr);
    programs.Take();
    sources.Fill(followsPrograms);
}

void VexaView::SilenceAll() {
    keyboard.ReleaseAll();
    piano.ReleaseAll();
    if (plugin)
        plugin->Play(0xB0, kits::kAllSoundOff, 0);
    else
        graph->Consumer().AllNotesOff(false, 0);
}

} // namespace vexa
