// The textbook facts of each catalogue orbital: quantum numbers, nodes, energy, radii, and
// its radial distribution.
#pragma once

#include <cstddef>
#include <cstdint>

namespace veltara {

/// What a chemist reads off an orbital (n, l shared by an averaged shell and its members).
struct OrbitalFacts {
    int16_t n = 0, l = 0, m = 0;    ///< the catalogue's quantum numbers (m 0 for averaged shells)
    int32_t radialNodes = 0;        ///< n - l - 1 spheres where psi changes sign
    int32_t angularNodes = 0;       ///< l nodal planes or cones
    double energyHartree = 0;       ///< -1 / (2n²)
    double meanRadius = 0;          ///< <r> = (3n² - l(l + 1)) / 2, Bohr radii
    double mostProbableRadius = 0;  ///< where P(r) is largest, Bohr radii (n² when nodeless)
};

/// The facts of catalogue orbital `orbital`. Errors: 9 for an index outside the catalogue.
OrbitalFacts FactsOf(int16_t orbital);

/// P(r) = r² R_nl(r)², the probability per Bohr radius of finding the electron at distance r
/// (Bohr radii, r >= 0) from the nucleus; integrates to 1 over r. It is 4 pi r² times the
/// density of the averaged shell with the orbital's n and l. Errors: 9 for an index outside
/// the catalogue, 5 for a negative or NaN r, 6 for an infinite one.
double RadialDistribution(int16_t orbital, double r);

/// The batch form: out[i] = RadialDistribution(orbital, r[i]) for i < count; on an error at a
/// point the values before it are written. Errors: as the point form.
void RadialDistributionBatch(int16_t orbital, const double* r, size_t count, double* out);

}  // namespace veltara
