// SPDX-License-Identifier: GPL-3.0-or-later
// A grid has small controls in columns, each with its label above.
#pragma once

#include "kits/interface/View.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vexa {

/// A grid has cells of the same size, filled row by row. Window thread.
class CellGrid : public BView {
  public:
    CellGrid(const char* name, std::size_t columns);

    /// Returns the height of so many rows, as BRect::Height counts it.
    static float HeightOf(std::size_t rows);

    void Draw(BRect update) override;
    void ColorsChanged() override;
    void FrameResized(float width, float height) override;

  protected:
    /// Takes the control over; it gets the width of its column.
    void AddCell(const std::string& label, BView* control);
    /// Shows a cell quietly, as what is not the sound's own, or as usual.
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
