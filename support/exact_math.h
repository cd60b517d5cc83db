// The engine's own elementary functions: the same double on every processor, every vector path
// and in WebAssembly, within 1 ulp of the correctly rounded value. Built from +, -, x, exact
// powers of two, tables and (for Log) one correctly rounded division, never the C library, whose
// results differ between systems (and between its own variants on one machine).
#pragma once

#include <cstddef>

#include "support/simd_dispatch.h"

namespace veltara::exact {

/// e^x. Overflow gives +infinity, underflow 0 (subnormal results on the way), NaN stays NaN.
double Exp(double x);

/// Natural logarithm: -infinity at 0, NaN below 0 and for NaN, +infinity at +infinity.
double Log(double x);

/// Sine and cosine of x radians; NaN for an infinite or NaN x.
double Sin(double x);
double Cos(double x);

/// out[i] = Exp(x[i]) for i < count, on the process's vector path (ActiveSimd); bit for bit
/// what Exp gives. `out` may be `x`.
void ExpArray(const double* x, double* out, size_t count);

/// The same on the named path, which must be available (SimdPathAvailable).
void ExpArrayOn(SimdPath path, const double* x, double* out, size_t count);

}  // namespace veltara::exact
