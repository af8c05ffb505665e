// SPDX-License-Identifier: GPL-3.0-or-later
// Fails if a text, or the text written from its tree, cannot be read without a fault of the reader.
// A text that is not XML need not come back the same.

#include "fuzz/Fuzzing.h"
#include "xml/MXDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    vexa::MXString text(fuzz::Text(data, size));
    vexa::Remarks remarks;
    const vexa::MXDocument read(text, &remarks);
    const auto lines = remarks.Located("", fuzz::Text(data, size));
    fuzz::Require(read.Status() == 0 || !lines.empty(), "a fault is told");
    vexa::MXString written = read.AssembleString("  ");
    const vexa::MXDocument again(written);
    fuzz::Require(!read.root || again.root || again.Status() != 0,
                  "a root that is written is read, or a fault is told");
    return 0;
}
