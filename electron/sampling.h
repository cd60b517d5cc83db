// Exact samples of a state: points drawn from |Psi(t)|² itself (or from its radial view), with
// no grid and no byte levels between the wavefunction and the points.
#pragma once

#include <cstddef>
#include <cstdint>

#include "electron/radius_holding.h"
#include "electron/state.h"

namespace veltara {

/// What the points follow.
enum class SampleWeight : int32_t {
    Density = 0,     ///< |Psi|²
    RadialView = 1,  ///< the radial view: rho r |Psi|² (rho the distance from the z axis), and
                     ///< r² |Psi|² for a shell average, as the renderers weigh them
};

/// Draws `count` points from the weight of `s` at time t (hbar/E_h), in Bohr, into xyz[3i],
/// xyz[3i + 1], xyz[3i + 2]. Radii by inverting the radial distribution, angles by inverting
/// theirs, and for a superposition rejection against the mixture sum |c_k|² |psi_k|² times
/// the number of terms, which bounds |Psi|². The same seed gives the same points.
/// phase (may be null): arg Psi at each point, in (-pi, pi], measured against the first term's
/// clock e^(-i E_1 t) so that a single state's phases stand still in time: 0 or pi for a real
/// state, 0 for a shell average. Raises 5 (with a sentence) for a null xyz with count > 0 or
/// a non-finite t.
void Sample(const Superposition& s, double t, uint64_t seed, size_t count, SampleWeight weight,
            double* xyz /* out */, double* phase /* out, may be null */);

}  // namespace veltara
