// modOrbitals: the catalogue, where an orbital index becomes an orbital object.
#include "electron/modOrbitals.h"

#include <array>

#include "electron/orbital_list.h"

namespace veltara::modOrbitals {

namespace {

using Factory = std::unique_ptr<cElectron> (*)();

template <class... Orb>
constexpr std::array<Factory, kCatalogueSize> Factories(OrbitalList<Orb...>) {
    std::array<Factory, kCatalogueSize> table{};
    ((table[Orb::CatalogueRow()] = [] { return std::unique_ptr<cElectron>(new Orb()); }), ...);
    return table;
}

constexpr std::array<Factory, kCatalogueSize> kFactories = Factories(CatalogueOrbitals{});

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
