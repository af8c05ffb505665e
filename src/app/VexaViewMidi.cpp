// SPDX-License-Identifier: GPL-3.0-or-later
// The menu of MIDI sources, and the one that is connected.
#include "app/Alerts.h"
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "kits/interface/Menu.h"
#include "kits/midi/MidiRoster.h"

#include <cstdio>

namespace vexa {

void VexaView::SetupMidiMenu() {
    deviceMenu->RemoveAll();
    deviceMenu->AddItem(new BMenuItem("none", new BMessage(kNoSourceCode)));
    std::string reason;
    BMidiRoster* roster = BMidiRoster::MidiRoster(&reason);
    if (!roster) {
        std::fprintf(stderr, "vexa: there are no MIDI sources: %s\n", reason.c_str());
        ErrorAlert("Where is the MIDI roster?!?", reason);
        return;
    }
    int32 id = 0;
    while (BMidiProducer* source = roster->NextProducer(&id)) {
        const uint32 code = kFirstSourceCode + static_cast<uint32>(id);
        deviceMenu->AddItem(new BMenuItem(source->Name().c_str(), new BMessage(code)));
        source->Release();
    }
    deviceMenu->AddItem(new BSeparatorItem);
    deviceMenu->AddItem(new BMenuItem(followsPrograms ? "Ignore program changes"
                                                      : "Let program changes choose sounds",
                                      new BMessage(kFollowProgramsCode)));
    deviceMenu->SetTargetForItems(this);
    ConnectChosenSource();
}

void VexaView::FollowPrograms(bool on) {
    followsPrograms = on;
    graph->Consumer().Gate()->Watch(on ? &programs : nullptr);
    programs.Take();
    SetupMidiMenu();
}

void VexaView::ChooseSource(const std::string& name) {
    chosenSource = name;
    ConnectChosenSource();
}

bool VexaView::TakeSource(uint32 code) {
    if (code == kNoSourceCode) {
        ChooseSource("");
        settings->Set(kSourceSetting, chosenSource);
        return true;
    }
    if (code == kFollowProgramsCode) {
        FollowPrograms(!followsPrograms);
        return true;
    }
    // Source numbers are small; codes far above belong to other messages.
    constexpr uint32 kMostSources = 1U << 16;
    if (code <= kFirstSourceCode || code - kFirstSourceCode > kMostSources)
        return false;
    const BMenuItem* item = deviceMenu->FindItem(code);
    if (item) {
        ChooseSource(item->Label());
        settings->Set(kSourceSetting, chosenSource);
    }
    return item != nullptr;
}

/// Connects the chosen source if it is there, disconnects another one, and marks the connected one
/// in the menu.
void VexaView::ConnectChosenSource() {
    BMidiRoster* roster = BMidiRoster::MidiRoster();
    if (!roster || !graph)
        return;
    BMidiProducer* chosen = chosenSource.empty() ? nullptr : roster->FindProducer(chosenSource);
    const int32 wanted = chosen ? chosen->ID() : 0;
    if (wanted != connectedSource) {
        keyboard.ReleaseAll();
        if (BMidiProducer* before =
                connectedSource ? roster->FindProducer(connectedSource) : nullptr) {
            before->Disconnect(&graph->Consumer());
            before->Release();
        }
        connectedSource = wanted;
        const status_t status = chosen ? chosen->Connect(&graph->Consumer()) : B_OK;
        if (status != B_OK)
            connectedSource = 0;
        if (status != B_OK && status != B_WOULD_BLOCK) {
            ErrorAlert("Could not connect the MIDI source\n" + chosenSource);
            chosenSource.clear();
        }
    }
    if (chosen)
        chosen->Release();
    const uint32 code =
        connectedSource ? kFirstSourceCode + static_cast<uint32>(connectedSource) : kNoSourceCode;
    if (BMenuItem* item = deviceMenu->FindItem(code))
        item->SetMarked(true);
}

} // namespace vexa
