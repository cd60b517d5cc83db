// The signed wavefunction of the single orbitals: the square root of the catalogue's normalised
// density, carrying the sign of the orbital's unsquared factors.
#pragma once

#include <cstddef>
#include <cstdint>

namespace veltara {

/// psi of catalogue orbital `orbital` (a single orbital, 0..29) at (x, y, z), Bohr radii; in
/// a0^(-3/2). psi² is the real density of the density view (GetRealPDF at the squared
/// coordinates) to rounding, and 0 wherever that density is 0. The sign is the sign of the
/// orbital's unsquared factors in the usual real combinations: x, y, z for P; xy, xz, yz,
/// x² - y² and 3z² - r² for D; z(5z² - 3r²), x(5z² - r²), y(5z² - r²), z(x² - y²), xyz,
/// x(x² - 3y²), y(3x² - y²) for F; the radial polynomial positive at the nucleus and changing
/// sign at each radial node.
///
/// Errors: 5 for an averaged shell (a mixture of orbitals has no sign), 9 for an index
/// outside the catalogue, and the density's own errors (5 NaN, 6 infinite).
double Wavefunction(int16_t orbital, double x, double y, double z);

/// The batch form: out[i] = Wavefunction(orbital, xyz[3i], xyz[3i + 1], xyz[3i + 2]) for
/// i < count. The orbital is checked before any point; on an error at a point the values
/// before it are written. Errors: as the point form.
void WavefunctionBatch(int16_t orbital, const double* xyz, size_t count, double* out);

}  // namespace veltara
