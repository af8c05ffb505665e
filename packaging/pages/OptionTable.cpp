// SPDX-License-Identifier: GPL-3.0-or-later
// Prints the options of both programs for make-pages.py: one line per option, with the program, the
// name of the option, the placeholder of its value, its allowed values and its effect, separated by
// tabs.
#include "app/AppOptions.h"
#include "render/Options.h"

#include <cstdio>

int main() {
    const auto print = [](const char* program, const std::vector<kits::OptionText>& rows) {
        for (const kits::OptionText& row : rows)
            std::printf("%s\t%s\t%s\t%s\t%s\n", program, row.name, row.value ? row.value : "",
                        row.allowed ? row.allowed : "", row.help);
    };
    print("vexa", vexa::AppOptionTexts());
    print("vexa-render", vexa::OptionTexts());
    return std::fflush(stdout) == 0 ? 0 : 1;
}
