// The elementary functions that exact samples and boundary surfaces use, gathered here so that
// one place chooses them: the points depend on these functions' last bits, so they are the
// engine's own, which give the same double on every machine and in WebAssembly.
#pragma once

#include <cmath>

#include "support/exact_math.h"

namespace veltara::sample_elementary {

inline double Sin(double x) { return exact::Sin(x); }
inline double Cos(double x) { return exact::Cos(x); }

/// The angle of (x, y) in (-pi, pi], from +, -, x, / and correctly rounded square roots only,
/// so it is the same double everywhere (within a few ulp of the true angle). (0, 0) gives 0;
/// a zero y of either sign with a negative x gives pi.
inline double Atan2(double y, double x) {
    constexpr double kPi = 3.141592653589793;
    const double ay = std::fabs(y), ax = std::fabs(x);
    if (ay == 0 && ax == 0) return 0;
    const bool steep = ay > ax;
    double t = steep ? ax / ay : ay / ax;  // in [0, 1]
    // Two half-angle steps bring t below tan(pi/16); then the odd series to t^27.
    for (int i = 0; i < 2; ++i) t = t / (1 + std::sqrt(1 + t * t));
    const double t2 = t * t;
    double series = 0;
    for (int k = 27; k >= 3; k -= 2) series = (series + (k % 4 == 1 ? 1.0 : -1.0) / k) * t2;
    double a = 4 * (t + t * series);
    if (steep) a = kPi / 2 - a;
    if (x < 0) a = kPi - a;
    return y < 0 ? -a : a;
}

}  // namespace veltara::sample_elementary
