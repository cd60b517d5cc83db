// The elementary functions the state physics calls, in one place, so that one switch changes
// them all (to functions that give the same double on every machine).
#pragma once

#include <cmath>

namespace veltara::math {

inline double Exp(double x) { return std::exp(x); }
inline double Cos(double x) { return std::cos(x); }
inline double Sin(double x) { return std::sin(x); }
inline double Sqrt(double x) { return std::sqrt(x); }

}  // namespace veltara::math
