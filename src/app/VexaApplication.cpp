// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VexaApplication.h"

#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "app/VexaWindow.h"
#include "kits/interface/Menu.h"

#include <cstdio>
#include <cstdlib>

namespace vexa {

namespace {

constexpr const char* kSignature = "application/x-vnd.orvo-Vexa";

/// Chooses the item of a menu whose message has that code.
void Choose(BMenu& menu, uint32 code) {
    if (BMenuItem* item = menu.FindItem(code))
        item->Choose();
}

} // namespace

VexaApplication::VexaApplication(const AppOptions& options, const kits::ProgramFolders& folders,
                                 const Tuning& tuning, kits::Recording* recording)
    : BApplication(kSignature),
      window(new VexaWindow(BRect{64, 100, 999, 610}, folders, !options.sound)) {
    VexaView& view = window->MainView();
    view.Playing().consumer.SetTuning(tuning);
    if (options.mpe)
        view.Playing().consumer.ExpectMpe();
    view.FollowPrograms(options.programs);
    view.Prefer(options.playing);
    window->Show();
    view.Record(recording);
    if (options.sound)
        view.LoadSound(*options.sound);
    if (options.file)
        view.Open(*options.file);
    // What the command line asks for is no change.
    view.TakeAsSaved();
    if (options.voices)
        Choose(view.VoicesMenu(), VoicesCode(*options.voices));
    if (options.channel)
        Choose(view.ChannelMenu(),
               *options.channel < 0 ? kAllChannelsCode : ChannelCode(*options.channel + 1));
    // Without any gear a newcomer plays on the keys before him.
    view.ChooseSource(options.midi.value_or(ComputerKeyboard::kName));
}

void VexaApplication::MessageReceived(BMessage* message) {
    BApplication::MessageReceived(message);
}

void ShowFault(const std::string& text) {
    // On a platform without a screen there is nobody to answer.
    if (!kits::FindDisplay() || std::getenv("QT_QPA_PLATFORM"))
        return;
    const BApplication application(kSignature);
    VexaView::ErrorAlert(text);
}

int RunWindow(const AppOptions& options, const kits::ProgramFolders& folders, const Tuning& tuning,
              kits::Recording* recording) {
    if (const auto display = kits::FindDisplay(); !display) {
        std::fprintf(stderr,
                     "vexa: %s; vexa --no-window plays without one, vexa-render renders a MIDI "
                     "file to a sound file\n",
                     display.Fault().text.c_str());
        return 1;
    }
    VexaApplication(options, folders, tuning, recording).Run();
    return 0;
}

} // namespace vexa
