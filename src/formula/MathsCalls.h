// SPDX-License-Identifier: GPL-3.0-or-later
// Translates calls of the maths library's functions into operations of a graph.
#pragma once

#include "formula/ExpressionWords.h"
#include "formula/Graph.h"

#include <span>
#include <string_view>

namespace vexa::formula {

/// Adds a call of a function of the maths library to the graph and returns its result. `name` is
/// the name as the formula has it, possibly with the suffix f or l. `arguments` has as many values
/// as the function takes, of any types. Functions of long double are computed in double. Functions
/// of float are computed in double too and then rounded, unless computing in float is exact or
/// rounds only once.
Value CallMaths(Graph& graph, const MathFunction& function, std::string_view name,
                std::span<const Value> arguments);

} // namespace vexa::formula
