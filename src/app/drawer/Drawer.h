// SPDX-License-Identifier: GPL-3.0-or-later
// The list of all sounds to choose from.
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

/// The drawer has a search field, the categories, and below them the list of matching sounds. Step
/// goes through the same list, whether the drawer is shown or not. Window thread.
class Drawer : public BView {
  public:
    /// Makes a drawer that loads sounds into the main view, which outlives it. Throws
    /// std::system_error if the thread that reads sounds cannot be started.
    Drawer(BRect frame, VexaView& mainView);
    ~Drawer() override;

    /// Sets the favourites and the function that is called when the user has changed them.
    void SetFavourites(Favourites next, std::function<void(const Favourites&)> changed);

    /// Loads the sound `places` after the one that plays, or before it if negative; the list wraps
    /// around. Sounds that cannot be loaded are skipped.
    void Step(int places);

    /// Shows changes of the bank's sounds and of the sound that plays. To be called about ten times
    /// a second.
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
    /// Declared last so that its thread ends before the members above are destroyed.
    std::unique_ptr<Bank> bank;
};

} // namespace vexa
