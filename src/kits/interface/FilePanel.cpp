// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/interface/FilePanel.h"

#include "kits/interface/Application.h"
#include "kits/interface/backends/FilePanelWindow.h"
#include "kits/storage/Entry.h"

#include <QFile>
#include <map>

namespace {

/// All existing panels by their ids.
std::map<int32, BFilePanel*>& Panels() {
    static std::map<int32, BFilePanel*> panels;
    return panels;
}

int32 NextId() {
    static int32 last = 0;
    return ++last;
}

} // namespace

BFilePanel::BFilePanel(file_panel_mode mode, const BMessenger* target, const entry_ref* directory,
                       uint32 nodeFlavors, bool multipleSelection, BMessage* message,
                       BRefFilter* filter, bool modal, bool hideWhenDone)
    : id(NextId()),
      target(target ? *target : BMessenger(be_app)),
      message(mode == B_OPEN_PANEL ? B_REFS_RECEIVED : B_SAVE_REQUESTED),
      hideWhenDone(hideWhenDone),
      window(nullptr) {
    if (const std::unique_ptr<BMessage> taken{message})
        this->message = *taken;
    window = new kits::FilePanelWindow(*this, mode, nodeFlavors, multipleSelection, filter, modal);
    Panels()[id] = this;
    if (directory)
        SetPanelDirectory(directory);
}

BFilePanel::~BFilePanel() {
    Panels().erase(id);
    if (window)
        window->Abandon();
}

void BFilePanel::SendMessage(const BMessenger* to, BMessage* result) {
    to->SendMessage(*result);
}

const BWindow* BFilePanel::Asker() const {
    const BHandler* const handler = target.Target();
    return dynamic_cast<const BWindow*>(handler ? handler->Looper() : nullptr);
}

bool BFilePanel::AsksIn(const std::filesystem::path& folder) const {
    std::error_code ignored;
    return askOnlyIn.empty() || std::filesystem::equivalent(askOnlyIn, folder, ignored);
}

bool BFilePanel::Deliver(BMessage result) {
    result.AddInt32("panel", id);
    // Copied, because the hook may delete the panel.
    const bool hide = hideWhenDone;
    SendMessage(&target, &result);
    return hide;
}

BWindow* BFilePanel::Window() const {
    return window;
}

BFilePanel* BFilePanel::SenderOf(const BMessage& result) {
    int32 sender = 0;
    result.FindInt32("panel", &sender);
    const auto found = Panels().find(sender);
    return found == Panels().end() ? nullptr : found->second;
}

void BFilePanel::SetPanelDirectory(const char* path) {
    if (window && *path)
        window->SetFolder(BPath(path).Path());
}

void BFilePanel::SetBeneath(const char* path, const char* beneath) {
    if (window)
        window->SetBeneath(BPath(path).Path(), BPath(beneath).Path());
}

void BFilePanel::SetPanelDirectory(const entry_ref* ref) {
    SetPanelDirectory(BPath(ref).Path());
}

void BFilePanel::GetPanelDirectory(entry_ref* ref) const {
    if (window)
        get_ref_for_path(window->Folder().c_str(), ref);
}

void BFilePanel::SetSaveText(std::string_view name) {
    if (window)
        window->SetName(QFile::decodeName(QByteArray(name.data(), qsizetype(name.size()))));
}

std::string BFilePanel::SaveText() const {
    return window ? window->NameText() : std::string();
}

void BFilePanel::Show() {
    if (window)
        window->Present();
}

void BFilePanel::Hide() {
    if (window)
        window->Dismiss();
}

bool BFilePanel::IsShowing() const {
    return window && !window->IsHidden();
}

void BFilePanel::Rewind() {
    refs.clear();
    if (window)
        refs = window->SelectedRefs();
    next = 0;
}

status_t BFilePanel::GetNextSelectedRef(entry_ref* ref) {
    if (next >= refs.size())
        return B_ENTRY_NOT_FOUND;
    *ref = refs[next++];
    return B_OK;
}
