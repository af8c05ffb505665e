// SPDX-License-Identifier: GPL-3.0-or-later
// The main view of an instrument that plays in a plug-in.
#include "app/Alerts.h"
#include "app/Attachment.h"
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "app/plane/PlaneDesk.h"
#include "kits/interface/Application.h"
#include "kits/interface/Control.h"
#include "views/EnvView.h"

namespace vexa {

namespace {

/// The pulses after which a plug-in that has gone ends the program even if its last news has not
/// been read: an open alert may hold up TakeNews.
constexpr int kPulsesOfGrace = 3;

/// Ends the program at once, even if an alert is open.
void Leave() {
    BMessage quit(B_QUIT_REQUESTED);
    be_app->MessageReceived(&quit);
}

} // namespace

/// Begins the view of a plug-in's sound. The host has the devices and sets the voice limit.
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
}

void VexaView::FollowPlugin() {
    TakeNews();
    // The sound is the plug-in's by now, which never had the view's initial one.
    BeginHistory();
    plugin->Watch(BMessenger(this), kNewsCode);
}

/// Takes the news of the plug-in, and offers it the user's changes.
void VexaView::TakeNews() {
    if (const std::optional<Sound> next = plugin->Take()) {
        NoteSteps();
        const std::string name = next->info.name.value_or("the host's sound");
        LoadAs(*next, name, name);
        offeredAt = Edits();
    }
    plugin->Show(Engine());
    if (const PlayingTexts hosts = plugin->HostsPlaying(); hosts != instrument.Preferred())
        instrument.Prefer(hosts);
    OfferEdits();
    if (plugin->IsOver())
        Leave();
}

bool VexaView::HostSetsMacro(std::size_t macro) const {
    return plugin && plugin->HostSetsMacro(macro);
}

void VexaView::OfferEdits() {
    if (offeredAt == Edits())
        return;
    offeredAt = Edits();
    if (!plugin->Offer(ConfirmedSound()))
        ErrorAlert("The sound is too large for the plug-in, which plays the one before.");
}

void VexaView::WatchPlugin() {
    pulsesAlone = plugin->IsOver() ? pulsesAlone + 1 : 0;
    if (pulsesAlone > kPulsesOfGrace)
        Leave();
}

} // namespace vexa
