// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VexaApplication.h"

#include "app/Attachment.h"
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "app/VexaWindow.h"
#include "app/strip/Strip.h"
#include "app/strip/TuningControls.h"
#include "kits/interface/Menu.h"

#include <cstdio>
#include <cstdlib>

namespace vexa {

namespace {

/// Of the logo bar and the main view, on the screen.
constexpr BRect kFrame = {64, 100, 999, 610};

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
      window(new VexaWindow(kFrame, folders,
                            {.withDefaultSound = !options.sound, .classic = options.classic})) {
    VexaView& view = window->MainView();
    view.Playing().consumer.SetTuning(tuning);
    window->Playing().Tuning().Show(options.tuning, tuning);
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

VexaApplication::VexaApplication(const kits::ProgramFolders& folders, Attachment& plugin,
                                 std::optional<uint32> into)
    : BApplication(kSignature),
      window(new VexaWindow(kFrame, folders, {.withDefaultSound = false, .plugin = &plugin})) {
    if (into)
        window->EmbedInto(*into);
    window->Show();
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

namespace {

int RunAttached(int descriptor, std::optional<uint32> into, const kits::ProgramFolders& folders) {
    auto plugin = Attachment::Begin(descriptor);
    if (!plugin) {
        std::fprintf(stderr, "vexa: --attach: %s\n", plugin.Fault().text.c_str());
        return 1;
    }
    VexaApplication(folders, **plugin, into).Run();
    const std::string& fault = (*plugin)->Fault();
    if (!fault.empty())
        std::fprintf(stderr, "vexa: the plug-in closes the window: %s\n", fault.c_str());
    return fault.empty() ? 0 : 1;
}

} // namespace

int RunWindow(const AppOptions& options, const kits::ProgramFolders& folders, const Tuning& tuning,
              kits::Recording* recording) {
    if (options.into)
        kits::ChooseXServer();
    if (const auto display = kits::FindDisplay(); !display) {
        std::fprintf(stderr,
                     "vexa: %s; vexa --no-window plays without one, vexa-render renders a MIDI "
                     "file to a sound file\n",
                     display.Fault().text.c_str());
        return 1;
    }
    if (options.attach)
        return RunAttached(*options.attach, options.into, folders);
    VexaApplication(options, folders, tuning, recording).Run();
    return 0;
}

} // namespace vexa
