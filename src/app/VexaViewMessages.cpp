// SPDX-License-Identifier: GPL-3.0-or-later
// The effects of the main view's messages.
#include "app/Attachment.h"
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "documents/ApplySound.h"
#include "documents/NumberDoubt.h"
#include "kits/interface/Control.h"
#include "kits/midi/ControllerNumbers.h"
#include "kits/midi/MidiRoster.h"
#include "kits/support/NumberText.h"
#include "kits/support/Quoted.h"
#include "views/R2RFView.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vexa {

namespace {

/// The width in pixels of the plane's view, which shows the display width.
constexpr float kPlaneWidth = 300.0F;

/// Returns the value of a float field's text; nothing if the text is not a number (NaN).
std::optional<float> NumberIn(const std::string& text) {
    const auto number = static_cast<float>(kits::NumberOf(text));
    if (std::isnan(number))
        return std::nullopt;
    return number;
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
        Compile(TextOf(FunctionField::Expression).c_str());
        break;
    case kExpressionTypedCode:
        TakeTyping();
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
        SetupMidiMenu();
        break;
    default:
        BView::MessageReceived(message);
    }
}

bool VexaView::TakeParameter(uint32 code) {
    for (const Parameter& row : Parameters()) {
        if (row.code != code)
            continue;
        if (instrument.Edit(row, TextOf(row.id)) == TextFault::ControllerNumber)
            ErrorAlert(kInvalidController);
        MarkNumber(row.id, row.controller);
        return true;
    }
    return false;
}

/// Marks a field if its text is not used completely; its tool tip says what was understood.
void VexaView::MarkNumber(FieldId id, bool controller) {
    const std::string doubt = id == FunctionField::Frequency ? FrequencyDoubt(TextOf(id))
                                                             : NumberDoubt(TextOf(id), controller);
    Field(id).MarkWrong(!doubt.empty());
    Field(id).SetToolTip(doubt.c_str());
}

bool VexaView::TakePlaneControl(uint32 code) {
    static constexpr struct {
        FunctionField field;
        void (R2RFView::*set)(float);
    } kControls[] = {
        {FunctionField::LinkFunctionX, &R2RFView::SetLinkFunctionX},
        {FunctionField::LinkFunctionY, &R2RFView::SetLinkFunctionY},
        {FunctionField::LinkScreenX, &R2RFView::SetLinkScreenX},
        {FunctionField::LinkScreenY, &R2RFView::SetLinkScreenY},
    };
    for (const auto& control : kControls) {
        if (RowOf(control.field).code != code)
            continue;
        MarkNumber(control.field);
        if (const auto number = NumberIn(TextOf(control.field)))
            (plane->*control.set)(*number);
        return true;
    }
    if (code != kScaleCode)
        return false;
    MarkNumber(FunctionField::Width);
    const std::string text = TextOf(FunctionField::Width);
    const std::optional<float> width = NumberIn(text);
    if (width && *width > 0) {
        plane->SetScale(*width / kPlaneWidth);
    } else {
        BTextControl& field = Field(FunctionField::Width);
        field.MarkWrong(true);
        field.SetToolTip((kits::Quoted(text) + " is no width and changes nothing").c_str());
    }
    return true;
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

void VexaView::SilenceAll() {
    keyboard.ReleaseAll();
    piano.ReleaseAll();
    if (plugin)
        plugin->Play(0xB0, kits::kAllSoundOff, 0);
    else
        graph->Consumer().AllNotesOff(false, 0);
}

} // namespace vexa
