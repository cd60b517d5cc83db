// The angular functions of a state: real and complex spherical harmonics, evaluated from the
// Cartesian direction by the normalised recurrences of the associated Legendre functions.
#pragma once

#include <complex>
#include <cstdint>
#include <vector>

namespace veltara {

/// Y_lm of one basis, its recurrence constants prepared once for many directions.
class AngularFunction {
  public:
    /// 0 <= l <= 29, |m| <= l (checked by the caller: CheckState). complex: Y_l^m with the
    /// Condon-Shortley phase; otherwise the real combination (P_l^|m| without that phase,
    /// cos(m phi) for m > 0, sin(|m| phi) for m < 0, each times sqrt 2).
    AngularFunction(int32_t l, int32_t m, bool complex);

    /// Y at the direction of (x, y, z) with r = |(x, y, z)| > 0 given; at r = 0 the value
    /// of the direction +z. The imaginary part is 0 in the real basis.
    std::complex<double> operator()(double x, double y, double z, double r) const;

  private:
    int32_t mM;     // |m|
    int32_t mSign;  // -1 for m < 0: the sine (real basis) or the conjugate (complex)
    bool mComplex;
    double mPhase;  // (-1)^m for complex m > 0, else 1
    double mStart;  // the normalised P_|m|^|m| / sin^|m| theta, times sqrt 2 if real and m != 0
    std::vector<double> mA;  // P_l = mA (cos theta P_(l-1) - mB P_(l-2)), from l = |m| + 1
    std::vector<double> mB;
};

}  // namespace veltara
