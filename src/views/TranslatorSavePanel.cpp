// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TranslatorSavePanel.h"

#include "kits/interface/Alert.h"
#include "kits/interface/Control.h"
#include "kits/interface/Window.h"
#include "kits/translation/TranslatorRoster.h"
#include "views/TranslatorMenuItem.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

namespace vexa {

namespace {

constexpr uint32 kFormatChosen = FourCC("sfpf");
constexpr uint32 kShowSettings = FourCC("sfps");

/// The height that the format menu takes from the views around it, in pixels.
constexpr float kRoom = 10;
/// The gap between the controls, in pixels.
constexpr float kPanelGap = 10;
constexpr float kLargestWindow = 10000;
constexpr float kLowestHeight = 250;
constexpr float kFirstHeight = 300;

constexpr const char* kSettingsLabel = "Settings...";
constexpr const char* kFormatLabel = "Format:";

/// The position of the settings window on the screen.
constexpr BPoint kSettingsPlace = {100, 100};

/// The views that make room for the format menu, with the changes of their vertical position and
/// height.
struct Move {
    const char* view;
    float moved;
    float grown;
};
constexpr Move kMoves[] = {
    {"PoseView", 0, -kRoom},   {"cancel button", -kRoom, 0}, {"default button", -kRoom, 0},
    {"HScrollBar", -kRoom, 0}, {"CountVw", -kRoom, 0},       {"VScrollBar", 0, -kRoom},
    {"text view", kRoom, 0},
};

/// Returns the translator's first picture format for files, or null if there is none.
const translation_format* FileFormat(translator_id translator) {
    const translation_format* formats = nullptr;
    int32 count = 0;
    if (BTranslatorRoster::Default()->GetOutputFormats(translator, &formats, &count) != B_OK)
        return nullptr;
    const translation_format* const end = formats + count;
    const translation_format* const found = std::find_if(formats, end, [](const auto& format) {
        return format.group == B_TRANSLATOR_BITMAP && format.type != B_TRANSLATOR_BITMAP;
    });
    return found == end ? nullptr : found;
}

} // namespace

TranslatorSavePanel::TranslatorSavePanel(const char* name, BMessenger* target, entry_ref* directory,
                                         uint32 nodeFlavors, bool multipleSelection,
                                         BMessage* message, BRefFilter* filter, bool modal,
                                         bool hideWhenDone)
    : BFilePanel(B_SAVE_PANEL, target, directory, nodeFlavors, multipleSelection, message, filter,
                 modal, hideWhenDone),
      BHandler(name),
      saveWhat(BFilePanel::Message().what) {
    BWindow* window = Window();
    window->Lock();
    window->SetTitle("Save Image");
    for (const Move& move : kMoves) {
        if (BView* view = Background()->FindView(move.view)) {
            view->MoveBy(0, move.moved);
            view->ResizeBy(0, move.grown);
        }
    }
    window->AddHandler(this);
    if (AddControls())
        UpdateMessage();
    else
        std::printf("Couldn't find necessary controls.\n");
    window->Unlock();
}

TranslatorSavePanel::~TranslatorSavePanel() {
    if (BWindow* window = SettingsWindow())
        window->Quit();
}

bool TranslatorSavePanel::AddControls() {
    const BView* cancel = Background()->FindView("cancel button");
    const BView* scrollBar = Background()->FindView("HScrollBar");
    const BView* text = Background()->FindView("text view");
    if (!cancel || !scrollBar || !text)
        return false;

    const BRect place = cancel->Frame();
    const float width =
        std::max(75.0F, std::ceil(be_plain_font()->StringWidth(kSettingsLabel)) + 20);
    const float right = place.left - kPanelGap;
    auto* button = new BButton({right - width, place.top, right, place.bottom}, "Settings",
                               kSettingsLabel, new BMessage(kShowSettings),
                               B_FOLLOW_RIGHT | B_FOLLOW_BOTTOM, B_WILL_DRAW | B_NAVIGABLE);
    Background()->AddChild(button);
    button->SetTarget(this);

    BuildMenu();
    const float top = scrollBar->Frame().bottom + 5;
    formatField = new BMenuField({text->Frame().left, top, text->Frame().right, top + 10},
                                 "FormatMenuField", kFormatLabel, formatMenu,
                                 B_FOLLOW_LEFT | B_FOLLOW_BOTTOM, B_WILL_DRAW | B_NAVIGABLE);
    formatField->SetDivider(be_plain_font()->StringWidth(kFormatLabel) + 7);
    Background()->AddChild(formatField);

    // The window's minimum width keeps the buttons and the field from overlapping.
    BWindow* window = Window();
    const float minimum =
        window->Bounds().right - button->Frame().left + kPanelGap + text->Frame().right;
    window->SetSizeLimits(minimum, kLargestWindow, kLowestHeight, kLargestWindow);
    if (std::ceil(window->Bounds().Width()) + 1 < minimum)
        window->ResizeTo(minimum, kFirstHeight);
    return true;
}

void TranslatorSavePanel::BuildMenu() {
    formatMenu = new BPopUpMenu("FormatPopUpMenu", true, true, B_ITEMS_IN_COLUMN);
    translator_id* ids = nullptr;
    int32 count = 0;
    if (BTranslatorRoster::Default()->GetAllTranslators(&ids, &count) != B_OK)
        return;
    const std::unique_ptr<translator_id[]> owner(ids);
    for (int32 i = 0; i < count; i++) {
        const translation_format* format = FileFormat(ids[i]);
        if (!format)
            continue;
        auto* item =
            new TranslatorMenuItem(format->name, new BMessage(kFormatChosen), ids[i], format->type);
        item->SetTarget(this);
        formatMenu->AddItem(item);
    }
    if (BMenuItem* first = formatMenu->ItemAt(0))
        first->SetMarked(true);
}

TranslatorMenuItem* TranslatorSavePanel::GetCurrentMenuItem() const {
    return formatMenu ? static_cast<TranslatorMenuItem*>(formatMenu->FindMarked()) : nullptr;
}

BWindow* TranslatorSavePanel::SettingsWindow() const {
    // A window that quits is hidden before it is deleted.
    return settingsWindow.IsValid() && !settings->IsHidden() ? settings : nullptr;
}

void TranslatorSavePanel::TranslatorSettings() {
    const TranslatorMenuItem* item = GetCurrentMenuItem();
    if (!item)
        return;
    BView* view = nullptr;
    BRect extent{0, 0, 239, 239};
    const status_t status = BTranslatorRoster::Default()->MakeConfigurationView(
        item->translatorId, nullptr, &view, &extent);
    if (status != B_OK || !view) {
        (new BAlert("", std::strerror(-status), "OK"))->Go();
        return;
    }
    if (BWindow* open = SettingsWindow())
        open->Quit();
    settings = new BWindow(extent, "Translator Settings", B_TITLED_WINDOW,
                           B_NOT_RESIZABLE | B_NOT_ZOOMABLE, B_CURRENT_WORKSPACE);
    settingsWindow = BMessenger(settings);
    settings->AddChild(view);
    view->MoveTo(0, 0);
    view->ResizeTo(extent.Width(), extent.Height());
    settings->MoveTo(kSettingsPlace.x, kSettingsPlace.y);
    settings->Show();
}

/// Appends the ending of the marked format to the name in the panel, if there is one, in place of
/// another format's ending.
void TranslatorSavePanel::UpdateName() {
    const std::filesystem::path name = SaveText();
    if (!formatMenu || !name.has_stem())
        return;
    const auto endingOf = [](const BMenuItem* item) {
        const auto* format = static_cast<const TranslatorMenuItem*>(item);
        return format ? BTranslatorRoster::Default()->FileEnding(format->translatorId) : "";
    };
    const std::string before = name.extension();
    bool known = before == ".jpg" || before == ".tif";
    for (std::size_t i = 0; const BMenuItem* item = formatMenu->ItemAt(i); i++)
        known = known || before == endingOf(item);
    SetSaveText((known ? name.stem() : name).string() + endingOf(GetCurrentMenuItem()));
}

void TranslatorSavePanel::UpdateMessage() {
    BMessage message(saveWhat);
    if (const TranslatorMenuItem* item = GetCurrentMenuItem()) {
        message.AddData("translator_id", B_RAW_TYPE, &item->translatorId, sizeof(translator_id));
        message.AddInt32("translator_format", static_cast<int32>(item->outputType));
    }
    AddFields(message);
    SetMessage(&message);
}

void TranslatorSavePanel::MessageReceived(BMessage* message) {
    switch (message->what) {
    case kFormatChosen:
        UpdateName();
        return UpdateMessage();
    case kShowSettings:
        return TranslatorSettings();
    default:
        BHandler::MessageReceived(message);
    }
}

} // namespace vexa
