// cVeltara: the main atom class, where a host starts: the catalogue and the orbital collection.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "../engine/cOrbitalCol.h"
#include "../records/PublicTypes.h"

namespace veltara {

class cVeltara {
  public:
    /// The orbital collection, created empty on first use.
    std::shared_ptr<cOrbitalCol> Orbitals();
    /// Replaces the collection; a null one makes the next read create a fresh collection.
    void Orbitals(std::shared_ptr<cOrbitalCol> collection);

    /// The catalogue's entries in index order, built afresh on each call.
    std::vector<OrbInfo> EnumOrbitals();

    /// The highest principal quantum number of the catalogue.
    int16_t HighestN() const;

    /// Shows the about box through the host's presenter (about/about_box.h): modal first,
    /// then top-most. Does nothing when no presenter is installed.
    void About();

  private:
    std::shared_ptr<cOrbitalCol> mOrbitals;
};

}  // namespace veltara
