// The radial function R_nl(r) of a hydrogen-like atom, evaluated by the three-term Laguerre
// recurrence with its normalisation taken through logarithms, so that no factorial is formed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace veltara {

/// R_nl of nuclear charge Z, its constants prepared once for many radii.
class RadialFunction {
  public:
    /// n 1..30, 0 <= l < n, Z 1..100 (checked by the caller: CheckState).
    RadialFunction(int32_t n, int32_t l, int32_t Z);

    /// R_nl(r), a0^(-3/2), for r >= 0 (0 where e^(-Zr/n) underflows).
    double operator()(double r) const;

    /// out[i] = R_nl(r[i]).
    void Evaluate(const double* r, size_t count, double* out) const;

  private:
    int32_t mL;
    int32_t mDegree;         // n - l - 1, the Laguerre polynomial's degree
    double mScale;           // 2Z/n: rho = mScale * r
    double mNorm;            // the normalisation sqrt((2Z/n)³ (n-l-1)!/(2n (n+l)!))
    double mAlpha;           // 2l + 1
    std::vector<double> mA;  // recurrence: L_(k+1) = (mA[k] - rho mB[k]) L_k - mC[k] L_(k-1)
    std::vector<double> mB;
    std::vector<double> mC;
};

}  // namespace veltara
