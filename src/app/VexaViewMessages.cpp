// SPDX-License-Identifier: GPL-3.0-or-later
// The effects of the main view's messages.
#include "app/Alerts.h"
#include "app/Attachment.h"
#include "app/ExpressionFeedback.h"
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "documents/ApplySound.h"
#include "documents/NumberDoubt.h"
#include "kits/interface/Control.h"
#include "kits/midi/ControllerNumbers.h"
#include "kits/midi/MidiRoster.h"
#include "kits/support/NumberText.h"
#include "views/R2RFView.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vexa {

namespace {

/// The width in pixels of the plane's view, which shows the display width.
constexpr float kPlaneWidth = 300.0F;

/// The fields that set how the plane is shown.
constexpr struct {
    FunctionField field;
    void (R2RFView::*set)(float);
} kPlaneControls[] = {
    {FunctionField::Width, &R2RFView::SetScale},
    {FunctionField::LinkFunctionX, &R2RFView::SetLinkFunctionX},
    {FunctionField::LinkFunctionY, &R2RFView::SetLinkFunctionY},
    {FunctionField::LinkScreenX, &R2RFView::SetLinkScreenX},
    {FunctionField::LinkScreenY, &R2RFView::SetLinkScreenY},
};

/// Returns what the text sets in the plane's view; nothing if it changes nothing there.
std::optional<float> SettingIn(FunctionField field, const std::string& text) {
    if (field == FunctionField::Width) {
        const std::optional<float> width = WidthIn(text);
        return width ? std::optional(*width / kPlaneWidth) : std::nullopt;
    }
    const auto number = static_cast<float>(kits::NumberOf(text));
    return std::isnan(number) ? std::nullopt : std::optional(number);
}

} // namespace

void VexaView::MessageReceived(BMessage* message) {
    NoteSteps();
    Take(message);
    NoteSteps();
}

void VexaView::Take(BMessage* message) {
    const uint32 code = message->what;
    if (TakeParameter(code) || TakePlaneControl(code) || TakeMenuChoice(code) ||
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

bool VexaView::TakePlaneControl(uint32 code) {
    for (const auto& control : kPlaneControls) {
        if (RowOf(control.field).code != code)
            continue;
        fields.MarkNumber(control.field);
        if (const auto setting = SettingIn(control.field, fields.TextOf(control.field)))
            (plane->*control.set)(*setting);
        return true;
    }
    return false;
}

/// Shows the plane as it was at the present step. A text that changes nothing there leaves what the
/// last other one before it has set.
void VexaView::RestorePlane() {
    for (const auto& control : kPlaneControls) {
        if (SettingIn(control.field, fields.TextOf(control.field)))
            continue;
        for (Function function : Steps().Functions()) {
            const auto setting = SettingIn(control.field, RowOf(control.field).text(function));
            if (!setting)
                continue;
            (plane->*control.set)(*setting);
            break;
        }
    }
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
