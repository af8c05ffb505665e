// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/drawer/Drawer.h"

#include "app/VexaView.h"
#include "app/drawer/ChipRow.h"
#include "app/drawer/SoundListView.h"
#include "documents/Sound.h"
#include "kits/interface/Control.h"
#include "views/Theme.h"

#include <cmath>
#include <utility>

namespace vexa {

namespace {

constexpr uint32 kSearchCode = FourCC("DrwS");

// In pixels.

constexpr float kDrawerMargin = 10;
constexpr float kDrawerGap = 8;

/// The chips before the categories.
constexpr const char* kAll = "all";
constexpr const char* kFavourites = "★";
constexpr const char* kOwn = "yours";

std::vector<std::string> Chips() {
    std::vector<std::string> words = {kAll, kFavourites, kOwn};
    for (const std::string_view category : kCategories)
        words.emplace_back(category);
    return words;
}

/// Returns what the list says if the query finds nothing.
const char* EmptyText(const SoundQuery& query) {
    if (query.text.empty() && query.favourite)
        return "no favourites yet: click a star";
    if (query.text.empty() && query.own)
        return "no sound of yours yet";
    return "no sound is like that";
}

} // namespace

Drawer::Drawer(BRect frame, VexaView& mainView)
    : BView(frame, "drawer", B_FOLLOW_NONE, B_WILL_DRAW | B_FRAME_EVENTS),
      mainView(mainView),
      // The pictures have twice the size, for screens of double density.
      bank(std::make_unique<Bank>(mainView.Folders(), 2 * SoundListView::kPictureSize, nullptr)) {
    search = new BTextControl(
        {kDrawerMargin, kDrawerMargin, frame.Width() - kDrawerMargin, kDrawerMargin}, "search",
        nullptr, "", new BMessage(kSearchCode), B_FOLLOW_LEFT_RIGHT | B_FOLLOW_TOP);
    search->SetModificationMessage(new BMessage(kSearchCode));
    search->SetTarget(this);
    search->SetPlaceholder("search name, tag, formula");
    search->SetAccessibleName("search sounds by name, tag or formula");
    search->SetHelp("Shows the sounds with these words in name, category, tags, author, comment "
                    "or formula");
    search->SetEscapeClears();
    search->SetDownAction([this] { list->MakeFocus(); });
    AddChild(search);
    chips = new ChipRow({kDrawerMargin, 0, frame.Width() - kDrawerMargin, 0}, "categories", Chips(),
                        [this](std::size_t) { ShowRows(); });
    chips->SetAccessibleName("kinds of sounds");
    chips->SetHelp("Which sounds are listed: all, your favourites, yours, or those of a kind");
    AddChild(chips);
    list = new SoundListView(
        {0, 0, frame.Width(), 0}, favourites,
        {.load = [this](const SoundEntry& entry) { Load(entry); },
         .toggleFavourite = [this](const SoundEntry& entry) { ToggleFavourite(entry); },
         .type =
             [this](const std::string& text) {
                 search->MakeFocus();
                 search->Type((search->Text() + text).c_str());
             }});
    AddChild(list);
    ColorsChanged();
    Arrange();
}

Drawer::~Drawer() = default;

void Drawer::SetFavourites(Favourites next, std::function<void(const Favourites&)> changed) {
    favourites = std::move(next);
    favouritesChanged = std::move(changed);
    ShowRows();
}

void Drawer::ToggleFavourite(const SoundEntry& entry) {
    const std::string name = entry.path.filename();
    if (favourites.erase(name) == 0)
        favourites.insert(name);
    if (favouritesChanged)
        favouritesChanged(favourites);
    list->FavouritesChanged();
    if (shownQuery.favourite)
        ShowRows();
}

SoundQuery Drawer::Query() const {
    SoundQuery query;
    query.text = search->Text();
    const std::string word = Chips()[chips->Chosen()];
    query.favourite = word == kFavourites;
    query.own = word == kOwn;
    if (word != kAll && !query.favourite && !query.own)
        query.category = word;
    return query;
}

void Drawer::ShowRows() {
    const bool another = Query() != shownQuery;
    const bool listed = list->LoadedRow().has_value();
    shownQuery = Query();
    SoundList rows;
    if (shown) {
        for (const std::size_t place : Search(shown->sounds, shownQuery, favourites))
            rows.push_back(shown->sounds[place]);
    }
    list->SetRows(std::move(rows), EmptyText(shownQuery));
    // What is found is read from the top. Otherwise the list stays where the person has scrolled.
    // But the sound that plays is shown when its file appears, and when all sounds are shown again.
    if (another)
        list->ShowTop();
    const bool shows = another ? shownQuery == SoundQuery() : !listed;
    if (const auto row = list->LoadedRow(); row && shows)
        list->MoveCursor(*row);
    bank->Hurry(list->InSight());
}

void Drawer::Refresh() {
    const std::shared_ptr<const BankView> now = bank->View();
    if (now != shown) {
        shown = now;
        mainView.LookForFiles();
        ShowRows();
    } else if (!shown->pictured) {
        bank->Hurry(list->InSight());
    }
    list->SetLoaded(mainView.SoundPath(), mainView.Changed());
}

void Drawer::Load(const SoundEntry& entry) {
    mainView.LoadSound(entry.path);
    list->SetLoaded(mainView.SoundPath(), mainView.Changed());
}

void Drawer::Step(int places) {
    const SoundList& rows = list->Rows();
    if (rows.empty())
        return;
    const auto count = static_cast<int>(rows.size());
    const std::optional<std::size_t> from = list->LoadedRow();
    int row = from ? static_cast<int>(*from) : places > 0 ? -1 : 0;
    for (int tries = 0; tries < count; tries++) {
        row = (row + places % count + count) % count;
        const std::shared_ptr<const SoundEntry> entry = rows[static_cast<std::size_t>(row)];
        if (!entry->fault.empty())
            continue;
        list->MoveCursor(static_cast<std::size_t>(row));
        return Load(*entry);
    }
}

void Drawer::MessageReceived(BMessage* message) {
    if (message->what != kSearchCode)
        return BView::MessageReceived(message);
    if (Query() != shownQuery)
        ShowRows();
}

void Drawer::ColorsChanged() {
    SetViewColor(Colors().list);
    for (BView* child : Children())
        child->SetViewColor(Colors().list);
}

void Drawer::FrameResized(float, float) {
    Arrange();
}

void Drawer::Arrange() {
    const BRect bounds = Bounds();
    const float top = search->Frame().bottom + kDrawerGap;
    chips->MoveTo(kDrawerMargin, top);
    chips->ResizeTo(bounds.Width() - 2 * kDrawerMargin, chips->PreferredHeight());
    const float listTop = std::ceil(chips->Frame().bottom + kDrawerGap);
    list->MoveTo(0, listTop);
    list->ResizeTo(bounds.Width() - 1, std::max(0.0F, bounds.bottom - listTop));
}

/// Draws the edge to the main view.
void Drawer::Draw(BRect) {
    SetHighColor(Colors().edge);
    StrokeLine({Bounds().right, 0}, {Bounds().right, Bounds().bottom});
}

} // namespace vexa
