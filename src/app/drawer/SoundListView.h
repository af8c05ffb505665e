// SPDX-License-Identifier: GPL-3.0-or-later
// The rows of the sounds drawer.
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
/// favourites. One that cannot be loaded is dim and says why. A click, or Enter on the row of the
/// cursor, loads a sound; a click on the star, or Ctrl+D, makes it a favourite or no longer one.
/// Only rows that can be seen are drawn. Window thread.
class SoundListView : public BView {
  public:
    /// The list calls these functions of its owner.
    struct Callbacks {
        std::function<void(const SoundEntry& entry)> load;
        std::function<void(const SoundEntry& entry)> toggleFavourite;
        /// A character was typed: it is for the search.
        std::function<void(const std::string& text)> type;
    };

    SoundListView(BRect frame, const Favourites& favourites, Callbacks callbacks);

    /// Shows these sounds. The cursor stays on its sound where that is among them, and so does the
    /// view.
    void SetRows(SoundList next);
    const SoundList& Rows() const { return rows; }
    /// Tells the list which sound plays, and whether it has changed since.
    void SetLoaded(const std::filesystem::path& path, bool changed);
    /// The row of the sound that plays, if it is among them.
    std::optional<std::size_t> LoadedRow() const;
    /// Puts the cursor on the row, and the row into sight.
    void MoveCursor(std::size_t row);
    std::size_t Cursor() const { return cursor; }
    /// Returns the sounds in sight, whose pictures are wanted first.
    std::vector<std::filesystem::path> InSight() const;
    /// A star has changed.
    void FavouritesChanged() { Invalidate(); }

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

    /// The pixels a side of the pictures that rows show, on a screen of usual density.
    static constexpr int kPictureSize = 48;

  private:
    BRect RowFrame(std::size_t row) const;
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
    std::filesystem::path loaded;
    bool loadedChanged = false;
    std::size_t cursor = 0;
    std::optional<std::size_t> hovered;
    /// The pixels of the rows that are above the view's top.
    float scroll = 0;
    BFont small;
};

} // namespace vexa
