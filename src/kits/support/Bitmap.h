// SPDX-License-Identifier: GPL-3.0-or-later
// A picture in memory. Knows nothing of windows, so that code without one can handle pictures.
#pragma once

#include "kits/support/Geometry.h"

#include <memory>
#include <utility>
#include <vector>

enum color_space : uint32 {
    /// One byte per pixel, an index into the system's colours.
    B_CMAP8 = 0x0004,
    /// Four bytes per pixel: blue, green, red, and one that is ignored.
    B_RGB32 = 0x0008,
    /// Four bytes per pixel: blue, green, red, alpha.
    B_RGBA32 = 0x2008,
};

/// A picture in memory: pixels in rows from the top, each row padded to a multiple of four bytes.
/// Starts as zeroes.
class BBitmap {
  public:
    /// Makes a bitmap with a pixel for every whole coordinate in `bounds`, edges included. If
    /// `bounds` is empty or memory is lacking, the bitmap is invalid and has no bits.
    BBitmap(BRect bounds, color_space space);

    bool IsValid() const { return !bits.empty(); }
    BRect Bounds() const { return bounds; }
    color_space ColorSpace() const { return space; }
    int32 BytesPerRow() const { return bytesPerRow; }
    void* Bits() { return bits.data(); }
    const void* Bits() const { return bits.data(); }
    /// Returns the number of bytes of all rows together.
    int64 BitsLength() const { return static_cast<int64>(bits.size()); }

    /// Returns the same picture at twice the resolution, for dense screens, or null where there is
    /// none.
    const BBitmap* Dense() const { return dense.get(); }
    void SetDense(std::shared_ptr<const BBitmap> next) { dense = std::move(next); }

  private:
    BRect bounds;
    color_space space;
    int32 bytesPerRow = 0;
    std::vector<uint8> bits;
    std::shared_ptr<const BBitmap> dense;
};
