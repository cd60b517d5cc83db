// modOrbitals: the catalogue, where an orbital index becomes an orbital object.
#pragma once

#include <cstdint>
#include <memory>

#include "electron/cElectron.h"
#include "electron/catalogue.h"

namespace veltara::modOrbitals {

/// Number of catalogue entries: the rows of the catalogue table (single orbitals first, then
/// the averaged shells).
inline constexpr int16_t kOrbitalCount = kCatalogueSize;

/// A new electron object of the class for OrbIndex, both scale factors 0; an empty pointer (no
/// error) for an index outside the catalogue.
std::unique_ptr<cElectron> CreateElectron(const int16_t& OrbIndex);

}  // namespace veltara::modOrbitals
