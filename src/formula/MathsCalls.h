// SPDX-License-Identifier: GPL-3.0-or-later
// Calls of functions of the maths library as operations of a graph.
#pragma once

#include "formula/ExpressionWords.h"
#include "formula/Graph.h"

#include <span>
#include <string_view>

namespace vexa::formula {

/// Adds a call of a function of the maths library to the graph. `name` is that of the function,
/// with f or l at its end where it stands in the formula so; the arguments are of any types and as
/// many as it takes. Functions of long double are computed in double, and those of float in double
/// too, then rounded, where that is not exact anyway.
Value CallMaths(Graph& graph, const MathFunction& function, std::string_view name,
                std::span<const Value> arguments);

} // namespace vexa::formula
