// The elementary functions the state physics calls, in one place: the engine's own, which give
// the same double on every machine, vector path and in WebAssembly.
#pragma once

#include <cmath>

#include "support/exact_math.h"

namespace veltara::math {

inline double Exp(double x) { return exact::Exp(x); }
inline double Cos(double x) { return exact::Cos(x); }
inline double Sin(double x) { return exact::Sin(x); }
inline double Sqrt(double x) { return std::sqrt(x); }  // correctly rounded everywhere

}  // namespace veltara::math
