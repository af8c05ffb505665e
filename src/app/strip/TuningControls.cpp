// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/TuningControls.h"

#include "app/VexaView.h"
#include "app/strip/NumberField.h"
#include "kits/interface/Menu.h"
#include "kits/interface/Window.h"
#include "kits/storage/Entry.h"
#include "kits/support/NumberText.h"

#include <string>

namespace vexa {

namespace {

constexpr uint32 kEqualCode = FourCC("TunE");
constexpr uint32 kSameScaleCode = FourCC("TunS");
constexpr uint32 kOpenScaleCode = FourCC("TunO");
constexpr uint32 kScaleOpenedCode = FourCC("TunR");
constexpr uint32 kUsualMapCode = FourCC("TunU");
constexpr uint32 kOpenMapCode = FourCC("TunK");
constexpr uint32 kMapOpenedCode = FourCC("TunM");
constexpr uint32 kA4Code = FourCC("TunA");

} // namespace

/// Lists the files of one extension.
class TuningControls::OfExtension : public BRefFilter {
  public:
    std::string extension;
    bool Filter(const entry_ref* ref, const struct stat*) override {
        const std::string name = ref->name;
        return name.size() > extension.size() && name.ends_with(extension);
    }
};

TuningControls::TuningControls(VexaView& mainView)
    : CellGrid("tuning of all sounds", 1),
      mainView(mainView),
      filter(std::make_unique<OfExtension>()) {
    auto* popUp = new BPopUpMenu("tuning", false);
    menu = popUp;
    field = new BMenuField({0, 0, 60, 0}, "tuning", nullptr, popUp);
    AddCell("tuning", field);
    a4 = new NumberField("A4, hertz", {kLeastA4, kMostA4, 1, false, " Hz", ""},
                         new BMessage(kA4Code));
    a4->SetTarget(this);
    AddCell("A4", a4);
    const bool here = mainView.HasGraph();
    field->SetEnabled(here);
    a4->SetEnabled(here);
    field->SetToolTip(here ? "The scale that all sounds are played in, and which key plays which "
                             "step of it: files of Scala"
                           : "The host tunes what plays in it");
    a4->SetHelp(here ? "The frequency of the A above the middle C, 1 to 20000 Hz"
                     : "The host tunes what plays in it");
    if (here)
        a4->Show(EqualTemperament()[kA4]);
    FillMenu();
}

TuningControls::~TuningControls() = default;

void TuningControls::Refresh() {
    if (choice == mainView.KeyTuning().Chosen())
        return;
    choice = mainView.KeyTuning().Chosen();
    a4->Show(mainView.KeyTuning().A4());
    FillMenu();
}

void TuningControls::FillMenu() {
    menu->RemoveAll();
    if (!mainView.HasGraph()) {
        auto* unknown = new BMenuItem("the host's", nullptr);
        menu->AddItem(unknown);
        unknown->SetMarked(true);
        return;
    }
    auto* equal = new BMenuItem("12 equal", new BMessage(kEqualCode));
    menu->AddItem(equal);
    BMenuItem* scale = nullptr;
    if (choice.scale) {
        scale = new BMenuItem(choice.scale->filename().c_str(), new BMessage(kSameScaleCode));
        menu->AddItem(scale);
    }
    menu->AddItem(new BMenuItem("Open a scale (.scl) ...", new BMessage(kOpenScaleCode)));
    menu->AddItem(new BSeparatorItem);
    auto* usual = new BMenuItem("Keys as usual", new BMessage(kUsualMapCode));
    menu->AddItem(usual);
    BMenuItem* map = nullptr;
    if (choice.keymap) {
        map = new BMenuItem(choice.keymap->filename().c_str(), nullptr);
        menu->AddItem(map);
    }
    menu->AddItem(new BMenuItem("Open a keyboard map (.kbm) ...", new BMessage(kOpenMapCode)));
    menu->SetTargetForItems(this);
    // The first marked item is the menu's title.
    (scale ? scale : equal)->SetMarked(true);
    (map ? map : usual)->SetMarked(true);
}

bool TuningControls::Choose(const TuningChoice& change) {
    const bool chosen = mainView.KeyTuning().Choose(change);
    Refresh();
    return chosen;
}

void TuningControls::OpenPanel(uint32 result, const char* title, const char* extension) {
    const BMessenger self(this);
    filter->extension = extension;
    panel = std::make_unique<BFilePanel>(B_OPEN_PANEL, &self, nullptr, B_FILE_NODE, false,
                                         new BMessage(result), filter.get(), false, true);
    const auto& beside = result == kMapOpenedCode && choice.keymap ? choice.keymap : choice.scale;
    if (beside)
        panel->SetPanelDirectory(std::filesystem::absolute(*beside).parent_path().c_str());
    panel->Window()->SetTitle(title);
    panel->Show();
}

void TuningControls::MessageReceived(BMessage* message) {
    TuningChoice change;
    entry_ref ref;
    BPath path;
    switch (message->what) {
    case kEqualCode:
        change.scale = "";
        break;
    case kUsualMapCode:
        change.keymap = "";
        break;
    case kSameScaleCode:
        return;
    case kOpenScaleCode:
        return OpenPanel(kScaleOpenedCode, "Open a scale", ".scl");
    case kOpenMapCode:
        return OpenPanel(kMapOpenedCode, "Open a keyboard map", ".kbm");
    case kScaleOpenedCode:
    case kMapOpenedCode:
        if (message->FindRef("refs", &ref) != B_OK || BEntry(&ref, false).GetPath(&path) != B_OK)
            return;
        (message->what == kScaleOpenedCode ? change.scale : change.keymap) = path.Path();
        break;
    case kA4Code: {
        const std::optional<std::string> text = a4->Typed(*message);
        std::size_t length = 0;
        const double hertz = kits::NumberOf(text.value_or(""), &length);
        const bool allowed =
            text && length == text->size() && hertz >= kLeastA4 && hertz <= kMostA4;
        a4->TellFault(text && !allowed ? "This must be a number from 1 to 20000" : "");
        if (text && !allowed)
            return;
        change.a4 = text ? hertz : 0;
        Choose(change);
        // Also if the tuning is still the one before.
        return a4->Show(mainView.KeyTuning().A4());
    }
    default:
        return CellGrid::MessageReceived(message);
    }
    Choose(change);
}

} // namespace vexa
