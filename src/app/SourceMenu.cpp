// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SourceMenu.h"

#include "app/Alerts.h"
#include "app/ComputerKeyboard.h"
#include "app/MessageCodes.h"
#include "kits/interface/Menu.h"
#include "kits/midi/MidiRoster.h"

#include <cstdio>
#include <utility>

namespace vexa {

SourceMenu::SourceMenu(const BMessenger& target, ComputerKeyboard& keyboard)
    : target(target), keyboard(keyboard), menu(new BPopUpMenu("midi source")) {}

void SourceMenu::Fill(bool follows) {
    followsPrograms = follows;
    std::string reason;
    if (BMidiRoster* roster = BMidiRoster::MidiRoster(&reason)) {
        Show(*roster);
        return;
    }
    menu->RemoveAll();
    menu->AddItem(new BMenuItem("none", new BMessage(kNoSourceCode)));
    std::fprintf(stderr, "vexa: there are no MIDI sources: %s\n", reason.c_str());
    ErrorAlert("Where is the MIDI roster?!?", reason);
}

/// Connects the chosen source, and fills the menu.
void SourceMenu::Show(BMidiRoster& roster) {
    const std::string refused = Connect(roster) ? "" : std::exchange(chosen, {});
    menu->RemoveAll();
    menu->AddItem(new BMenuItem("none", new BMessage(kNoSourceCode)));
    if (!chosen.empty() && !connected)
        menu->AddItem(
            new BMenuItem(("waiting for " + chosen).c_str(), new BMessage(kFirstSourceCode)));
    int32 id = 0;
    while (BMidiProducer* source = roster.NextProducer(&id)) {
        const uint32 code = kFirstSourceCode + static_cast<uint32>(id);
        menu->AddItem(new BMenuItem(source->Name().c_str(), new BMessage(code)));
        source->Release();
    }
    menu->AddItem(new BSeparatorItem);
    menu->AddItem(new BMenuItem(followsPrograms ? "Ignore program changes"
                                                : "Let program changes choose sounds",
                                new BMessage(kFollowProgramsCode)));
    menu->SetTargetForItems(target);
    const uint32 code =
        chosen.empty() ? kNoSourceCode : kFirstSourceCode + static_cast<uint32>(connected);
    if (BMenuItem* item = menu->FindItem(code))
        item->SetMarked(true);
    if (!refused.empty())
        ErrorAlert("Could not connect the MIDI source\n" + refused);
}

void SourceMenu::Choose(const std::string& name) {
    chosen = name;
    if (BMidiRoster* roster = BMidiRoster::MidiRoster())
        Show(*roster);
}

void SourceMenu::ConnectTo(BMidiLocalConsumer& next) {
    consumer = &next;
    if (BMidiRoster* roster = BMidiRoster::MidiRoster())
        Show(*roster);
}

bool SourceMenu::Take(uint32 code) {
    if (code == kNoSourceCode) {
        Choose("");
        return true;
    }
    // Source numbers are small; codes far above belong to other messages.
    constexpr uint32 kMostSources = 1U << 16;
    if (code < kFirstSourceCode || code - kFirstSourceCode > kMostSources)
        return false;
    const BMenuItem* item = menu->FindItem(code);
    if (!item)
        return false;
    // Who waits for a source goes on waiting.
    if (code != kFirstSourceCode)
        Choose(item->Label());
    return true;
}

/// Connects the chosen source if it is there, and disconnects another one. Returns false if it is
/// there and refuses for good.
bool SourceMenu::Connect(BMidiRoster& roster) {
    if (!consumer)
        return true;
    BMidiProducer* source = chosen.empty() ? nullptr : roster.FindProducer(chosen);
    const int32 wanted = source ? source->ID() : 0;
    status_t status = B_OK;
    if (wanted != connected) {
        keyboard.ReleaseAll();
        if (BMidiProducer* before = connected ? roster.FindProducer(connected) : nullptr) {
            before->Disconnect(consumer);
            before->Release();
        }
        status = source ? source->Connect(consumer) : B_OK;
        connected = status == B_OK ? wanted : 0;
    }
    if (source)
        source->Release();
    return status == B_OK || status == B_WOULD_BLOCK;
}

} // namespace vexa
