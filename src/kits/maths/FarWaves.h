// SPDX-License-Identifier: GPL-3.0-or-later
// Sine and cosine of large numbers, for one number at a time, with the same bits on every machine.
// They must not be inlined into the files of loops, because those are compiled per instruction set
// and these must run on any machine.
#pragma once

namespace kits {

/// Return the sine and the cosine within 1 ulp for every finite number, and NaN for an infinite
/// one. Any thread, real-time safe.
double FarSine(double x);
double FarCosine(double x);

} // namespace kits
