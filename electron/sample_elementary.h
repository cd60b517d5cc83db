// The elementary functions that exact samples and boundary surfaces use, gathered here so that
// one place chooses them: the points depend on these functions' last bits.
#pragma once

#include <cmath>

namespace veltara::sample_elementary {

inline double Sin(double x) { return std::sin(x); }
inline double Cos(double x) { return std::cos(x); }
inline double Atan2(double y, double x) { return std::atan2(y, x); }

}  // namespace veltara::sample_elementary
