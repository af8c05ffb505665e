// SPDX-License-Identifier: GPL-3.0-or-later
// Opening by the menu or by dropping onto the window: documents, formulas and tunings.
#include "app/Dropped.h"
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "kits/interface/Alert.h"
#include "kits/interface/Control.h"
#include "kits/storage/Path.h"
#include "kits/support/EntryRef.h"
#include "views/R2RFVTranslatorSavePanel.h"
#include "views/R2RFView.h"

#include <algorithm>
#include <utility>

namespace vexa {

namespace {

/// Returns the text as one line, without blanks at its ends.
std::string OneLine(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
    text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

/// Returns the names, each on a line of its own, under a first line.
std::string Listed(const std::string& first, const std::vector<std::filesystem::path>& files) {
    std::string lines = first;
    for (const auto& file : files)
        lines += '\n' + file.filename().string();
    return lines;
}

/// Tells in one alert which of the dropped files were not opened.
void TellWhatIsLeft(const DroppedFiles& dropped) {
    if (dropped.others.empty() && dropped.unusable.empty())
        return;
    std::string details;
    if (!dropped.others.empty())
        details = Listed("These were not:", dropped.others);
    if (!dropped.unusable.empty())
        details += Listed((details.empty() ? "" : "\n") + std::string("These cannot be opened:"),
                          dropped.unusable);
    const char* const text = dropped.others.empty()
                                 ? "Not all of these files can be opened."
                                 : "Of each kind only the first file was opened.";
    auto* alert = new BAlert("Open", text, "Ok", nullptr, nullptr, B_WIDTH_AS_USUAL, B_INFO_ALERT);
    alert->SetDetails(details);
    alert->Show();
}

} // namespace

bool VexaView::TakeOpening(const BMessage& message) {
    std::string text;
    switch (message.what) {
    case kOpenRecentCode:
        if (message.FindString("path", &text) == B_OK)
            Open(text);
        return true;
    case kSavePictureCode:
        plane->SavePanel().Show();
        return true;
    case kEqualStepsCode:
        keyTuning.Choose({"", "", {}});
        return true;
    case B_SIMPLE_DATA:
        TakeDrop(message);
        return true;
    default:
        return false;
    }
}

void VexaView::TakeDrop(const BMessage& message) {
    std::string text;
    if (message.FindString("text", &text) == B_OK) {
        // A file manager may drop a file's name as plain text.
        if (const std::string line = OneLine(std::move(text)); !line.empty()) {
            Field(FunctionField::Expression).Type(line.c_str());
            Field(FunctionField::Expression).Confirm();
        }
        return;
    }
    std::vector<std::filesystem::path> files;
    entry_ref ref;
    for (int32 i = 0; message.FindRef("refs", i, &ref) == B_OK; i++)
        files.push_back(std::filesystem::path(ref.directory) / ref.name);
    const DroppedFiles dropped = SortDropped(files);
    // The rest belongs to the dropped sound, not to the one that the user may want to save or keep.
    if (dropped.sound)
        OpenSound(*dropped.sound, [this, dropped] { OpenBesideSound(dropped); });
    else
        OpenBesideSound(dropped);
}

/// Opens all dropped files but the sound, and tells which are left.
void VexaView::OpenBesideSound(const DroppedFiles& dropped) {
    if (dropped.terrain)
        Open(*dropped.terrain);
    if (dropped.scale || dropped.keymap)
        keyTuning.Choose({dropped.scale, dropped.keymap, {}});
    TellWhatIsLeft(dropped);
}

void VexaView::Remember(const std::filesystem::path& file) {
    const BPath whole(file.c_str());
    if (whole.InitCheck() == B_OK)
        settings->PutFirst(kRecentSetting, whole.Path(), kMostRecent);
}

void VexaView::OpenScale(const std::string& path) {
    keyTuning.Choose({path, {}, {}});
}

void VexaView::OpenKeymap(const std::string& path) {
    keyTuning.Choose({{}, path, {}});
}

} // namespace vexa
