// modOrbitals: the catalogue, where an orbital index becomes an orbital object.
#pragma once

#include <cstdint>
#include <memory>

#include "electron/cElectron.h"

namespace veltara::modOrbitals {

/// Number of catalogue entries: 30 single orbitals (0..29) and 10 averaged shells (30..39).
inline constexpr int16_t kOrbitalCount = 40;

/// A new electron object of the class for OrbIndex, both scale factors 0; an empty pointer (no
/// error) for an index outside 0..39.
std::unique_ptr<cElectron> CreateElectron(const int16_t& OrbIndex);

}  // namespace veltara::modOrbitals
