// SPDX-License-Identifier: GPL-3.0-or-later
// These are sine and cosine of large numbers, one at a time, the same bits on every machine. No
// loop's file may have them compiled in, as they are for any machine.
#pragma once

namespace kits {

/// Returns the sine within 1 ulp for every number, and NaN for an infinite one. Any thread,
/// real-time safe.
double FarSine(double x);
double FarCosine(double x);

} // namespace kits
