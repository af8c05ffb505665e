// SPDX-License-Identifier: GPL-3.0-or-later
// A grid of small controls, each with its label above.
#pragma once

#include "kits/interface/View.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vexa {

/// Cells of equal size in columns, filled row by row. Window thread.
class CellGrid : public BView {
  public:
    CellGrid(const char* name, std::size_t columns);

    /// Returns the height of `rows` rows, as BRect::Height counts it.
    static float HeightOf(std::size_t rows);

    void Draw(BRect update) override;
    void ColorsChanged() override;
    void FrameResized(float width, float height) override;

  protected:
    /// Adds a cell and takes ownership of its control, which gets the width of the column.
    void AddCell(const std::string& label, BView* control);
    /// Draws the cell's label in the quiet colour, which marks a value that the sound does not set,
    /// or in the usual one.
    void SetQuiet(std::size_t cell, bool quiet);

  private:
    struct Cell {
        std::string label;
        BView* control;
        bool quiet = false;
        BPoint baseline;
    };
    const std::size_t columns;
    std::vector<Cell> cells;
};

} // namespace vexa
