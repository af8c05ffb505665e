// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VexaApplication.h"

#include "app/Alerts.h"
#include "app/Attachment.h"
#include "app/VexaWindow.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace vexa {

namespace {

/// The frame of the logo bar and the main view on the screen.
constexpr BRect kFrame = {64, 100, 999, 610};

constexpr const char* kSignature = "application/x-vnd.orvo-Vexa";

/// Returns the choices of a window with stored settings.
WindowChoices Remembering() {
    WindowChoices choices;
    choices.settings = ReadSettings();
    choices.classic = choices.settings->Get(kClassicSetting);
    return choices;
}

WindowChoices ChoicesOf(const AppOptions& options) {
    WindowChoices choices = Remembering();
    choices.withDefaultSound = !options.sound;
    choices.classic |= options.classic;
    return choices;
}

WindowChoices ChoicesOf(Attachment& plugin) {
    WindowChoices choices = Remembering();
    choices.withDefaultSound = false;
    choices.plugin = &plugin;
    return choices;
}

/// Returns the factor by which everything in the windows is enlarged.
double WindowScale(const Settings& settings) {
    const int percent = settings.Get(kSizeSetting);
    if (percent >= kLeastSize && percent <= kMostSize)
        return percent / 100.0;
    settings.TellWrong(kSizeSetting, "a whole number from " + std::to_string(kLeastSize) + " to " +
                                         std::to_string(kMostSize));
    return 1;
}

} // namespace

VexaApplication::VexaApplication(const kits::ProgramFolders& folders, const WindowChoices& choices)
    : BApplication(kSignature, WindowScale(*choices.settings)),
      window(new VexaWindow(kFrame, folders, choices)) {}

VexaApplication::VexaApplication(const AppOptions& options, const kits::ProgramFolders& folders)
    : VexaApplication(folders, ChoicesOf(options)) {}

VexaApplication::VexaApplication(const kits::ProgramFolders& folders, Attachment& plugin,
                                 std::optional<uint32> into)
    : VexaApplication(folders, ChoicesOf(plugin)) {
    if (into)
        window->EmbedInto(*into);
    window->BeginAttached();
}

void VexaApplication::MessageReceived(BMessage* message) {
    BApplication::MessageReceived(message);
}

void ShowFault(const std::string& text) {
    // Without a display there is nobody to answer the alert.
    if (!kits::FindDisplay() || std::getenv("QT_QPA_PLATFORM"))
        return;
    const BApplication application(kSignature);
    ErrorAlert(text);
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

int RunWindow(const AppOptions& options, const kits::ProgramFolders& folders,
              const std::string& warning, kits::Recording* recording, JoinedSession* joined) {
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
    VexaApplication application(options, folders);
    if (joined)
        application.Window().Begin(std::move(joined->session), joined->project, recording);
    else
        application.Window().Begin(options, recording);
    if (!warning.empty())
        ErrorAlert(warning);
    application.Run();
    return 0;
}

} // namespace vexa
