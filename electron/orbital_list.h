// The 40 orbital classes of the catalogue as one list, for the code that makes something of each
// (the catalogue's factories, the row kernels of the wider vector paths).
#pragma once

#include "electron/averaged_shells.h"
#include "electron/d_orbitals.h"
#include "electron/f_orbitals.h"
#include "electron/p_orbitals.h"
#include "electron/s_orbitals.h"

namespace veltara {

template <class... Orb>
struct OrbitalList {};

/// Every orbital class once; each names its own row, so the order here does not matter.
using CatalogueOrbitals =
    OrbitalList<orb1S, orb2S, orb2Px, orb2Py, orb2Pz, orb3S, orb3Px, orb3Py, orb3Pz, orb3Dz2,
                orb3Dx2_y2, orb3Dxy, orb3Dxz, orb3Dyz, orb4S, orb4Px, orb4Py, orb4Pz, orb4Dz2,
                orb4Dx2_y2, orb4Dxy, orb4Dxz, orb4Dyz, orb4Fz3, orb4Fxz2, orb4Fyz2, orb4Fx2z_y2z,
                orb4Fxyz, orb4Fx3_3xy2, orb4F3x2y_y3, orbAv1S, orbAv2S, orbAv2P, orbAv3S, orbAv3P,
                orbAv3D, orbAv4S, orbAv4P, orbAv4D, orbAv4F>;

}  // namespace veltara
