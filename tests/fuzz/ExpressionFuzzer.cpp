// SPDX-License-Identifier: GPL-3.0-or-later
// Fails if checking a text takes unbounded time or memory, or if a text passes that is not one line
// of harmless characters.

#include "functions/ExpressionCheck.h"
#include "fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    const std::string_view expression = fuzz::Text(data, size);
    const auto fault = vexa::CheckExpression(expression);
    if (fault) {
        fuzz::Require(fault->position <= size && !fault->reason.empty(), "a fault has its place");
        return 0;
    }
    fuzz::Require(expression.find_first_not_of("abcdefghijklmnopqrstuvwxyz"
                                               "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                               "0123456789_.+-*/%<>=!&|^~?:(), \t") ==
                      std::string_view::npos,
                  "nothing leaves the line, the text or the grammar");
    return 0;
}
