// SPDX-License-Identifier: GPL-3.0-or-later
// The list of sounds in the drawer.
#pragma once

#include "bank/SoundSearch.h"
#include "kits/interface/View.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vexa {

/// The list has a row for each sound: its picture, name, tags and category, and a star for
/// favourites. A sound that cannot be loaded is dim and shows the reason, without a star. A click,
/// or Enter on the cursor's row, loads the sound; a click on the star, or Ctrl+D, adds it to the
/// favourites or removes it. Only visible rows are drawn. Window thread.
class SoundListView : public BView {
  public:
    /// The functions of the owner that the list calls.
    struct Callbacks {
        std::function<void(const SoundEntry& entry)> load;
        std::function<void(const SoundEntry& entry)> toggleFavourite;
        /// The user has typed a character for the search.
        std::function<void(const std::string& text)> type;
    };

    SoundListView(BRect frame, const Favourites& favourites, Callbacks callbacks);

    /// Shows these sounds. If the cursor's sound is among them, the cursor stays on it and its row
    /// stays at the same height in the view. Without any, the list says `emptyText`.
    void SetRows(SoundList next, std::string emptyText);
    /// Scrolls to the first row.
    void ShowTop() { ScrollTo(0); }
    const SoundList& Rows() const { return rows; }
    /// Sets which sound plays and whether it has changed since it was loaded. If it is another one,
    /// the cursor moves to it.
    void SetLoaded(const std::filesystem::path& path, bool changed);
    /// Returns the row of the sound that plays, if it is in the list.
    std::optional<std::size_t> LoadedRow() const;
    /// Moves the cursor to the row and scrolls the row into view.
    void MoveCursor(std::size_t row);
    /// Returns the files of the visible rows, whose pictures are needed first.
    std::vector<std::filesystem::path> InSight() const;
    /// Shows the stars after a change of the favourites.
    void FavouritesChanged() {
        DescriptionChanged();
        Invalidate();
    }

    void Draw(BRect update) override;
    void MouseDown(BPoint where) override;
    void MouseMoved(BPoint where, uint32 transit, const BMessage* dragged) override;
    bool WheelMoved(BPoint where, BPoint steps) override;
    bool KeyDown(const kits::KeyPress& press) override;
    void FocusChanged() override { Invalidate(); }
    void FrameResized(float width, float height) override;

    kits::AccessibleThing Describe() const override;
    std::size_t CountParts() const override { return rows.size(); }
    kits::AccessibleThing DescribePart(std::size_t index) const override;
    void Activate(std::optional<std::size_t> part) override;

    /// The side of a row's picture, in pixels of a screen of normal density.
    static constexpr int kPictureSize = 48;

  private:
    BRect RowFrame(std::size_t row) const;
    bool HasStar(std::size_t row) const { return rows[row]->fault.empty(); }
    BRect StarFrame(std::size_t row) const;
    std::optional<std::size_t> RowAt(BPoint where) const;
    float Content() const;
    void ScrollTo(float next);
    void Hover(std::optional<std::size_t> row);
    void Load(std::size_t row);
    void DrawRow(std::size_t row);
    void DrawStar(const SoundEntry& entry, BRect place);
    void DrawScrollBar();

    const Favourites& favourites;
    const Callbacks callbacks;
    SoundList rows;
    std::string ifEmpty;
    std::filesystem::path loaded;
    bool loadedChanged = false;
    std::size_t cursor = 0;
    /// The pointer while it is over the view, and the row under it.
    std::optional<BPoint> pointer;
    std::optional<std::size_t> hovered;
    /// The height of the rows above the top of the view, in pixels.
    float scroll = 0;
    BFont small;
};

} // namespace vexa
