// SPDX-License-Identifier: GPL-3.0-or-later
// The main view of an instrument that plays in a plug-in.
#include "app/Attachment.h"
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "app/plane/PlaneDesk.h"
#include "kits/interface/Application.h"
#include "kits/interface/Control.h"
#include "views/EnvView.h"

#include <utility>

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
    desk->SendTo(play);
    ShowSound();
    TakeNews();
    plugin->Watch(BMessenger(this), kNewsCode);
}

/// What has come from the plug-in, and what a person has done here.
void VexaView::TakeNews() {
    if (const std::optional<Sound> next = plugin->Take(Playing())) {
        NoteSteps();
        const std::string name = next->info.name.value_or("the host's sound");
        LoadAs(*next, name, name);
        // What this view began with was never the plug-in's.
        if (!std::exchange(hasPluginSound, true))
            BeginHistory();
        offeredAt = Edits();
    }
    if (offeredAt != Edits()) {
        offeredAt = Edits();
        if (!plugin->Offer(ConfirmedSound()))
            ErrorAlert("The sound is too large for the plug-in, which plays the one before.");
    }
    if (plugin->IsOver())
        Leave();
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
