// SPDX-License-Identifier: GPL-3.0-or-later
// The main view of an instrument that plays in a plug-in.
#include "app/Attachment.h"
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "kits/interface/Application.h"
#include "kits/interface/Control.h"
#include "views/EnvView.h"

namespace vexa {

namespace {

/// Pulses after which a plug-in that has gone is not waited for to be heard out: an alert may be
/// open, behind which nothing is.
constexpr int kPulsesOfGrace = 3;

} // namespace

/// The host has the devices and says how many voices there are.
void VexaView::StartAttached() {
    for (const char* bar : {"Midi Source", "Midi Device", "Midi Channel"})
        FindView(bar)->Hide();
    instrument.SetUsualVoices(kMostVoices);
    const auto play = [this](uint8 status, uint8 first, uint8 second) {
        plugin->Play(status, first, second);
    };
    keyboard.SendTo(play);
    piano.SendTo(play);
    ShowSound();
    TakeNews();
    plugin->Watch(BMessenger(this), kNewsCode);
}

/// What has come from the plug-in, and what a person has done here.
void VexaView::TakeNews() {
    if (const std::optional<Sound> next = plugin->Take(Playing())) {
        InterpretSound(*next);
        soundName = next->info.name.value_or("the host's sound");
        TakeAsSaved();
        offeredAt = Edits();
    }
    if (offeredAt != Edits()) {
        offeredAt = Edits();
        if (!plugin->Offer(PlayingSound()))
            ErrorAlert("The sound is too large for the plug-in, which plays the one before.");
    }
    if (plugin->IsOver())
        Leave();
}

/// Of what is in the fields only what has been confirmed.
Sound VexaView::PlayingSound() const {
    Sound sound = instrument.State();
    for (std::size_t i = 0; i < envelopes.size(); i++)
        sound.envelopes[i] = envelopes[i]->Points();
    for (const auto id :
         {FunctionField::Width, FunctionField::LinkFunctionX, FunctionField::LinkFunctionY,
          FunctionField::LinkScreenX, FunctionField::LinkScreenY})
        RowOf(id).text(sound.function) = TextOf(id);
    return sound;
}

/// Those of a plug-in its host may have moved, and what the host does is not for the document.
void VexaView::FollowMacros() {
    if (!plugin)
        instrument.FollowMacros();
}

void VexaView::WatchPlugin() {
    pulsesAlone = plugin->IsOver() ? pulsesAlone + 1 : 0;
    if (pulsesAlone > kPulsesOfGrace)
        Leave();
}

/// At once, whatever waits for a person.
void VexaView::Leave() {
    BMessage quit(B_QUIT_REQUESTED);
    be_app->MessageReceived(&quit);
}

} // namespace vexa
