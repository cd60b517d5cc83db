// modOrbitals: the catalogue, where an orbital index becomes an orbital object.
#include "electron/modOrbitals.h"

#include "electron/averaged_shells.h"
#include "electron/d_orbitals.h"
#include "electron/f_orbitals.h"
#include "electron/p_orbitals.h"
#include "electron/s_orbitals.h"

namespace veltara::modOrbitals {

std::unique_ptr<cElectron> CreateElectron(const int16_t& OrbIndex) {
    switch (OrbIndex) {
        case 0:
            return std::make_unique<orb1S>();
        case 1:
            return std::make_unique<orb2S>();
        case 2:
            return std::make_unique<orb2Px>();
        case 3:
            return std::make_unique<orb2Py>();
        case 4:
            return std::make_unique<orb2Pz>();
        case 5:
            return std::make_unique<orb3S>();
        case 6:
            return std::make_unique<orb3Px>();
        case 7:
            return std::make_unique<orb3Py>();
        case 8:
            return std::make_unique<orb3Pz>();
        case 9:
            return std::make_unique<orb3Dz2>();
        case 10:
            return std::make_unique<orb3Dx2_y2>();
        case 11:
            return std::make_unique<orb3Dxy>();
        case 12:
            return std::make_unique<orb3Dxz>();
        case 13:
            return std::make_unique<orb3Dyz>();
        case 14:
            return std::make_unique<orb4S>();
        case 15:
            return std::make_unique<orb4Px>();
        case 16:
            return std::make_unique<orb4Py>();
        case 17:
            return std::make_unique<orb4Pz>();
        case 18:
            return std::make_unique<orb4Dz2>();
        case 19:
            return std::make_unique<orb4Dx2_y2>();
        case 20:
            return std::make_unique<orb4Dxy>();
        case 21:
            return std::make_unique<orb4Dxz>();
        case 22:
            return std::make_unique<orb4Dyz>();
        case 23:
            return std::make_unique<orb4Fz3>();
        case 24:
            return std::make_unique<orb4Fxz2>();
        case 25:
            return std::make_unique<orb4Fyz2>();
        case 26:
            return std::make_unique<orb4Fx2z_y2z>();
        case 27:
            return std::make_unique<orb4Fxyz>();
        case 28:
            return std::make_unique<orb4Fx3_3xy2>();
        case 29:
            return std::make_unique<orb4F3x2y_y3>();
        case 30:
            return std::make_unique<orbAv1S>();
        case 31:
            return std::make_unique<orbAv2S>();
        case 32:
            return std::make_unique<orbAv2P>();
        case 33:
            return std::make_unique<orbAv3S>();
        case 34:
            return std::make_unique<orbAv3P>();
        case 35:
            return std::make_unique<orbAv3D>();
        case 36:
            return std::make_unique<orbAv4S>();
        case 37:
            return std::make_unique<orbAv4P>();
        case 38:
            return std::make_unique<orbAv4D>();
        case 39:
            return std::make_unique<orbAv4F>();
        default:
            return nullptr;  // outside the catalogue: no object and no error
    }
}

}  // namespace veltara::modOrbitals
