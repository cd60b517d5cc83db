// One term's exact draw: three uniform numbers in [0, 1) to a point of |psi|² or of its radial
// view, by inverting the radial, polar and azimuthal distributions one after the other.
#pragma once

#include <optional>

#include "electron/sampling.h"
#include "electron/state.h"
#include "electron/tabulated_distribution.h"

namespace veltara {

/// The radius beyond which the radial distribution's tail is below 1e-17.
double RadialReach(const State& s, SampleWeight weight);

/// The distribution of r: r² R_nl² (density) or r⁴ R_nl² (radial view), over [0, RadialReach].
TabulatedDistribution RadialTable(const State& s, SampleWeight weight);

class TermDraw {
  public:
    TermDraw(const State& s, SampleWeight weight);

    /// The point (Bohr) of the uniform numbers u[0] (radius), u[1] (polar angle), u[2]
    /// (azimuth).
    void Point(const double* u, double* xyz /* out, 3 */) const;

    /// The integral of the weight over space with psi normalised: 1 for the density, <rho r>
    /// or <r²> for the radial view.
    double ViewMass() const noexcept;

  private:
    TabulatedDistribution mRadial;
    TabulatedDistribution mPolar;                   // over theta in [0, pi]
    std::optional<TabulatedDistribution> mAzimuth;  // cos² or sin² of m phi; none: uniform
};

}  // namespace veltara
