// modOrbitals: the catalogue, where an orbital index becomes an orbital object.
#include "electron/modOrbitals.h"

#include <array>

#include "electron/averaged_shells.h"
#include "electron/d_orbitals.h"
#include "electron/f_orbitals.h"
#include "electron/p_orbitals.h"
#include "electron/s_orbitals.h"

namespace veltara::modOrbitals {

namespace {

using Factory = std::unique_ptr<cElectron> (*)();

// Every orbital class once; each names its own row, so the order here does not matter.
template <class... Orb>
constexpr std::array<Factory, kCatalogueSize> Factories() {
    std::array<Factory, kCatalogueSize> table{};
    ((table[Orb::CatalogueRow()] = [] { return std::unique_ptr<cElectron>(new Orb()); }), ...);
    return table;
}

constexpr std::array<Factory, kCatalogueSize> kFactories =
    Factories<orb1S, orb2S, orb2Px, orb2Py, orb2Pz, orb3S, orb3Px, orb3Py, orb3Pz, orb3Dz2,
              orb3Dx2_y2, orb3Dxy, orb3Dxz, orb3Dyz, orb4S, orb4Px, orb4Py, orb4Pz, orb4Dz2,
              orb4Dx2_y2, orb4Dxy, orb4Dxz, orb4Dyz, orb4Fz3, orb4Fxz2, orb4Fyz2, orb4Fx2z_y2z,
              orb4Fxyz, orb4Fx3_3xy2, orb4F3x2y_y3, orbAv1S, orbAv2S, orbAv2P, orbAv3S, orbAv3P,
              orbAv3D, orbAv4S, orbAv4P, orbAv4D, orbAv4F>();

constexpr bool EveryRowHasAClass() {
    for (const Factory f : kFactories) {
        if (f == nullptr) return false;
    }
    return true;
}
static_assert(EveryRowHasAClass(), "every catalogue row needs its orbital class");

}  // namespace

std::unique_ptr<cElectron> CreateElectron(const int16_t& OrbIndex) {
    if (!IsCatalogueIndex(OrbIndex)) return nullptr;  // outside the catalogue: no error
    return kFactories[static_cast<size_t>(OrbIndex)]();
}

}  // namespace veltara::modOrbitals
