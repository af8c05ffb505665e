// SPDX-License-Identifier: GPL-3.0-or-later
// A table that compares the load of several ways of playing, measured in turns.
#pragma once

#include <algorithm>
#include <cstdio>
#include <span>
#include <vector>

namespace vexa::benchmark {

/// Returns the upper median of at least one value.
inline double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Prints a line for each way: its `name`, the median of its `percent`, which has a value per
/// round, and the median over the rounds of its difference from the first way.
template<class Way>
void PrintCosts(std::span<const Way> ways) {
    for (const Way& way : ways) {
        std::vector<double> more;
        for (std::size_t i = 0; i < way.percent.size(); i++)
            more.push_back(way.percent[i] - ways[0].percent[i]);
        std::printf("%-15s %5.2f %% of a core, %5.2f more\n", way.name, Median(way.percent),
                    Median(more));
    }
}

} // namespace vexa::benchmark
