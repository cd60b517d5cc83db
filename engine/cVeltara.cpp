// cVeltara: the collection made on first use, the catalogue listing and the about box.
#include "engine/cVeltara.h"

#include <utility>

#include "about/about_box.h"
#include "electron/catalogue.h"
#include "electron/modOrbitals.h"
#include "support/error.h"

namespace veltara {

std::shared_ptr<cOrbitalCol> cVeltara::Orbitals() {
    if (!mOrbitals) mOrbitals = std::make_shared<cOrbitalCol>();
    return mOrbitals;
}

void cVeltara::Orbitals(std::shared_ptr<cOrbitalCol> collection) {
    mOrbitals = std::move(collection);
}

std::vector<OrbInfo> cVeltara::EnumOrbitals() {
    std::vector<OrbInfo> result(modOrbitals::kOrbitalCount);
    for (int16_t i = 0; i < modOrbitals::kOrbitalCount; ++i) {
        // Each electron lives only for its GetInfo; nothing is cached.
        const std::unique_ptr<cElectron> electron = modOrbitals::CreateElectron(i);
        if (!electron) Raise(kErrObjectNotSet);
        result[static_cast<size_t>(i)] = electron->GetInfo();
    }
    return result;
}

int16_t cVeltara::HighestN() const { return kCatalogueHighestN; }

void cVeltara::About() { ShowAboutBox(); }

}  // namespace veltara
