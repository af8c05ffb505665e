// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/TraceLater.h"

#include "kits/support/Trace.h"

namespace kits {

void TraceLater::Tell() {
    Line line{};
    while (lines.Read(&line, 1) > 0)
        FPRINTF(stderr, line.text, line.number); // NOLINT(*-format-nonliteral): Put's promise
    if (const int64 missing = lost.exchange(0))
        FPRINTF(stderr, "%lld trace lines are lost\n", static_cast<long long>(missing));
}

} // namespace kits
