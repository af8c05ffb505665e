// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/plane/PlaneField.h"

namespace vexa {

void PlaneField::Begin(const PlaneFunction& f, const PlaneArea& next) {
    drawing.reset();
    function = f;
    area = next;
    values.assign(area.columns * area.rows, 0.0F);
    drawing = std::make_unique<PlaneDrawing>(function, area, values.data());
}

bool PlaneField::Continue(std::chrono::steady_clock::duration time) {
    if (!drawing)
        return false;
    if (drawing->Continue(time))
        drawing.reset();
    return true;
}

} // namespace vexa
