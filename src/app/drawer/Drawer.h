// SPDX-License-Identifier: GPL-3.0-or-later
// The sounds that there are, to choose from.
#pragma once

#include "bank/Bank.h"
#include "bank/SoundSearch.h"
#include "kits/interface/View.h"

#include <functional>
#include <memory>
#include <string>

class BTextControl;

namespace vexa {

class ChipRow;
class SoundListView;
class VexaView;

/// The drawer has a search, the categories, and the list of sounds below. What is listed is also
/// what previous and next go through, be the drawer shown or not. Window thread.
class Drawer : public BView {
  public:
    /// Loads into the main view, which outlives it. Throws std::system_error where there is no
    /// thread to be had that reads sounds.
    Drawer(BRect frame, VexaView& mainView);
    ~Drawer() override;

    /// Sets the favourites, and the function that is told when a person has changed them.
    void SetFavourites(Favourites next, std::function<void(const Favourites&)> changed);

    /// Loads the sound so many places after the one that plays, or before it; beyond an end it goes
    /// on at the other one. Those that cannot be loaded are passed over.
    void Step(int places);

    /// Shows what has become of the sounds, and of the one that plays; some ten times a second.
    void Refresh();

    void MessageReceived(BMessage* message) override;
    void ColorsChanged() override;
    void FrameResized(float width, float height) override;
    void Draw(BRect update) override;

    SoundListView& List() { return *list; }
    BTextControl& SearchField() { return *search; }
    ChipRow& Categories() { return *chips; }

    static constexpr float kWidth = 248;

  private:
    SoundQuery Query() const;
    void ShowRows();
    void Load(const SoundEntry& entry);
    void ToggleFavourite(const SoundEntry& entry);
    void Arrange();

    VexaView& mainView;
    Favourites favourites;
    std::function<void(const Favourites&)> favouritesChanged;
    BTextControl* search = nullptr;
    ChipRow* chips = nullptr;
    SoundListView* list = nullptr;
    std::shared_ptr<const BankView> shown;
    SoundQuery shownQuery;
    /// It stands last, as it is to end before what it reads for goes.
    std::unique_ptr<Bank> bank;
};

} // namespace vexa
